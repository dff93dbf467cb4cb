// Watches what has to end: a call, or a case of which there may be millions. What a crash, a report of a sanitizer or
// the limit ends the process in is named.
#pragma once

#include <chrono>
#include <list>
#include <string>

namespace tarvex::fuzz {

/// The longest that anything may take, however busy the machine is. What takes longer hangs, and ends the process.
inline constexpr std::chrono::seconds kLongest{60};

/// From construction to destruction. Any number at once, on any threads.
class Watched {
 public:
  explicit Watched(std::string name);
  ~Watched();
  Watched(const Watched&) = delete;
  Watched& operator=(const Watched&) = delete;

  struct Call {
    std::string name;
    std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now();
  };

 private:
  std::list<Call>::iterator m_place;
};

}  // namespace tarvex::fuzz
