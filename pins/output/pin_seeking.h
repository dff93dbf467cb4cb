// An output pin's IMediaSeeking: requests of applications and of the graph, in terms of the filter's positions. A
// part of the pin; any thread.
#pragma once

#include "framework/base_pin.h"
#include "framework/interface_part.h"
#include "pins/output/play_positions.h"
#include "pins/output/shared_by_pins.h"
#include "pins/output/track_record.h"

namespace tarvex {

/// Times in the format that all pins of the filter share. E_POINTER for a null argument where the table of the
/// interface does not allow it; VFW_E_NOT_CONNECTED once the pin has left its filter, since the positions are the
/// filter's.
class PinSeeking final : public InterfacePart<IMediaSeeking> {
 public:
  /// The pin owns this, and `track` is its record.
  PinSeeking(CBasePin& pin, const TrackRecord& track, const SharedByPins& shared)
      : InterfacePart(pin), m_pin(pin), m_track(track), m_positions(shared.positions), m_pass(shared.pass) {}

  HRESULT STDMETHODCALLTYPE GetCapabilities(DWORD* pCapabilities) override;
  HRESULT STDMETHODCALLTYPE CheckCapabilities(DWORD* pCapabilities) override;
  /// Frames are a format of video only.
  HRESULT STDMETHODCALLTYPE IsFormatSupported(const GUID* pFormat) override;
  HRESULT STDMETHODCALLTYPE QueryPreferredFormat(GUID* pFormat) override;
  HRESULT STDMETHODCALLTYPE GetTimeFormat(GUID* pFormat) override;
  HRESULT STDMETHODCALLTYPE IsUsingTimeFormat(const GUID* pFormat) override;
  /// For all pins of the filter. E_FAIL for a format that is not supported.
  HRESULT STDMETHODCALLTYPE SetTimeFormat(const GUID* pFormat) override;
  HRESULT STDMETHODCALLTYPE GetDuration(LONGLONG* pDuration) override;
  HRESULT STDMETHODCALLTYPE GetStopPosition(LONGLONG* pStop) override;
  /// E_NOTIMPL: only renderers know.
  HRESULT STDMETHODCALLTYPE GetCurrentPosition(LONGLONG* pCurrent) override;
  HRESULT STDMETHODCALLTYPE ConvertTimeFormat(LONGLONG* pTarget, const GUID* pTargetFormat, LONGLONG Source,
                                              const GUID* pSourceFormat) override;
  /// Only the first connected pin that asks moves the positions; every other answers S_OK and does
  /// nothing. The mode of the current position governs the stop position too. A null position is left as
  /// it is.
  HRESULT STDMETHODCALLTYPE SetPositions(LONGLONG* pCurrent, DWORD dwCurrentFlags, LONGLONG* pStop,
                                         DWORD dwStopFlags) override;
  HRESULT STDMETHODCALLTYPE GetPositions(LONGLONG* pCurrent, LONGLONG* pStop) override;
  HRESULT STDMETHODCALLTYPE GetAvailable(LONGLONG* pEarliest, LONGLONG* pLatest) override;
  HRESULT STDMETHODCALLTYPE SetRate(double dRate) override;
  HRESULT STDMETHODCALLTYPE GetRate(double* pdRate) override;
  HRESULT STDMETHODCALLTYPE GetPreroll(LONGLONG* pllPreroll) override;

 private:
  template <class Call>
  HRESULT WithFilter(Call&& call);
  // With the filter held.
  bool MayMove();
  HRESULT Convert(LONGLONG& target, const GUID& targetFormat, LONGLONG source, const GUID& sourceFormat) const;
  void FromMediaTime(LONGLONG& target, REFERENCE_TIME time) const;
  REFERENCE_TIME ToMediaTime(LONGLONG source) const;
  void ClampToDuration(REFERENCE_TIME& time, LONGLONG& callers) const;

  CBasePin& m_pin;
  const TrackRecord& m_track;
  PlayPositions& m_positions;
  PassControl& m_pass;
};

}  // namespace tarvex
