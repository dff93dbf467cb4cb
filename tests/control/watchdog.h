// Watches calls that must return soon. One for all threads of a test; every call is announced on the thread
// that makes it.
#pragma once

#include <chrono>
#include <map>
#include <string>

#include "framework/critical_section.h"
#include "framework/event.h"
#include "framework/thread.h"

namespace tarvex::test {

class Watchdog {
 public:
  using Clock = std::chrono::steady_clock;

  Watchdog();
  ~Watchdog();
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

  /// A call from construction to destruction, which fails the test when it took longer than `limit`. One
  /// that does not return at all ends the process, with its name and those of the other threads' calls.
  class Call {
   public:
    Call(Watchdog& dog, const char* name, std::chrono::milliseconds limit);
    ~Call();
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

   private:
    Watchdog& m_dog;
    const char* m_name;
    const std::chrono::milliseconds m_limit;
    const Clock::time_point m_start = Clock::now();
  };

  /// The call that took longest, in words.
  std::string Slowest();

 private:
  void Watch();

  CCritSec m_lock{"Watchdog", LockRank::kLeaf};
  std::multimap<Clock::time_point, const char*> m_calls;  // in progress; under m_lock
  std::chrono::milliseconds m_longest{0};                 // under m_lock
  const char* m_slowest = "nothing";                      // under m_lock
  CEvent m_done{CEvent::Mode::kManual};
  CThread m_thread;
};

}  // namespace tarvex::test
