// The output pin's IMediaSeeking: requests of applications and of the graph, in terms of the filter's
// positions. Any thread; the filter's position lock makes a change whole.
#include <cinttypes>

#include "framework/com_boundary.h"
#include "framework/log.h"
#include "pins/output/matroska_output_pin.h"
#include "pins/output/pin_seeking.h"

namespace tarvex {

namespace {

constexpr DWORD kPositioningBits = AM_SEEKING_PositioningBitsMask;

}  // namespace

GUID CMatroskaOutputPin::TimeFormat() const {
  const CAutoLock hold(m_recordLock);
  return m_timeFormat;
}

void CMatroskaOutputPin::StoreTimeFormat(const GUID& format) {
  const CAutoLock hold(m_recordLock);
  m_timeFormat = format;
}

HRESULT STDMETHODCALLTYPE CMatroskaOutputPin::GetCapabilities(DWORD* pCapabilities) {
  if (pCapabilities == nullptr) return E_POINTER;
  *pCapabilities = kSeekingCapabilities;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CMatroskaOutputPin::CheckCapabilities(DWORD* pCapabilities) {
  if (pCapabilities == nullptr) return E_POINTER;
  return (*pCapabilities & ~kSeekingCapabilities) != 0 ? S_FALSE : S_OK;
}

HRESULT STDMETHODCALLTYPE CMatroskaOutputPin::IsFormatSupported(const GUID* pFormat) {
  if (pFormat == nullptr) return E_POINTER;
  if (*pFormat == TIME_FORMAT_MEDIA_TIME) return S_OK;
  return *pFormat == TIME_FORMAT_FRAME && m_kind == Kind::kVideo ? S_OK : S_FALSE;
}

HRESULT STDMETHODCALLTYPE CMatroskaOutputPin::QueryPreferredFormat(GUID* pFormat) {
  if (pFormat == nullptr) return E_POINTER;
  *pFormat = TIME_FORMAT_MEDIA_TIME;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CMatroskaOutputPin::GetTimeFormat(GUID* pFormat) {
  if (pFormat == nullptr) return E_POINTER;
  *pFormat = TimeFormat();
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CMatroskaOutputPin::IsUsingTimeFormat(const GUID* pFormat) {
  if (pFormat == nullptr) return E_POINTER;
  return *pFormat == TimeFormat() ? S_OK : S_FALSE;
}

HRESULT STDMETHODCALLTYPE CMatroskaOutputPin::SetTimeFormat(const GUID* pFormat) {
  if (pFormat == nullptr) return E_POINTER;
  if (IsFormatSupported(pFormat) != S_OK) return E_FAIL;
  if (*pFormat == TimeFormat()) return S_OK;
  const auto filter = HoldFilter();
  if (!filter) return VFW_E_NOT_CONNECTED;
  m_host->SetTimeFormatOnAllPins(*pFormat);
  return S_OK;
}

// Callers hold the filter.
HRESULT CMatroskaOutputPin::FromMediaTime(LONGLONG& target, REFERENCE_TIME time) {
  const REFERENCE_TIME frame = m_host->DefaultFrameDuration(TrackNumber());
  return ConvertTime(target, TimeFormat(), time, TIME_FORMAT_MEDIA_TIME, frame);
}

HRESULT CMatroskaOutputPin::ToMediaTime(REFERENCE_TIME& time, LONGLONG source) {
  const REFERENCE_TIME frame = m_host->DefaultFrameDuration(TrackNumber());
  return ConvertTime(time, TIME_FORMAT_MEDIA_TIME, source, TimeFormat(), frame);
}

HRESULT STDMETHODCALLTYPE CMatroskaOutputPin::GetDuration(LONGLONG* pDuration) {
  if (pDuration == nullptr) return E_POINTER;
  const auto filter = HoldFilter();
  if (!filter) return VFW_E_NOT_CONNECTED;
  static_cast<void>(FromMediaTime(*pDuration, m_host->Duration()));
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CMatroskaOutputPin::GetStopPosition(LONGLONG* pStop) {
  if (pStop == nullptr) return E_POINTER;
  const auto filter = HoldFilter();
  if (!filter) return VFW_E_NOT_CONNECTED;
  static_cast<void>(FromMediaTime(*pStop, m_host->Positions().stop));
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CMatroskaOutputPin::GetCurrentPosition(LONGLONG* /*pCurrent*/) { return E_NOTIMPL; }

HRESULT STDMETHODCALLTYPE CMatroskaOutputPin::ConvertTimeFormat(LONGLONG* pTarget, const GUID* pTargetFormat,
                                                                LONGLONG Source, const GUID* pSourceFormat) {
  if (pTarget == nullptr) return E_POINTER;
  const auto filter = HoldFilter();
  if (!filter) return VFW_E_NOT_CONNECTED;
  const GUID own = TimeFormat();
  return ConvertTime(*pTarget, pTargetFormat == nullptr ? own : *pTargetFormat, Source,
                     pSourceFormat == nullptr ? own : *pSourceFormat, m_host->DefaultFrameDuration(TrackNumber()));
}

// A time beyond the duration becomes the duration, and the caller learns of it.
void CMatroskaOutputPin::ClampToDuration(REFERENCE_TIME& time, LONGLONG& callers) {
  const REFERENCE_TIME duration = m_host->Duration();
  if (time <= duration) return;
  time = duration;
  static_cast<void>(FromMediaTime(callers, duration));
}

HRESULT STDMETHODCALLTYPE CMatroskaOutputPin::SetPositions(LONGLONG* pCurrent, DWORD dwCurrentFlags, LONGLONG* pStop,
                                                           DWORD /*dwStopFlags*/) {
  const auto filter = HoldFilter();
  if (!filter) return VFW_E_NOT_CONNECTED;
  if (!IsConnected() || !m_host->ClaimSeekingOwner(this)) return S_OK;
  if (!IsConnected()) {  // meanwhile, and nobody would take the claim back
    m_host->ClearSeekingOwner();
    return S_OK;
  }
  return ComBoundary([&] {
    RangeChange change{.mode = dwCurrentFlags & kPositioningBits, .start = {}, .stop = {}};
    REFERENCE_TIME current = 0;
    if (pCurrent != nullptr) {
      static_cast<void>(ToMediaTime(current, *pCurrent));
      *pCurrent = current;
    }
    LogFormat("CMatroskaOutputPin::SetPositions %" PRId64 "\n", std::int64_t{current});
    if (pCurrent != nullptr) {
      ClampToDuration(current, *pCurrent);
      change.start = current;
    }
    if (pStop != nullptr) {
      REFERENCE_TIME stop = 0;
      static_cast<void>(ToMediaTime(stop, *pStop));
      ClampToDuration(stop, *pStop);
      change.stop = stop;
    }
    return m_host->ChangePlayRange(change);
  });
}

HRESULT STDMETHODCALLTYPE CMatroskaOutputPin::GetPositions(LONGLONG* pCurrent, LONGLONG* pStop) {
  if (pCurrent == nullptr || pStop == nullptr) return E_POINTER;
  const auto filter = HoldFilter();
  if (!filter) return VFW_E_NOT_CONNECTED;
  const PlayRange range = m_host->Positions();
  static_cast<void>(FromMediaTime(*pCurrent, range.start));
  static_cast<void>(FromMediaTime(*pStop, range.stop));
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CMatroskaOutputPin::GetAvailable(LONGLONG* pEarliest, LONGLONG* pLatest) {
  const auto filter = HoldFilter();
  if (!filter) return VFW_E_NOT_CONNECTED;
  if (pEarliest != nullptr) *pEarliest = 0;
  if (pLatest != nullptr) *pLatest = m_host->Duration();
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CMatroskaOutputPin::SetRate(double dRate) {
  const auto filter = HoldFilter();
  if (!filter) return VFW_E_NOT_CONNECTED;
  m_host->SetRate(dRate);
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CMatroskaOutputPin::GetRate(double* pdRate) {
  if (pdRate == nullptr) return E_POINTER;
  const auto filter = HoldFilter();
  if (!filter) return VFW_E_NOT_CONNECTED;
  *pdRate = m_host->Range().rate;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CMatroskaOutputPin::GetPreroll(LONGLONG* pllPreroll) {
  if (pllPreroll == nullptr) return E_POINTER;
  *pllPreroll = 0;
  return S_OK;
}

}  // namespace tarvex
