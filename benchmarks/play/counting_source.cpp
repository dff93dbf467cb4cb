// See counting_source.h.
#include "benchmarks/play/counting_source.h"

#include <algorithm>

namespace tarvex::bench {
namespace {

// A sleep would take as long as the system likes.
void Spend(std::chrono::microseconds time) {
  const auto end = std::chrono::steady_clock::now() + time;
  while (std::chrono::steady_clock::now() < end) {
  }
}

}  // namespace

// What reads below needs no lock, as the platform's file source needs none, and so the class is given as that one's.
CountingSource::CountingSource(ComPtr<IAsyncReader> reader, std::chrono::microseconds delay)
    : CBaseFilter("CountingSource", nullptr, &m_filterLock, CLSID_AsyncReader),
      m_pin(new CountingSourcePin(this, &m_filterLock, std::move(reader), delay)) {}

CountingSource::~CountingSource() = default;

CBasePin* CountingSource::GetPin(int index) { return index == 0 ? m_pin.Get() : nullptr; }

IPin* CountingSource::Output() const noexcept { return m_pin.Get(); }

ReadCount CountingSource::Reads() const noexcept { return m_pin->Reads(); }

CountingSourcePin::CountingSourcePin(CountingSource* filter, CCritSec* lock, ComPtr<IAsyncReader> reader,
                                     std::chrono::microseconds delay)
    : CBasePin("CountingSourcePin", filter, lock, OLESTR("Output"), PINDIR_OUTPUT),
      m_reader(std::move(reader)),
      m_delay(delay) {}

HRESULT STDMETHODCALLTYPE CountingSourcePin::NonDelegatingQueryInterface(REFIID iid, void** out) {
  if (iid == IID_IAsyncReader) return GiveInterface(static_cast<IAsyncReader*>(this), out);
  return CBasePin::NonDelegatingQueryInterface(iid, out);
}

HRESULT STDMETHODCALLTYPE CountingSourcePin::QueryInterface(REFIID iid, void** out) {
  return CBasePin::QueryInterface(iid, out);
}

ULONG STDMETHODCALLTYPE CountingSourcePin::AddRef() { return CBasePin::AddRef(); }

ULONG STDMETHODCALLTYPE CountingSourcePin::Release() { return CBasePin::Release(); }

HRESULT CountingSourcePin::CheckMediaType(const CMediaType* type) {
  return type->majortype == MEDIATYPE_Stream ? S_OK : S_FALSE;
}

HRESULT CountingSourcePin::GetMediaType(int position, CMediaType* type) {
  if (position != 0) return VFW_S_NO_MORE_ITEMS;
  *type = CMediaType(MEDIATYPE_Stream);
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CountingSourcePin::SyncRead(LONGLONG llPosition, LONG lLength, BYTE* pBuffer) {
  m_calls += 1;
  m_bytes += static_cast<std::uint64_t>(std::max<LONG>(lLength, 0));
  if (m_delay.count() != 0) Spend(m_delay);
  return m_reader->SyncRead(llPosition, lLength, pBuffer);
}

HRESULT STDMETHODCALLTYPE CountingSourcePin::RequestAllocator(IMemAllocator* pPreferred, ALLOCATOR_PROPERTIES* pProps,
                                                              IMemAllocator** ppActual) {
  return m_reader->RequestAllocator(pPreferred, pProps, ppActual);
}

HRESULT STDMETHODCALLTYPE CountingSourcePin::Request(IMediaSample* pSample, DWORD_PTR dwUser) {
  return m_reader->Request(pSample, dwUser);
}

HRESULT STDMETHODCALLTYPE CountingSourcePin::WaitForNext(DWORD dwTimeout, IMediaSample** ppSample, DWORD_PTR* pdwUser) {
  return m_reader->WaitForNext(dwTimeout, ppSample, pdwUser);
}

HRESULT STDMETHODCALLTYPE CountingSourcePin::SyncReadAligned(IMediaSample* pSample) {
  return m_reader->SyncReadAligned(pSample);
}

HRESULT STDMETHODCALLTYPE CountingSourcePin::Length(LONGLONG* pTotal, LONGLONG* pAvailable) {
  return m_reader->Length(pTotal, pAvailable);
}

HRESULT STDMETHODCALLTYPE CountingSourcePin::BeginFlush() { return m_reader->BeginFlush(); }

HRESULT STDMETHODCALLTYPE CountingSourcePin::EndFlush() { return m_reader->EndFlush(); }

}  // namespace tarvex::bench
