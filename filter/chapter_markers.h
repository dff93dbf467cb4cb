// The file's chapters as markers that players seek to. A part of the filter; application threads.
#pragma once

#include "filter/source.h"
#include "framework/base_filter.h"
#include "framework/interface_part.h"
#include "pins/creator/out_pins_creator.h"

namespace tarvex {

/// Markers count from 1. A null pointer and a number that is none leave everything as it is and answer S_OK; what is
/// not served answers E_NOTIMPL.
class ChapterMarkers final : public InterfacePart<IAMExtendedSeeking> {
 public:
  ChapterMarkers(CBaseFilter& filter, const COutPinsCreator& creator, Source& source)
      : InterfacePart(filter), m_filter(filter), m_creator(creator), m_source(source) {}

  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override;
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) override;
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* parameters,
                                   VARIANT* result, EXCEPINFO* exception, UINT* argument) override;
  HRESULT STDMETHODCALLTYPE get_ExSeekCapabilities(LONG* pExCapabilities) override;
  HRESULT STDMETHODCALLTYPE get_MarkerCount(LONG* pMarkerCount) override;
  HRESULT STDMETHODCALLTYPE get_CurrentMarker(LONG* pCurrentMarker) override;
  HRESULT STDMETHODCALLTYPE GetMarkerTime(LONG MarkerNum, double* pMarkerTime) override;
  HRESULT STDMETHODCALLTYPE GetMarkerName(LONG MarkerNum, BSTR* pbstrMarkerName) override;
  HRESULT STDMETHODCALLTYPE put_PlaybackSpeed(double Speed) override;
  HRESULT STDMETHODCALLTYPE get_PlaybackSpeed(double* pSpeed) override;

 private:
  CBaseFilter& m_filter;
  const COutPinsCreator& m_creator;
  Source& m_source;
};

}  // namespace tarvex
