// The base of an output pin: allocator of the connection and delivery to the peer.
#include "framework/base_output_pin.h"

#include "framework/com_boundary.h"
#include "framework/mem_allocator.h"

namespace tarvex {

CBaseOutputPin::CBaseOutputPin(const char* objectName, CBaseFilter* filter, CCritSec* lock, const OLECHAR* name)
    : CBasePin(objectName, filter, lock, name, PINDIR_OUTPUT) {}

HRESULT CBaseOutputPin::CheckConnect(IPin* peer) {
  const HRESULT hr = CBasePin::CheckConnect(peer);
  if (FAILED(hr)) return hr;
  return peer->QueryInterface(IID_IMemInputPin, m_pInputPin.PutVoid());
}

HRESULT CBaseOutputPin::BreakConnect() {
  if (m_pAllocator) {
    const HRESULT hr = m_pAllocator->Decommit();
    if (FAILED(hr)) return hr;
    m_pAllocator.Reset();
  }
  m_pInputPin.Reset();
  return S_OK;
}

HRESULT CBaseOutputPin::CompleteConnect(IPin* /*peer*/) {
  return DecideAllocator(m_pInputPin.Get(), m_pAllocator.Put());
}

HRESULT CBaseOutputPin::OfferAllocator(IMemInputPin* peer, IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) {
  const HRESULT hr = DecideBufferSize(allocator, request);
  return FAILED(hr) ? hr : peer->NotifyAllocator(allocator, FALSE);
}

HRESULT CBaseOutputPin::DecideAllocator(IMemInputPin* peer, IMemAllocator** allocator) {
  if (allocator == nullptr) return E_POINTER;
  *allocator = nullptr;
  ALLOCATOR_PROPERTIES request{};
  // Few pins answer this; what they leave alone stays zero.
  if (FAILED(peer->GetAllocatorRequirements(&request))) request = {};
  if (request.cbAlign == 0) request.cbAlign = 1;

  ComPtr<IMemAllocator> candidate;
  if (SUCCEEDED(peer->GetAllocator(candidate.Put())) && candidate &&
      SUCCEEDED(OfferAllocator(peer, candidate.Get(), &request))) {
    *allocator = candidate.Detach();
    return S_OK;
  }
  HRESULT hr = InitAllocator(candidate.Put());
  if (SUCCEEDED(hr)) hr = OfferAllocator(peer, candidate.Get(), &request);
  if (SUCCEEDED(hr)) *allocator = candidate.Detach();
  return hr;
}

HRESULT CBaseOutputPin::InitAllocator(IMemAllocator** allocator) {
  if (allocator == nullptr) return E_POINTER;
  *allocator = nullptr;
  return ComBoundary([&] {
    *allocator = MakeCom<CMemAllocator>().Detach();
    return S_OK;
  });
}

HRESULT CBaseOutputPin::Active() { return m_pAllocator ? m_pAllocator->Commit() : VFW_E_NO_ALLOCATOR; }

HRESULT CBaseOutputPin::Inactive() { return m_pAllocator ? m_pAllocator->Decommit() : VFW_E_NO_ALLOCATOR; }

HRESULT STDMETHODCALLTYPE CBaseOutputPin::EndOfStream() { return E_UNEXPECTED; }

HRESULT STDMETHODCALLTYPE CBaseOutputPin::BeginFlush() { return E_UNEXPECTED; }

HRESULT STDMETHODCALLTYPE CBaseOutputPin::EndFlush() { return E_UNEXPECTED; }

HRESULT CBaseOutputPin::GetDeliveryBuffer(IMediaSample** sample, REFERENCE_TIME* start, REFERENCE_TIME* end,
                                          DWORD flags) {
  return m_pAllocator ? m_pAllocator->GetBuffer(sample, start, end, flags) : VFW_E_NO_ALLOCATOR;
}

HRESULT CBaseOutputPin::Deliver(IMediaSample* sample) {
  return m_pInputPin ? m_pInputPin->Receive(sample) : VFW_E_NOT_CONNECTED;
}

HRESULT CBaseOutputPin::DeliverEndOfStream() {
  return IsConnected() ? GetConnected()->EndOfStream() : VFW_E_NOT_CONNECTED;
}

HRESULT CBaseOutputPin::DeliverBeginFlush() {
  return IsConnected() ? GetConnected()->BeginFlush() : VFW_E_NOT_CONNECTED;
}

HRESULT CBaseOutputPin::DeliverEndFlush() { return IsConnected() ? GetConnected()->EndFlush() : VFW_E_NOT_CONNECTED; }

HRESULT CBaseOutputPin::DeliverNewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
  return IsConnected() ? GetConnected()->NewSegment(start, stop, rate) : VFW_E_NOT_CONNECTED;
}

}  // namespace tarvex
