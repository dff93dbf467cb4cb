// Passes the log's texts on to a host's sink.
#include "filter/module_log.h"

#include "framework/critical_section.h"
#include "framework/log.h"

namespace tarvex {

namespace {

// A host's sink has the calling convention of COM, the log's has not.
struct HostSink {
  ModuleLogSink function = nullptr;
  void* context = nullptr;
};

void Forward(void* context, const char* text) {
  const auto* sink = static_cast<const HostSink*>(context);
  sink->function(sink->context, text);
}

}  // namespace

HRESULT STDMETHODCALLTYPE ModuleLog::SetSink(ModuleLogSink function, void* context) {
  static CCritSec lock("module log", LockRank::kLogSetup);
  static HostSink sink;

  const CAutoLock hold(lock);
  SetLogSink(nullptr, nullptr);  // from here on nobody reads `sink`
  if (function == nullptr) return S_OK;
  sink = {function, context};
  SetLogSink(&Forward, &sink);
  return S_OK;
}

}  // namespace tarvex
