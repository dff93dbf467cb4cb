// The log: one sink for the whole module, or none.
#include "framework/log.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>

#include "framework/critical_section.h"

namespace tarvex {

namespace {

constexpr std::size_t kTextSize = 200;

struct Log {
  // Held while the sink runs, so that a sink that was taken away is not running any more.
  CCritSec lock{"log", LockRank::kLog};
  LogSink sink = nullptr;   // under the lock
  void* context = nullptr;  // under the lock
};

// Read without the lock, so that a text without a sink costs one load.
std::atomic<bool> g_hasSink{false};

Log& TheLog() {
  static Log log;
  return log;
}

void Write(const char* text) noexcept {
  Log& log = TheLog();
  const CAutoLock hold(log.lock);
  if (log.sink != nullptr) log.sink(log.context, text);
}

}  // namespace

void SetLogSink(LogSink sink, void* context) noexcept {
  Log& log = TheLog();
  const CAutoLock hold(log.lock);
  log.sink = sink;
  log.context = context;
  g_hasSink = sink != nullptr;
}

void LogText(const char* text) noexcept {
  if (g_hasSink.load(std::memory_order_relaxed)) Write(text);
}

void LogFormat(const char* format, ...) noexcept {
  if (!g_hasSink.load(std::memory_order_relaxed)) return;
  char text[kTextSize];
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof(text), format, arguments);
  va_end(arguments);
  Write(text);
}

}  // namespace tarvex
