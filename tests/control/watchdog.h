// Watches calls that must return soon. One for all threads of a test; every call is announced on the thread
// that makes it. Time in which the machine had no processor for a thread of ours is not held against a call,
// which may be waiting for that thread; a call that nobody works on counts in full.
#pragma once

#include <atomic>
#include <chrono>
#include <map>
#include <string>

#include "framework/critical_section.h"
#include "framework/event.h"
#include "framework/thread.h"
#include "tests/control/starved_times.h"

namespace tarvex::test {

class Watchdog {
 public:
  using Clock = StarvedTimes::Clock;

  Watchdog();
  ~Watchdog();
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

  /// A call from construction to destruction, which fails the test when it took longer than `limit`, or ten
  /// times that however busy the machine was. One that does not return at all ends the process, with its name
  /// and those of the other threads' calls.
  class Call {
   public:
    Call(Watchdog& dog, const char* name, std::chrono::milliseconds limit);
    ~Call();
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

   private:
    friend class Watchdog;
    Watchdog& m_dog;
    const char* m_name;
    const std::chrono::milliseconds m_limit;
    const Clock::time_point m_start = Clock::now();
  };

  /// A call took too long. Any thread may ask, which is not so for the test's own failures.
  bool HasBarked() const noexcept { return m_hasBarked; }
  /// The call that took longest, in words.
  std::string Slowest();

 private:
  void Watch();
  void Note();
  void EndCall(const Call& call);

  CCritSec m_lock{"Watchdog", LockRank::kLeaf};
  std::multimap<Clock::time_point, const char*> m_calls;  // in progress; under m_lock
  std::chrono::milliseconds m_longest{0};                 // under m_lock
  std::string m_slowest = "nothing";                      // under m_lock
  StarvedTimes m_starved;                                 // under m_lock
  std::atomic<bool> m_hasBarked{false};
  Event m_done{Event::Mode::kManual};
  Thread m_thread;
};

}  // namespace tarvex::test
