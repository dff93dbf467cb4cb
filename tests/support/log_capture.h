// Collects the texts that the module logs, from construction to destruction. Owned by one test; texts
// arrive on any thread.
#pragma once

#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "framework/com_ptr.h"
#include "framework/critical_section.h"
#include "include/tarvex/module_log.h"
#include "tests/support/patience.h"

namespace tarvex::test {

class LogCapture {
 public:
  /// `object` is any object of the module that offers IModuleLog; it must outlive this.
  explicit LogCapture(IUnknown* object) {
    if (FAILED(object->QueryInterface(IID_IModuleLog, m_log.PutVoid()))) throw std::runtime_error("no IModuleLog");
    m_log->SetSink(&Take, this);
  }
  ~LogCapture() { m_log->SetSink(nullptr, nullptr); }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  /// Number of texts that are exactly this.
  std::size_t CountOf(std::string_view text) {
    const CAutoLock lock(m_lock);
    return static_cast<std::size_t>(std::count(m_texts.begin(), m_texts.end(), text));
  }
  bool Contains(std::string_view text) { return CountOf(text) != 0; }
  /// Until it was logged.
  bool WaitFor(std::string_view text) {
    return Eventually([&] { return Contains(text); });
  }
  /// All texts, one a line, for a failure's message.
  std::string Joined() {
    const CAutoLock lock(m_lock);
    std::string all;
    for (const std::string& text : m_texts) all += text + '\n';
    return all;
  }

 private:
  static void STDMETHODCALLTYPE Take(void* context, const char* text) {
    auto& self = *static_cast<LogCapture*>(context);
    const CAutoLock lock(self.m_lock);
    self.m_texts.emplace_back(text);
  }

  ComPtr<IModuleLog> m_log;
  CCritSec m_lock{"LogCapture", LockRank::kLogSink};
  std::vector<std::string> m_texts;  // under m_lock
};

}  // namespace tarvex::test
