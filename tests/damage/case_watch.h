// Watches cases of which there may be millions: names the one that crashes or that a sanitizer ends, ends the
// process when one does not end, and knows which took longest. What counts is the processor's time, since a
// busy machine may give us none for long. One at a time in a program; used by one thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "framework/event.h"
#include "framework/thread.h"

namespace tarvex::test {

class CaseWatch {
 public:
  CaseWatch();
  ~CaseWatch();
  CaseWatch(const CaseWatch&) = delete;
  CaseWatch& operator=(const CaseWatch&) = delete;

  /// A case begins, and the one before is over. "FILE: KIND NUMBER" is its name, shortened if it is too long.
  void Begin(const char* file, const char* kind, std::uint64_t number) noexcept;
  /// The last one is over.
  void End() noexcept;

  static const char* Name() noexcept;
  /// The case that took longest and its milliseconds, in words.
  std::string Slowest() const;

 private:
  void Watch();

  std::atomic<std::int64_t> m_processorTime{0};  // nanoseconds of the process at the beginning; 0: no case
  std::atomic<std::int64_t> m_wallTime{0};       // nanoseconds
  std::int64_t m_longest = 0;                    // nanoseconds
  std::string m_slowest = "nothing";
  CEvent m_done{CEvent::Mode::kManual};
  CThread m_thread;
};

}  // namespace tarvex::test
