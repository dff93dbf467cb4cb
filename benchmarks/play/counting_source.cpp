// See counting_source.h.
#include "benchmarks/play/counting_source.h"

#include <algorithm>

namespace tarvex::bench {
// What reads below needs no lock, as the platform's file source needs none, and so the class is given as that one's.
CCountingSource::CCountingSource(ComPtr<IAsyncReader> reader)
    : CBaseFilter("CCountingSource", nullptr, &m_filterLock, CLSID_AsyncReader),
      m_pin(new CCountingSourcePin(this, &m_filterLock, std::move(reader))) {}

CCountingSource::~CCountingSource() = default;

CBasePin* CCountingSource::GetPin(int index) { return index == 0 ? m_pin.Get() : nullptr; }

IPin* CCountingSource::Output() const noexcept { return m_pin.Get(); }

ReadCount CCountingSource::Reads() const noexcept { return m_pin->Reads(); }

CCountingSourcePin::CCountingSourcePin(CCountingSource* filter, CCritSec* lock, ComPtr<IAsyncReader> reader)
    : CBasePin("CCountingSourcePin", filter, lock, OLESTR("Output"), PINDIR_OUTPUT), m_reader(std::move(reader)) {}

HRESULT STDMETHODCALLTYPE CCountingSourcePin::NonDelegatingQueryInterface(REFIID iid, void** out) {
  if (iid == IID_IAsyncReader) return GiveInterface(static_cast<IAsyncReader*>(this), out);
  return CBasePin::NonDelegatingQueryInterface(iid, out);
}

HRESULT STDMETHODCALLTYPE CCountingSourcePin::QueryInterface(REFIID iid, void** out) {
  return CBasePin::QueryInterface(iid, out);
}

ULONG STDMETHODCALLTYPE CCountingSourcePin::AddRef() { return CBasePin::AddRef(); }

ULONG STDMETHODCALLTYPE CCountingSourcePin::Release() { return CBasePin::Release(); }

HRESULT CCountingSourcePin::CheckMediaType(const CMediaType* type) {
  return type->majortype == MEDIATYPE_Stream ? S_OK : S_FALSE;
}

HRESULT CCountingSourcePin::GetMediaType(int position, CMediaType* type) {
  if (position != 0) return VFW_S_NO_MORE_ITEMS;
  type->InitMediaType();
  type->SetType(&MEDIATYPE_Stream);
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CCountingSourcePin::SyncRead(LONGLONG llPosition, LONG lLength, BYTE* pBuffer) {
  m_calls += 1;
  m_bytes += static_cast<std::uint64_t>(std::max<LONG>(lLength, 0));
  return m_reader->SyncRead(llPosition, lLength, pBuffer);
}

HRESULT STDMETHODCALLTYPE CCountingSourcePin::RequestAllocator(IMemAllocator* pPreferred, ALLOCATOR_PROPERTIES* pProps,
                                                               IMemAllocator** ppActual) {
  return m_reader->RequestAllocator(pPreferred, pProps, ppActual);
}

HRESULT STDMETHODCALLTYPE CCountingSourcePin::Request(IMediaSample* pSample, DWORD_PTR dwUser) {
  return m_reader->Request(pSample, dwUser);
}

HRESULT STDMETHODCALLTYPE CCountingSourcePin::WaitForNext(DWORD dwTimeout, IMediaSample** ppSample,
                                                          DWORD_PTR* pdwUser) {
  return m_reader->WaitForNext(dwTimeout, ppSample, pdwUser);
}

HRESULT STDMETHODCALLTYPE CCountingSourcePin::SyncReadAligned(IMediaSample* pSample) {
  return m_reader->SyncReadAligned(pSample);
}

HRESULT STDMETHODCALLTYPE CCountingSourcePin::Length(LONGLONG* pTotal, LONGLONG* pAvailable) {
  return m_reader->Length(pTotal, pAvailable);
}

HRESULT STDMETHODCALLTYPE CCountingSourcePin::BeginFlush() { return m_reader->BeginFlush(); }

HRESULT STDMETHODCALLTYPE CCountingSourcePin::EndFlush() { return m_reader->EndFlush(); }

}  // namespace tarvex::bench
