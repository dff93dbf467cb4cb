// Listens to what the module logs: keeps the last texts, which name the reason of a refusal, and writes
// all of them to a file on request. Owned by the graph session; texts arrive on the module's threads.
#pragma once

#include <string>

#include "framework/com_ptr.h"
#include "framework/critical_section.h"
#include "host/system/file_handle.h"
#include "include/tarvex/module_log.h"

namespace tarvex::host {

class LogListener {
 public:
  /// `logFile` (as NarrowFileName gives it) is created anew; empty for none. Throws HostError.
  explicit LogListener(const std::string& logFile);
  ~LogListener();
  LogListener(const LogListener&) = delete;
  LogListener& operator=(const LogListener&) = delete;

  /// From now on this object gets the module's texts. Nothing happens when the module has no log.
  void Attach(IBaseFilter* splitter);
  /// No text arrives any more when this returns. Also gives up the reference on the splitter.
  void Detach() noexcept;

  /// Why the module refused the file: the last text since Attach or Forget, after the track if the text before it names
  /// one. Without a newline; empty when there was no text.
  std::string Refusal();
  void Forget();

 private:
  static void STDMETHODCALLTYPE Receive(void* context, const char* text);
  void Take(const char* text);

  ComPtr<IModuleLog> m_log;
  CCritSec m_lock{"LogListener", LockRank::kLogSink};
  std::string m_last;    // under m_lock
  std::string m_before;  // the one before it, under m_lock
  FileHandle m_file;     // written under m_lock
};

}  // namespace tarvex::host
