// Collects the texts that the module logs, from construction to destruction. Owned by one test; texts
// arrive on any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "framework/com_ptr.h"
#include "framework/critical_section.h"
#include "include/tarvex/module_log.h"

namespace tarvex::test {

class LogCapture {
 public:
  /// `object` is any object of the module that offers IModuleLog; it must outlive this.
  explicit LogCapture(IUnknown* object);
  ~LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  /// Number of texts that are exactly this.
  std::size_t CountOf(std::string_view text);
  bool Contains(std::string_view text) { return CountOf(text) != 0; }
  /// Until it was logged.
  bool WaitFor(std::string_view text);
  /// All texts, one a line, for a failure's message.
  std::string Joined();

 private:
  static void STDMETHODCALLTYPE Take(void* context, const char* text);

  ComPtr<IModuleLog> m_log;
  CCritSec m_lock{"LogCapture", LockRank::kLogSink};
  std::vector<std::string> m_texts;  // under m_lock
};

}  // namespace tarvex::test
