// See watchdog.h.
#include "tests/control/watchdog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>

namespace tarvex::test {
namespace {

constexpr std::chrono::seconds kHang{30};
constexpr DWORD kInterval = 500;  // milliseconds

std::chrono::milliseconds Since(Watchdog::Clock::time_point start) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(Watchdog::Clock::now() - start);
}

}  // namespace

Watchdog::Watchdog() {
  EXPECT_EQ(m_thread.Start([this] { Watch(); }), S_OK);
}

Watchdog::~Watchdog() {
  m_done.Set();
  m_thread.Join();
}

void Watchdog::Watch() {
  while (!m_done.Wait(kInterval)) {
    const CAutoLock lock(m_lock);
    if (m_calls.empty() || Since(m_calls.begin()->first) < kHang) continue;
    for (const auto& [start, name] : m_calls) std::cerr << name << " since " << Since(start).count() << " ms\n";
    std::cerr << "a call does not return" << std::endl;
    std::abort();
  }
}

std::string Watchdog::Slowest() {
  const CAutoLock lock(m_lock);
  return std::string(m_slowest) + " in " + std::to_string(m_longest.count()) + " ms";
}

Watchdog::Call::Call(Watchdog& dog, const char* name, std::chrono::milliseconds limit)
    : m_dog(dog), m_name(name), m_limit(limit) {
  const CAutoLock lock(m_dog.m_lock);
  m_dog.m_calls.emplace(m_start, m_name);
}

Watchdog::Call::~Call() {
  const auto taken = Since(m_start);
  EXPECT_LE(taken.count(), m_limit.count()) << m_name;
  const CAutoLock lock(m_dog.m_lock);
  const auto [first, last] = m_dog.m_calls.equal_range(m_start);
  m_dog.m_calls.erase(std::find_if(first, last, [this](const auto& call) { return call.second == m_name; }));
  if (taken <= m_dog.m_longest) return;
  m_dog.m_longest = taken;
  m_dog.m_slowest = m_name;
}

}  // namespace tarvex::test
