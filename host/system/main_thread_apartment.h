// COM for the main thread, from construction to destruction. On main's stack; every COM object of the thread must be
// gone before it is.
#pragma once

#include "framework/platform/platform.h"
#include "host/system/host_error.h"
#include "host/system/result_text.h"

namespace tarvex::host {

class MainThreadApartment {
 public:
  /// Single-threaded, as windows that live on this thread need it. Throws HostError.
  MainThreadApartment() {
    const HRESULT result = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    if (FAILED(result)) throw HostError(ExitCode::kInternal, "COM does not start: " + ResultText(result));
  }
  ~MainThreadApartment() { CoUninitialize(); }
  MainThreadApartment(const MainThreadApartment&) = delete;
  MainThreadApartment& operator=(const MainThreadApartment&) = delete;
};

}  // namespace tarvex::host
