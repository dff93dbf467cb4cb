// See log_capture.h.
#include "tests/support/log_capture.h"

#include <algorithm>
#include <stdexcept>

namespace tarvex::test {

LogCapture::LogCapture(IUnknown* object) {
  if (FAILED(object->QueryInterface(IID_IModuleLog, m_log.PutVoid()))) throw std::runtime_error("no IModuleLog");
  m_log->SetSink(&Take, this);
}

LogCapture::~LogCapture() { m_log->SetSink(nullptr, nullptr); }

void STDMETHODCALLTYPE LogCapture::Take(void* context, const char* text) {
  auto& self = *static_cast<LogCapture*>(context);
  const CAutoLock lock(self.m_lock);
  self.m_texts.emplace_back(text);
}

std::vector<std::string> LogCapture::Texts() {
  const CAutoLock lock(m_lock);
  return m_texts;
}

std::size_t LogCapture::CountOf(std::string_view text) {
  const CAutoLock lock(m_lock);
  return static_cast<std::size_t>(std::count(m_texts.begin(), m_texts.end(), text));
}

void LogCapture::Clear() {
  const CAutoLock lock(m_lock);
  m_texts.clear();
}

std::string LogCapture::Joined() {
  std::string all;
  for (const std::string& text : Texts()) all += text + '\n';
  return all;
}

}  // namespace tarvex::test
