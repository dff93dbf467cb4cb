// See case_watch.h.
#include "tests/damage/case_watch.h"

#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>

// There only with sanitizers, whose reports do not raise a signal.
extern "C" __attribute__((weak)) void __sanitizer_set_death_callback(void (*callback)());  // NOLINT

namespace tarvex::test {
namespace {

constexpr std::int64_t kSecond = 1'000'000'000;
constexpr std::int64_t kBusyLimit = 20 * kSecond;   // of the processor, for one case
constexpr std::int64_t kIdleLimit = 300 * kSecond;  // on the wall
constexpr DWORD kInterval = 500;                    // milliseconds

std::array<char, 200> s_name = {"nothing yet"};

std::int64_t Now(clockid_t clock) noexcept {
  timespec time{};
  clock_gettime(clock, &time);
  return time.tv_sec * kSecond + time.tv_nsec;
}

// Also in a signal handler, so by the system's own means only.
void ShowCase() {
  constexpr char kBegin[] = "\nin case: ";
  for (const char* text : {kBegin, static_cast<const char*>(s_name.data()), "\n"}) {
    if (write(STDERR_FILENO, text, std::strlen(text)) < 0) return;
  }
}

void OnSignal(int number) {
  ShowCase();
  std::signal(number, SIG_DFL);
  std::raise(number);
}

bool WatchForCrashes() {
  if (__sanitizer_set_death_callback != nullptr) {
    __sanitizer_set_death_callback(ShowCase);
  } else {
    for (const int number : {SIGSEGV, SIGBUS, SIGFPE, SIGILL}) std::signal(number, OnSignal);
  }
  std::signal(SIGABRT, OnSignal);
  return true;
}

}  // namespace

CaseWatch::CaseWatch() {
  [[maybe_unused]] static const bool watches = WatchForCrashes();
  if (FAILED(m_thread.Start([this] { Watch(); }))) std::abort();
}

CaseWatch::~CaseWatch() {
  m_done.Set();
  m_thread.Join();
}

void CaseWatch::Begin(const char* file, const char* kind, std::uint64_t number) noexcept {
  End();
  std::snprintf(s_name.data(), s_name.size(), "%s: %s %llu", file, kind, static_cast<unsigned long long>(number));
  m_wallTime = Now(CLOCK_MONOTONIC);
  m_processorTime = Now(CLOCK_PROCESS_CPUTIME_ID);
}

void CaseWatch::End() noexcept {
  const std::int64_t begin = m_processorTime.exchange(0);
  const std::int64_t taken = Now(CLOCK_PROCESS_CPUTIME_ID) - begin;
  if (begin == 0 || taken <= m_longest) return;
  m_longest = taken;
  m_slowest = s_name.data();
}

const char* CaseWatch::Name() noexcept { return s_name.data(); }

std::string CaseWatch::Slowest() const { return m_slowest + " in " + std::to_string(m_longest / 1'000'000) + " ms"; }

void CaseWatch::Watch() {
  while (!m_done.Wait(kInterval)) {
    const std::int64_t wall = m_wallTime;
    const std::int64_t begin = m_processorTime;
    if (begin == 0) continue;
    const bool isBusy = Now(CLOCK_PROCESS_CPUTIME_ID) - begin > kBusyLimit;
    if (!isBusy && Now(CLOCK_MONOTONIC) - wall < kIdleLimit) continue;
    std::fputs(isBusy ? "a case takes too long\n" : "a case does not end\n", stderr);
    std::abort();
  }
}

}  // namespace tarvex::test
