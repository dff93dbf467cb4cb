// Requests to a pin, turned into reads and changes of the filter's positions.
#include "pins/output/pin_seeking.h"

#include <cinttypes>

#include "framework/com_boundary.h"
#include "framework/log.h"
#include "pins/output/seek_arithmetic.h"

namespace tarvex {

namespace {

constexpr DWORD kCapabilities = AM_SEEKING_CanSeekAbsolute | AM_SEEKING_CanSeekForwards | AM_SEEKING_CanSeekBackwards |
                                AM_SEEKING_CanGetStopPos | AM_SEEKING_CanGetDuration;

}  // namespace

template <class Call>
HRESULT PinSeeking::WithFilter(Call&& call) {
  const auto filter = m_pin.HoldFilter();
  return filter ? call() : VFW_E_NOT_CONNECTED;
}

HRESULT STDMETHODCALLTYPE PinSeeking::GetCapabilities(DWORD* pCapabilities) {
  if (pCapabilities == nullptr) return E_POINTER;
  *pCapabilities = kCapabilities;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE PinSeeking::CheckCapabilities(DWORD* pCapabilities) {
  if (pCapabilities == nullptr) return E_POINTER;
  return (*pCapabilities & ~kCapabilities) != 0 ? S_FALSE : S_OK;
}

HRESULT STDMETHODCALLTYPE PinSeeking::IsFormatSupported(const GUID* pFormat) {
  if (pFormat == nullptr) return E_POINTER;
  if (*pFormat == TIME_FORMAT_MEDIA_TIME) return S_OK;
  return *pFormat == TIME_FORMAT_FRAME && m_track.IsVideo() ? S_OK : S_FALSE;
}

HRESULT STDMETHODCALLTYPE PinSeeking::QueryPreferredFormat(GUID* pFormat) {
  if (pFormat == nullptr) return E_POINTER;
  *pFormat = TIME_FORMAT_MEDIA_TIME;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE PinSeeking::GetTimeFormat(GUID* pFormat) {
  if (pFormat == nullptr) return E_POINTER;
  return WithFilter([&] {
    *pFormat = m_positions.TimeFormat();
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE PinSeeking::IsUsingTimeFormat(const GUID* pFormat) {
  if (pFormat == nullptr) return E_POINTER;
  return WithFilter([&] { return *pFormat == m_positions.TimeFormat() ? S_OK : S_FALSE; });
}

HRESULT STDMETHODCALLTYPE PinSeeking::SetTimeFormat(const GUID* pFormat) {
  if (pFormat == nullptr) return E_POINTER;
  if (IsFormatSupported(pFormat) != S_OK) return E_FAIL;
  return WithFilter([&] {
    m_positions.SetTimeFormat(*pFormat);
    return S_OK;
  });
}

HRESULT PinSeeking::Convert(LONGLONG& target, const GUID& targetFormat, LONGLONG source,
                            const GUID& sourceFormat) const {
  return ConvertTime(target, targetFormat, source, sourceFormat, m_positions.FrameDuration(m_track.Number()));
}

// The formats that a pin can be set to convert both ways.
void PinSeeking::FromMediaTime(LONGLONG& target, REFERENCE_TIME time) const {
  static_cast<void>(Convert(target, m_positions.TimeFormat(), time, TIME_FORMAT_MEDIA_TIME));
}

REFERENCE_TIME PinSeeking::ToMediaTime(LONGLONG source) const {
  REFERENCE_TIME time = 0;
  static_cast<void>(Convert(time, TIME_FORMAT_MEDIA_TIME, source, m_positions.TimeFormat()));
  return time;
}

HRESULT STDMETHODCALLTYPE PinSeeking::GetDuration(LONGLONG* pDuration) {
  if (pDuration == nullptr) return E_POINTER;
  return WithFilter([&] {
    FromMediaTime(*pDuration, m_positions.Duration());
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE PinSeeking::GetStopPosition(LONGLONG* pStop) {
  if (pStop == nullptr) return E_POINTER;
  return WithFilter([&] {
    FromMediaTime(*pStop, m_positions.Positions().stop);
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE PinSeeking::GetCurrentPosition(LONGLONG* /*pCurrent*/) { return E_NOTIMPL; }

HRESULT STDMETHODCALLTYPE PinSeeking::ConvertTimeFormat(LONGLONG* pTarget, const GUID* pTargetFormat, LONGLONG Source,
                                                        const GUID* pSourceFormat) {
  if (pTarget == nullptr) return E_POINTER;
  return WithFilter([&] {
    const GUID own = m_positions.TimeFormat();
    return Convert(*pTarget, pTargetFormat == nullptr ? own : *pTargetFormat, Source,
                   pSourceFormat == nullptr ? own : *pSourceFormat);
  });
}

// A time beyond the duration becomes the duration, and the caller learns of it.
void PinSeeking::ClampToDuration(REFERENCE_TIME& time, LONGLONG& callers) const {
  const REFERENCE_TIME duration = m_positions.Duration();
  if (time <= duration) return;
  time = duration;
  FromMediaTime(callers, duration);
}

// A pin that was disconnected meanwhile takes its claim back, since nobody else would.
bool PinSeeking::MayMove() {
  if (!m_pin.IsConnected() || !m_positions.ClaimSeekingOwner(m_pin)) return false;
  if (m_pin.IsConnected()) return true;
  m_positions.GiveUpSeeking(m_pin);
  return false;
}

HRESULT STDMETHODCALLTYPE PinSeeking::SetPositions(LONGLONG* pCurrent, DWORD dwCurrentFlags, LONGLONG* pStop,
                                                   DWORD /*dwStopFlags*/) {
  const auto filter = m_pin.HoldFilter();
  if (!filter) return VFW_E_NOT_CONNECTED;
  if (!MayMove()) return S_OK;
  return ComBoundary([&] {
    RangeChange change{.mode = dwCurrentFlags & AM_SEEKING_PositioningBitsMask, .start = {}, .stop = {}};
    REFERENCE_TIME current = 0;
    if (pCurrent != nullptr) *pCurrent = current = ToMediaTime(*pCurrent);
    LogFormat("CMatroskaOutputPin::SetPositions %" PRId64 "\n", std::int64_t{current});
    if (pCurrent != nullptr) {
      ClampToDuration(current, *pCurrent);
      change.start = current;
    }
    if (pStop != nullptr) {
      REFERENCE_TIME stop = ToMediaTime(*pStop);
      ClampToDuration(stop, *pStop);
      change.stop = stop;
    }
    m_positions.Move(change, m_pass);
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE PinSeeking::GetPositions(LONGLONG* pCurrent, LONGLONG* pStop) {
  if (pCurrent == nullptr || pStop == nullptr) return E_POINTER;
  return WithFilter([&] {
    const PlayRange range = m_positions.Positions();
    FromMediaTime(*pCurrent, range.start);
    FromMediaTime(*pStop, range.stop);
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE PinSeeking::GetAvailable(LONGLONG* pEarliest, LONGLONG* pLatest) {
  return WithFilter([&] {
    if (pEarliest != nullptr) *pEarliest = 0;
    if (pLatest != nullptr) *pLatest = m_positions.Duration();
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE PinSeeking::SetRate(double dRate) {
  return WithFilter([&] {
    m_positions.SetRate(dRate);
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE PinSeeking::GetRate(double* pdRate) {
  if (pdRate == nullptr) return E_POINTER;
  return WithFilter([&] {
    *pdRate = m_positions.Range().rate;
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE PinSeeking::GetPreroll(LONGLONG* pllPreroll) {
  if (pllPreroll == nullptr) return E_POINTER;
  *pllPreroll = 0;
  return S_OK;
}

}  // namespace tarvex
