// The base of an input pin: allocator, tests before a sample is taken, flushing.
#include "framework/base_input_pin.h"

#include "framework/com_boundary.h"
#include "framework/mem_allocator.h"

namespace tarvex {

CBaseInputPin::CBaseInputPin(const char* objectName, CBaseFilter* filter, CCritSec* lock, const OLECHAR* name)
    : CBasePin(objectName, filter, lock, name, PINDIR_INPUT) {}

HRESULT STDMETHODCALLTYPE CBaseInputPin::NonDelegatingQueryInterface(REFIID iid, void** out) {
  if (iid == IID_IMemInputPin) return GiveInterface(static_cast<IMemInputPin*>(this), out);
  return CBasePin::NonDelegatingQueryInterface(iid, out);
}

HRESULT STDMETHODCALLTYPE CBaseInputPin::QueryInterface(REFIID iid, void** out) {
  return Owner()->QueryInterface(iid, out);
}

ULONG STDMETHODCALLTYPE CBaseInputPin::AddRef() { return Owner()->AddRef(); }

ULONG STDMETHODCALLTYPE CBaseInputPin::Release() { return Owner()->Release(); }

HRESULT STDMETHODCALLTYPE CBaseInputPin::GetAllocator(IMemAllocator** ppAllocator) {
  if (ppAllocator == nullptr) return E_POINTER;
  *ppAllocator = nullptr;
  const PinScope scope(*this);
  if (!scope) return VFW_E_NO_ALLOCATOR;
  return ComBoundary([&] {
    if (!m_pAllocator) m_pAllocator = MakeCom<CMemAllocator>();
    m_pAllocator.CopyTo(ppAllocator);
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE CBaseInputPin::NotifyAllocator(IMemAllocator* pAllocator, BOOL bReadOnly) {
  if (pAllocator == nullptr) return E_POINTER;
  const PinScope scope(*this);
  if (!scope) return VFW_E_NOT_CONNECTED;
  m_pAllocator = ComPtr<IMemAllocator>(pAllocator);
  m_bReadOnly = bReadOnly != FALSE;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CBaseInputPin::GetAllocatorRequirements(ALLOCATOR_PROPERTIES* /*pProps*/) {
  return E_NOTIMPL;
}

HRESULT CBaseInputPin::CheckStreaming() {
  if (!IsConnected()) return VFW_E_NOT_CONNECTED;
  if (m_bFlushing) return S_FALSE;
  return IsStopped() ? VFW_E_WRONG_STATE : S_OK;
}

HRESULT STDMETHODCALLTYPE CBaseInputPin::Receive(IMediaSample* pSample) {
  if (pSample == nullptr) return E_POINTER;
  const HRESULT streaming = CheckStreaming();
  if (streaming != S_OK) return streaming;
  AM_MEDIA_TYPE* record = nullptr;
  if (pSample->GetMediaType(&record) != S_OK) return S_OK;
  const MediaTypePtr owner(record);
  const HRESULT accepted = ComBoundary([&] {
    const CMediaType type(*record);
    return CheckMediaType(&type);
  });
  if (accepted == S_OK) return S_OK;
  // The upstream filter changed the type without asking: nothing that follows can be understood.
  EndOfStream();
  if (const auto filter = HoldFilter()) filter->NotifyEvent(EC_ERRORABORT, VFW_E_TYPE_NOT_ACCEPTED, 0);
  return VFW_E_INVALIDMEDIATYPE;
}

HRESULT STDMETHODCALLTYPE CBaseInputPin::ReceiveMultiple(IMediaSample** pSamples, LONG nSamples,
                                                         LONG* nSamplesProcessed) {
  if (pSamples == nullptr || nSamplesProcessed == nullptr) return E_POINTER;
  HRESULT hr = S_OK;
  *nSamplesProcessed = 0;
  while (*nSamplesProcessed < nSamples) {
    hr = Receive(pSamples[*nSamplesProcessed]);
    if (hr != S_OK) break;
    ++*nSamplesProcessed;
  }
  return hr;
}

HRESULT STDMETHODCALLTYPE CBaseInputPin::ReceiveCanBlock() {
  const PinScope scope(*this);
  if (!scope) return S_FALSE;
  const int count = Filter()->GetPinCount();
  for (int i = 0; i < count; ++i) {
    CBasePin* pin = Filter()->GetPin(i);
    if (pin == nullptr || pin->Direction() == PINDIR_INPUT || !pin->IsConnected()) continue;
    // A peer that takes no samples this way may do anything.
    const auto peer = QueryFor<IMemInputPin>(pin->GetConnected());
    if (!peer || peer->ReceiveCanBlock() != S_FALSE) return S_OK;
  }
  return S_FALSE;
}

HRESULT STDMETHODCALLTYPE CBaseInputPin::BeginFlush() {
  m_bFlushing = true;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CBaseInputPin::EndFlush() {
  m_bFlushing = false;
  return S_OK;
}

HRESULT CBaseInputPin::BreakConnect() {
  if (m_pAllocator) {
    const HRESULT hr = m_pAllocator->Decommit();
    if (FAILED(hr)) return hr;
    m_pAllocator.Reset();
  }
  return S_OK;
}

HRESULT CBaseInputPin::Inactive() {
  m_bFlushing = false;
  return m_pAllocator ? m_pAllocator->Decommit() : S_OK;
}

}  // namespace tarvex
