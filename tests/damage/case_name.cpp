// See case_name.h.
#include "tests/damage/case_name.h"

#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstring>

// There only with sanitizers, whose reports do not raise a signal.
extern "C" __attribute__((weak)) void __sanitizer_set_death_callback(void (*callback)());  // NOLINT

namespace tarvex::test {
namespace {

std::array<char, 200> s_name = {"nothing yet"};

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

void NameCase(const char* file, const char* kind, std::uint64_t number) noexcept {
  [[maybe_unused]] static const bool watches = WatchForCrashes();
  std::snprintf(s_name.data(), s_name.size(), "%s: %s %llu", file, kind, static_cast<unsigned long long>(number));
}

const char* CaseName() noexcept { return s_name.data(); }

}  // namespace tarvex::test
