// See watch.h.
#include "fuzz/watch.h"

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <mutex>
#include <thread>

// There only with sanitizers, whose reports do not raise a signal.
#ifdef __linux__
extern "C" __attribute__((weak)) void __sanitizer_set_death_callback(void (*callback)());  // NOLINT
#endif

namespace tarvex::fuzz {
namespace {

std::mutex g_lock;
std::list<Watched::Call> g_calls;  // in progress, the oldest first; under g_lock

// In a process that has failed there is nothing to lose, so no lock is taken.
void Show() {
  for (const Watched::Call& call : g_calls) std::cerr << "\nin " << call.name << std::endl;
}

void OnSignal(int number) {
  std::signal(number, SIG_DFL);
  Show();
  std::raise(number);
}

void Watch(const std::stop_token& over) {
  while (!over.stop_requested()) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const std::lock_guard hold(g_lock);
    if (g_calls.empty() || std::chrono::steady_clock::now() - g_calls.front().begin < kLongest) continue;
    std::cerr << "what does not end:";
    std::abort();
  }
}

std::jthread Start() {
#ifdef __linux__
  if (__sanitizer_set_death_callback != nullptr) __sanitizer_set_death_callback(Show);
#endif
  for (const int number : {SIGABRT, SIGSEGV, SIGILL, SIGFPE}) std::signal(number, OnSignal);
  return std::jthread(Watch);
}

}  // namespace

Watched::Watched(std::string name) {
  static const std::jthread watch = Start();
  const std::lock_guard hold(g_lock);
  m_place = g_calls.insert(g_calls.end(), Call{std::move(name)});
}

Watched::~Watched() {
  const std::lock_guard hold(g_lock);
  g_calls.erase(m_place);
}

}  // namespace tarvex::fuzz
