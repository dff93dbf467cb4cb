// See watchdog.h.
#include "tests/control/watchdog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>

namespace tarvex::test {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kHang{30000};
// However busy the machine is: more threads of ours than there are processors might run in circles.
constexpr int kMostPatience = 10;

milliseconds Since(Watchdog::Clock::time_point start) {
  return std::chrono::duration_cast<milliseconds>(Watchdog::Clock::now() - start);
}

struct Taken {
  milliseconds whole;
  milliseconds starved;

  bool IsOver(milliseconds limit) const { return whole - starved > limit || whole > kMostPatience * limit; }
  std::string InWords() const {
    return std::to_string(whole.count()) + " ms, " + std::to_string(starved.count()) +
           " of them without a processor for every thread";
  }
};

}  // namespace

Watchdog::Watchdog() {
  EXPECT_EQ(m_thread.Start([this] { Watch(); }), S_OK);
}

Watchdog::~Watchdog() {
  m_done.Set();
  m_thread.Join();
}

void Watchdog::Note() { m_starved.Note(m_calls.empty() ? Clock::now() : m_calls.begin()->first); }

void Watchdog::Watch() {
  while (!m_done.Wait(static_cast<DWORD>(StarvedTimes::kInterval.count()))) {
    const CAutoLock lock(m_lock);
    Note();
    if (m_calls.empty()) continue;
    const auto first = m_calls.begin()->first;
    if (!Taken{Since(first), m_starved.Since(first)}.IsOver(kHang)) continue;
    for (const auto& [start, name] : m_calls) std::cerr << name << " since " << Since(start).count() << " ms\n";
    std::cerr << "a call does not return" << std::endl;
    std::abort();
  }
}

std::string Watchdog::Slowest() {
  const CAutoLock lock(m_lock);
  return m_slowest;
}

Watchdog::Call::Call(Watchdog& dog, const char* name, milliseconds limit) : m_dog(dog), m_name(name), m_limit(limit) {
  const CAutoLock lock(m_dog.m_lock);
  m_dog.m_calls.emplace(m_start, m_name);
}

Watchdog::Call::~Call() { m_dog.EndCall(*this); }

void Watchdog::EndCall(const Call& call) {
  const CAutoLock lock(m_lock);
  Taken taken{Since(call.m_start), milliseconds::zero()};
  if (taken.whole > m_longest || taken.IsOver(call.m_limit)) {
    Note();
    taken.starved = m_starved.Since(call.m_start);
  }
  if (taken.IsOver(call.m_limit)) {
    m_hasBarked = true;
    ADD_FAILURE() << call.m_name << " took " << taken.InWords();
  }
  const auto [first, last] = m_calls.equal_range(call.m_start);
  m_calls.erase(std::find_if(first, last, [&call](const auto& each) { return each.second == call.m_name; }));
  if (taken.whole <= m_longest) return;
  m_longest = taken.whole;
  m_slowest = std::string(call.m_name) + " in " + taken.InWords();
}

}  // namespace tarvex::test
