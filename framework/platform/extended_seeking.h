// IAMExtendedSeeking, the published marker interface that the cross toolchain's headers lack.
// Implemented by the filter, called on application threads.
#pragma once

/// {FA2AA8F9-8B62-11D0-A520-000000000000}
inline constexpr GUID IID_IAMExtendedSeeking = {0xFA2AA8F9, 0x8B62, 0x11D0, {0xA5, 0x20, 0, 0, 0, 0, 0, 0}};

enum AMExtendedSeekingCapabilities {
  AM_EXSEEK_CANSEEK = 1,
  AM_EXSEEK_CANSCAN = 2,
  AM_EXSEEK_MARKERSEEK = 4,
  AM_EXSEEK_SCANWITHOUTCLOCK = 8,
  AM_EXSEEK_NOSTANDARDREPAINT = 16,
  AM_EXSEEK_BUFFERING = 32,
  AM_EXSEEK_SENDS_VIDEOFRAMEREADY = 64
};

struct IAMExtendedSeeking : public IDispatch {  // NOLINT(cppcoreguidelines-virtual-class-destructor)
  virtual HRESULT STDMETHODCALLTYPE get_ExSeekCapabilities(LONG* pExCapabilities) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_MarkerCount(LONG* pMarkerCount) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_CurrentMarker(LONG* pCurrentMarker) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetMarkerTime(LONG MarkerNum, double* pMarkerTime) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetMarkerName(LONG MarkerNum, BSTR* pbstrMarkerName) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_PlaybackSpeed(double Speed) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_PlaybackSpeed(double* pSpeed) = 0;
};

namespace tarvex {
template <>
inline const IID& IidOf<IAMExtendedSeeking>() {
  return IID_IAMExtendedSeeking;
}
}  // namespace tarvex
