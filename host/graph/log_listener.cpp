#include "host/graph/log_listener.h"

#include <fmt/format.h>

#include <string_view>
#include <utility>

#include "framework/thread.h"
#include "host/system/host_error.h"
#include "host/system/input_file.h"
#include "host/system/text_escape.h"
#include "pins/formats/refused_track.h"

namespace tarvex::host {

namespace {

std::string ClockText() {
  SYSTEMTIME now{};
  GetLocalTime(&now);
  return fmt::format("{:02}:{:02}:{:02}.{:03}", now.wHour, now.wMinute, now.wSecond, now.wMilliseconds);
}

}  // namespace

LogListener::LogListener(const std::string& logFile) {
  if (logFile.empty()) return;
  m_file = FileHandle::Create(FullPath(logFile));
  if (!m_file) {
    throw HostError(ExitCode::kUsage, fmt::format("{}: the log cannot be written (error {})", logFile, GetLastError()));
  }
}

LogListener::~LogListener() { Detach(); }

void LogListener::Attach(IBaseFilter* splitter) {
  Detach();
  if (FAILED(splitter->QueryInterface(IID_IModuleLog, m_log.PutVoid()))) return;
  if (FAILED(m_log->SetSink(&LogListener::Receive, this))) m_log.Reset();
}

void LogListener::Detach() noexcept {
  if (!m_log) return;
  m_log->SetSink(nullptr, nullptr);
  m_log.Reset();
}

std::string LogListener::Refusal() {
  constexpr std::string_view kTrack = kRefusedTrack;
  const CAutoLock hold(m_lock);
  if (!m_before.starts_with(kTrack)) return m_last;
  return m_before.substr(kTrack.size()) + ": " + m_last;
}

void LogListener::Forget() {
  const CAutoLock hold(m_lock);
  m_last.clear();
  m_before.clear();
}

void STDMETHODCALLTYPE LogListener::Receive(void* context, const char* text) {
  try {
    static_cast<LogListener*>(context)->Take(text);
  } catch (...) {  // a text is lost; the module must not notice
  }
}

void LogListener::Take(const char* text) {
  std::string line = text;
  while (line.ends_with('\n')) line.pop_back();
  const CAutoLock hold(m_lock);
  if (m_file) {
    const std::string entry = fmt::format("{} {:04x} {}\n", ClockText(), CurrentThreadId(), EscapeForTerminal(line));
    m_file.Write(entry.data(), entry.size());
  }
  m_before = std::exchange(m_last, std::move(line));
}

}  // namespace tarvex::host
