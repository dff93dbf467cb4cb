// Chapters as markers.
#include "filter/chapter_markers.h"

#include <vector>

#include "framework/bstr.h"
#include "framework/com_boundary.h"

namespace tarvex {

namespace {

constexpr std::int64_t kUnitsPerSecond = 10'000'000;

// Markers count from 1. Null for a number that is none.
const ScannedChapter* MarkerOf(const std::vector<ScannedChapter>& chapters, LONG number) {
  if (number < 1 || static_cast<std::size_t>(number) > chapters.size()) return nullptr;
  return &chapters[static_cast<std::size_t>(number) - 1];
}

}  // namespace

// A type library would promise more than the interface does.
HRESULT ChapterMarkers::GetTypeInfoCount(UINT* /*count*/) { return E_NOTIMPL; }
HRESULT ChapterMarkers::GetTypeInfo(UINT /*index*/, LCID /*locale*/, ITypeInfo** /*info*/) { return E_NOTIMPL; }
HRESULT ChapterMarkers::GetIDsOfNames(REFIID /*iid*/, LPOLESTR* /*names*/, UINT /*count*/, LCID /*locale*/,
                                      DISPID* /*ids*/) {
  return E_NOTIMPL;
}
HRESULT ChapterMarkers::Invoke(DISPID /*id*/, REFIID /*iid*/, LCID /*locale*/, WORD /*flags*/,
                               DISPPARAMS* /*parameters*/, VARIANT* /*result*/, EXCEPINFO* /*exception*/,
                               UINT* /*argument*/) {
  return E_NOTIMPL;
}
HRESULT ChapterMarkers::get_CurrentMarker(LONG* /*pCurrentMarker*/) { return E_NOTIMPL; }
HRESULT ChapterMarkers::put_PlaybackSpeed(double /*Speed*/) { return E_NOTIMPL; }
HRESULT ChapterMarkers::get_PlaybackSpeed(double* /*pSpeed*/) { return E_NOTIMPL; }

HRESULT ChapterMarkers::get_ExSeekCapabilities(LONG* pExCapabilities) {
  if (pExCapabilities == nullptr) return S_OK;
  return ComBoundary([&] {
    const CAutoLock lock(m_filter.FilterLock());
    // With video the one bit stands alone, without the other two, on purpose.
    LONG capabilities =
        m_creator.HasVideo() ? AM_EXSEEK_SENDS_VIDEOFRAMEREADY : AM_EXSEEK_NOSTANDARDREPAINT | AM_EXSEEK_BUFFERING;
    if (!m_source.Scanner().Chapters().empty()) capabilities |= AM_EXSEEK_MARKERSEEK;
    *pExCapabilities = capabilities | AM_EXSEEK_CANSEEK;
    return S_OK;
  });
}

HRESULT ChapterMarkers::get_MarkerCount(LONG* pMarkerCount) {
  if (pMarkerCount == nullptr) return S_OK;
  const CAutoLock lock(m_filter.FilterLock());
  *pMarkerCount = static_cast<LONG>(m_source.Scanner().Chapters().size());
  return S_OK;
}

HRESULT ChapterMarkers::GetMarkerTime(LONG MarkerNum, double* pMarkerTime) {
  const CAutoLock lock(m_filter.FilterLock());
  const ScannedChapter* marker = MarkerOf(m_source.Scanner().Chapters(), MarkerNum);
  if (marker == nullptr || pMarkerTime == nullptr) return S_OK;
  // Whole seconds, on purpose; a time before zero is stored as its two's complement.
  const std::int64_t seconds = static_cast<std::int64_t>(marker->start) / kUnitsPerSecond;
  *pMarkerTime = static_cast<double>(seconds);
  return S_OK;
}

HRESULT ChapterMarkers::GetMarkerName(LONG MarkerNum, BSTR* pbstrMarkerName) {
  return ComBoundary([&] {
    const CAutoLock lock(m_filter.FilterLock());
    const ScannedChapter* marker = MarkerOf(m_source.Scanner().Chapters(), MarkerNum);
    if (marker != nullptr && pbstrMarkerName != nullptr) *pbstrMarkerName = BStr(marker->name.View()).Detach();
    return S_OK;
  });
}

}  // namespace tarvex
