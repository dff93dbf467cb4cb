// One media sample over memory that its allocator owns.
#include "framework/media_sample.h"

#include <algorithm>
#include <cstring>

#include "framework/com_boundary.h"
#include "framework/com_ptr.h"

namespace tarvex {

namespace {

constexpr DWORD kTimeFlags = AM_SAMPLE_TIMEVALID | AM_SAMPLE_STOPVALID;
constexpr DWORD kMediaTimeSet = 0x80000000;  // a flag that nobody else sees; the platform's are below

/// A field of a partial property record is there when the whole of it fits.
template <class Field>
bool Has(DWORD size, const AM_SAMPLE2_PROPERTIES& record, const Field& field) {
  const auto offset = reinterpret_cast<const BYTE*>(&field) - reinterpret_cast<const BYTE*>(&record);
  return size >= static_cast<DWORD>(offset) + sizeof(Field);
}

}  // namespace

CMediaSample::CMediaSample(IMemAllocator* allocator, BYTE* buffer, LONG length) noexcept
    : m_allocator(allocator), m_buffer(buffer), m_length(length), m_actual(length) {}

bool CMediaSample::Await() noexcept {
  ULONG held = m_references.load(std::memory_order_acquire);
  if (held == 0 || (held & kAwaited) != 0) return held != 0;
  m_allocator->AddRef();  // first, since the sample may come back at once
  while (held != 0) {
    if (m_references.compare_exchange_weak(held, held | kAwaited)) return true;
  }
  m_allocator->Release();
  return false;
}

HRESULT STDMETHODCALLTYPE CMediaSample::QueryInterface(REFIID iid, void** out) {
  if (out == nullptr) return E_POINTER;
  *out = nullptr;
  if (iid != IID_IUnknown && iid != IID_IMediaSample && iid != IID_IMediaSample2) return E_NOINTERFACE;
  AddRef();
  *out = static_cast<IMediaSample2*>(this);
  return S_OK;
}

ULONG STDMETHODCALLTYPE CMediaSample::AddRef() { return ++m_references & ~kAwaited; }

ULONG STDMETHODCALLTYPE CMediaSample::Release() {
  // The type goes while it is known that nobody else looks at it. Otherwise it goes when the sample is lent again.
  const bool isOnly = (m_references.load(std::memory_order_acquire) & ~kAwaited) == 1;
  if (isOnly) m_mediaType.reset();
  const ULONG before = m_references.fetch_sub(1, std::memory_order_acq_rel);
  if (before == (kAwaited | 1)) {
    // The allocator may delete this object or lend it again at once.
    const auto allocator = ComPtr<IMemAllocator>::Attach(m_allocator);
    allocator->ReleaseBuffer(this);
  }
  return (before - 1) & ~kAwaited;
}

HRESULT STDMETHODCALLTYPE CMediaSample::GetPointer(BYTE** ppBuffer) {
  if (ppBuffer == nullptr) return E_POINTER;
  *ppBuffer = m_buffer;
  return S_OK;
}

LONG STDMETHODCALLTYPE CMediaSample::GetSize() { return m_length; }

HRESULT STDMETHODCALLTYPE CMediaSample::GetTime(REFERENCE_TIME* pTimeStart, REFERENCE_TIME* pTimeEnd) {
  if (pTimeStart == nullptr || pTimeEnd == nullptr) return E_POINTER;
  if ((m_flags & AM_SAMPLE_TIMEVALID) == 0) return VFW_E_SAMPLE_TIME_NOT_SET;
  const bool hasStop = (m_flags & AM_SAMPLE_STOPVALID) != 0;
  *pTimeStart = m_start;
  *pTimeEnd = hasStop ? m_stop : m_start + 1;
  return hasStop ? S_OK : VFW_S_NO_STOP_TIME;
}

HRESULT STDMETHODCALLTYPE CMediaSample::SetTime(REFERENCE_TIME* pTimeStart, REFERENCE_TIME* pTimeEnd) {
  m_flags &= ~kTimeFlags;
  if (pTimeStart == nullptr) return pTimeEnd == nullptr ? S_OK : E_POINTER;
  m_start = *pTimeStart;
  m_flags |= AM_SAMPLE_TIMEVALID;
  if (pTimeEnd == nullptr) return S_OK;
  m_stop = *pTimeEnd;
  m_flags |= AM_SAMPLE_STOPVALID;
  return S_OK;
}

HRESULT CMediaSample::SetFlag(DWORD flag, BOOL on) noexcept {
  m_flags = on != FALSE ? m_flags | flag : m_flags & ~flag;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CMediaSample::IsSyncPoint() { return Flag(AM_SAMPLE_SPLICEPOINT); }

HRESULT STDMETHODCALLTYPE CMediaSample::SetSyncPoint(BOOL bIsSyncPoint) {
  return SetFlag(AM_SAMPLE_SPLICEPOINT, bIsSyncPoint);
}

HRESULT STDMETHODCALLTYPE CMediaSample::IsPreroll() { return Flag(AM_SAMPLE_PREROLL); }

HRESULT STDMETHODCALLTYPE CMediaSample::SetPreroll(BOOL bIsPreroll) { return SetFlag(AM_SAMPLE_PREROLL, bIsPreroll); }

LONG STDMETHODCALLTYPE CMediaSample::GetActualDataLength() { return m_actual; }

HRESULT STDMETHODCALLTYPE CMediaSample::SetActualDataLength(LONG length) {
  if (length < 0 || length > m_length) return VFW_E_BUFFER_OVERFLOW;
  m_actual = length;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CMediaSample::GetMediaType(AM_MEDIA_TYPE** ppMediaType) {
  if (ppMediaType == nullptr) return E_POINTER;
  *ppMediaType = nullptr;
  if ((m_flags & AM_SAMPLE_TYPECHANGED) == 0 || !m_mediaType) return S_FALSE;
  return ComBoundary([&] {
    *ppMediaType = CreateMediaType(*m_mediaType);
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE CMediaSample::SetMediaType(AM_MEDIA_TYPE* pMediaType) {
  return ComBoundary([&] {
    m_mediaType.reset(pMediaType == nullptr ? nullptr : CreateMediaType(*pMediaType));
    return SetFlag(AM_SAMPLE_TYPECHANGED, pMediaType != nullptr ? TRUE : FALSE);
  });
}

HRESULT STDMETHODCALLTYPE CMediaSample::IsDiscontinuity() { return Flag(AM_SAMPLE_DATADISCONTINUITY); }

HRESULT STDMETHODCALLTYPE CMediaSample::SetDiscontinuity(BOOL bDiscontinuity) {
  return SetFlag(AM_SAMPLE_DATADISCONTINUITY, bDiscontinuity);
}

HRESULT STDMETHODCALLTYPE CMediaSample::GetMediaTime(LONGLONG* pTimeStart, LONGLONG* pTimeEnd) {
  if (pTimeStart == nullptr || pTimeEnd == nullptr) return E_POINTER;
  if ((m_flags & kMediaTimeSet) == 0) return VFW_E_MEDIA_TIME_NOT_SET;
  *pTimeStart = m_mediaStart;
  *pTimeEnd = m_mediaStop;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CMediaSample::SetMediaTime(LONGLONG* pTimeStart, LONGLONG* pTimeEnd) {
  m_flags &= ~kMediaTimeSet;
  if (pTimeStart == nullptr) return S_OK;
  if (pTimeEnd == nullptr) return E_POINTER;
  m_mediaStart = *pTimeStart;
  m_mediaStop = *pTimeEnd;
  m_flags |= kMediaTimeSet;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CMediaSample::GetProperties(DWORD cbProperties, BYTE* pbProperties) {
  if (cbProperties != 0 && pbProperties == nullptr) return E_POINTER;
  AM_SAMPLE2_PROPERTIES record{};
  const DWORD size = std::min(cbProperties, static_cast<DWORD>(sizeof(record)));
  record.cbData = size;
  record.dwTypeSpecificFlags = m_typeSpecificFlags;
  record.dwSampleFlags = m_flags & ~kMediaTimeSet;
  record.lActual = m_actual;
  record.tStart = m_start;
  record.tStop = m_stop;
  record.dwStreamId = m_streamId;
  record.pMediaType = m_mediaType.get();  // lent: the caller must not free it
  record.pbBuffer = m_buffer;
  record.cbBuffer = m_length;
  if (size != 0) std::memcpy(pbProperties, &record, size);
  return S_OK;
}

// What can refuse is tested before anything is stored.
HRESULT CMediaSample::CheckProperties(const AM_SAMPLE2_PROPERTIES& properties, DWORD size) const noexcept {
  if (Has(size, properties, properties.lActual) && (properties.lActual < 0 || properties.lActual > m_length)) {
    return VFW_E_BUFFER_OVERFLOW;
  }
  if (Has(size, properties, properties.pbBuffer) && properties.pbBuffer != nullptr && properties.pbBuffer != m_buffer) {
    return E_INVALIDARG;
  }
  if (Has(size, properties, properties.cbBuffer) && properties.cbBuffer != 0 && properties.cbBuffer != m_length) {
    return E_INVALIDARG;
  }
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CMediaSample::SetProperties(DWORD cbProperties, const BYTE* pbProperties) {
  if (pbProperties == nullptr) return E_POINTER;
  if (cbProperties < sizeof(DWORD)) return E_INVALIDARG;
  AM_SAMPLE2_PROPERTIES record{};
  DWORD size = std::min(cbProperties, static_cast<DWORD>(sizeof(record)));
  std::memcpy(&record, pbProperties, size);
  size = std::min(size, record.cbData);
  const HRESULT hr = CheckProperties(record, size);
  if (FAILED(hr)) return hr;
  return ComBoundary([&] {
    if (Has(size, record, record.pMediaType)) {
      const bool changed = (record.dwSampleFlags & AM_SAMPLE_TYPECHANGED) != 0 && record.pMediaType != nullptr;
      if (!changed || record.pMediaType != m_mediaType.get()) {
        m_mediaType.reset(changed ? CreateMediaType(*record.pMediaType) : nullptr);
      }
    }
    if (Has(size, record, record.dwTypeSpecificFlags)) m_typeSpecificFlags = record.dwTypeSpecificFlags;
    if (Has(size, record, record.dwSampleFlags))
      m_flags = (record.dwSampleFlags & ~kMediaTimeSet) | (m_flags & kMediaTimeSet);
    if (Has(size, record, record.lActual)) m_actual = record.lActual;
    if (Has(size, record, record.tStart)) m_start = record.tStart;
    if (Has(size, record, record.tStop)) m_stop = record.tStop;
    if (Has(size, record, record.dwStreamId)) m_streamId = record.dwStreamId;
    return S_OK;
  });
}

}  // namespace tarvex
