// See log_capture.h.
#include "tests/support/log_capture.h"

#include <algorithm>
#include <stdexcept>

#include "tests/support/patience.h"

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

std::size_t LogCapture::CountOf(std::string_view text) {
  const CAutoLock lock(m_lock);
  return static_cast<std::size_t>(std::count(m_texts.begin(), m_texts.end(), text));
}

bool LogCapture::WaitFor(std::string_view text) {
  return Eventually([&] { return Contains(text); });
}

std::string LogCapture::Joined() {
  const CAutoLock lock(m_lock);
  std::string all;
  for (const std::string& text : m_texts) all += text + '\n';
  return all;
}

}  // namespace tarvex::test
