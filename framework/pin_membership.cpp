// A pin's reference count and its membership in a filter: the part of CBasePin that keeps both alive
// for as long as they must be, and no longer.
#include <utility>

#include "framework/base_pin.h"

namespace tarvex {

ULONG STDMETHODCALLTYPE CBasePin::NonDelegatingAddRef() {
  const CAutoLock hold(m_membershipLock);
  if (CBaseFilter* filter = m_pFilter; filter != nullptr) {
    ++m_outerReferences;
    filter->AddRef();
  }
  return ++m_references;
}

ULONG STDMETHODCALLTYPE CBasePin::NonDelegatingRelease() {
  CBaseFilter* filter = nullptr;
  ULONG left = 0;
  {
    const CAutoLock hold(m_membershipLock);
    filter = m_pFilter;
    if (filter != nullptr) --m_outerReferences;
    left = --m_references;
    // A reference taken and given back during destruction must not destroy a second time.
    if (left == 0) m_references = 1;
  }
  if (left == 0) delete this;
  // Last of all: it may take the filter away, and this pin with it.
  if (filter != nullptr) filter->Release();
  return left;
}

void CBasePin::OwnerAddRef() noexcept {
  const CAutoLock hold(m_membershipLock);
  ++m_references;
}

void CBasePin::OwnerRelease() noexcept {
  ULONG left = 0;
  {
    const CAutoLock hold(m_membershipLock);
    left = --m_references;
    if (left == 0) m_references = 1;
  }
  if (left == 0) delete this;
}

void CBasePin::LeaveFilter() noexcept {
  CBaseFilter* filter = nullptr;
  ULONG held = 0;
  {
    const CAutoLock hold(m_membershipLock);
    filter = m_pFilter.exchange(nullptr);
    held = std::exchange(m_outerReferences, 0);
  }
  // The caller is the filter, so none of these can be its last.
  while (held-- > 0) filter->Release();
}

ComPtr<CBaseFilter> CBasePin::HoldFilter() {
  const CAutoLock hold(m_membershipLock);
  return ComPtr<CBaseFilter>(m_pFilter.load());
}

bool CBasePin::IsStopped() const noexcept {
  const CBaseFilter* filter = m_pFilter;
  return filter == nullptr || filter->IsStopped();
}

CBasePin::PinScope::PinScope(CBasePin& pin) : m_filter(pin.HoldFilter()), m_lock(pin.m_pLock) {
  if (!m_filter) return;
  m_lock->Lock();
  // The pin may have left while this thread waited for the lock.
  m_locked = pin.Filter() != nullptr;
  if (!m_locked) m_lock->Unlock();
}

CBasePin::PinScope::~PinScope() {
  if (m_locked) m_lock->Unlock();
}

}  // namespace tarvex
