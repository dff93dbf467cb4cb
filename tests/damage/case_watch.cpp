// See case_watch.h.
#include "tests/damage/case_watch.h"

#include <sys/time.h>
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

constexpr std::int64_t kSecond = 1'000'000'000;  // nanoseconds
constexpr time_t kBusyLimit = 20;                // seconds of the processor, for one case
constexpr time_t kIdleLimit = 300;               // on the wall

std::array<char, 200> s_name = {"nothing yet"};

std::int64_t ProcessorTime() noexcept {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return time.tv_sec * kSecond + time.tv_nsec;
}

// 0: no limit. Its signal ends the process.
void Limit(int timer, time_t seconds) noexcept {
  itimerval limit{};
  limit.it_value.tv_sec = seconds;
  setitimer(timer, &limit, nullptr);
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
  for (const int number : {SIGABRT, SIGPROF, SIGALRM}) std::signal(number, OnSignal);
  return true;
}

}  // namespace

CaseWatch::CaseWatch() { [[maybe_unused]] static const bool watches = WatchForCrashes(); }

void CaseWatch::Begin(const char* file, const char* kind, std::uint64_t number) noexcept {
  End();
  std::snprintf(s_name.data(), s_name.size(), "%s: %s %llu", file, kind, static_cast<unsigned long long>(number));
  m_begin = ProcessorTime();
  Limit(ITIMER_PROF, kBusyLimit);
  Limit(ITIMER_REAL, kIdleLimit);
}

void CaseWatch::End() noexcept {
  if (m_begin == 0) return;
  Limit(ITIMER_PROF, 0);
  Limit(ITIMER_REAL, 0);
  const std::int64_t taken = ProcessorTime() - m_begin;
  m_begin = 0;
  if (taken <= m_longest) return;
  m_longest = taken;
  m_slowest = s_name.data();
}

const char* CaseWatch::Name() noexcept { return s_name.data(); }

std::string CaseWatch::Slowest() const { return m_slowest + " in " + std::to_string(m_longest / 1'000'000) + " ms"; }

}  // namespace tarvex::test
