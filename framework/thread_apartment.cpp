// Entering and leaving the apartment.
#include "framework/thread_apartment.h"

#include "framework/log.h"

namespace tarvex {

namespace {

// S_FALSE says that the thread is in it already; that has to be balanced as well.
bool Enter() noexcept {
  const HRESULT result = CoInitializeEx(nullptr, COINIT_MULTITHREADED | COINIT_DISABLE_OLE1DDE);
  if (FAILED(result)) LogFormat("ThreadApartment: COM does not start: %x", static_cast<unsigned>(result));
  return SUCCEEDED(result);
}

}  // namespace

ThreadApartment::ThreadApartment() noexcept : m_entered(Enter()) {}

ThreadApartment::~ThreadApartment() {
  if (m_entered) CoUninitialize();
}

}  // namespace tarvex
