// Watches cases of which there may be millions: names the one that crashes, that a sanitizer ends or that does not
// end, and knows which took longest. What counts is the processor's time, since a busy machine may give us none for
// long. One at a time in a program; used by one thread.
#pragma once

#include <cstdint>
#include <string>

namespace tarvex::test {

class CaseWatch {
 public:
  CaseWatch();
  ~CaseWatch() { End(); }
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
  std::int64_t m_begin = 0;    // nanoseconds of the process; 0: no case
  std::int64_t m_longest = 0;  // nanoseconds
  std::string m_slowest = "nothing";
};

}  // namespace tarvex::test
