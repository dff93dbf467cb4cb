// When the machine kept threads of this process waiting for a processor. A call that takes long meanwhile
// does not hang. Belongs to the watchdog and is guarded by its lock.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <map>

namespace tarvex::test {

class StarvedTimes {
 public:
  using Clock = std::chrono::steady_clock;

  /// As often is Note to be called; when it comes later, its thread got no processor either.
  static constexpr std::chrono::milliseconds kInterval{20};

  /// Adds what happened since the last call, and forgets what was before `oldest`.
  void Note(Clock::time_point oldest);
  /// So much of the time from `start` until now at least one thread was ready to run and did not.
  std::chrono::milliseconds Since(Clock::time_point start) const;

 private:
  struct Span {
    Clock::time_point from;
    Clock::time_point to;
  };

  Clock::duration LongestWait();

  Clock::time_point m_noted = Clock::now();
  std::map<std::uint64_t, std::uint64_t> m_waits;  // of each thread so far, nanoseconds
  std::deque<Span> m_spans;                        // rising, and apart from one another
};

}  // namespace tarvex::test
