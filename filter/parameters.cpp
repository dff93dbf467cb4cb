// Values by their identifiers, and the two that are saved.
#include "filter/parameters.h"

#include <array>
#include <utility>
#include <vector>

#include "framework/bstr.h"
#include "framework/co_task_mem.h"
#include "framework/com_boundary.h"
#include "include/tarvex/chapter_entry.h"
#include "include/tarvex/class_ids.h"

namespace tarvex {

/// One parameter and what handles it; null where it cannot be set or read.
struct Parameters::Parameter {
  const GUID& id;
  HRESULT (Parameters::*set)(const VARIANT& value);
  HRESULT (Parameters::*get)(VARIANT& value);
};

const Parameters::Parameter* Parameters::FindParameter(const GUID& id) {
  static constexpr Parameter kParameters[] = {
      {paramAnnexBOutput, &Parameters::SetAnnexBOutput, &Parameters::GetAnnexBOutput},
      {paramSeparatePins, &Parameters::SetSeparatePins, &Parameters::GetSeparatePins},
      {paramChapterList, nullptr, &Parameters::GetChapterList},
      {paramDocType, nullptr, &Parameters::GetDocType},
      {paramPosition, &Parameters::SetPosition, nullptr},
  };
  for (const Parameter& parameter : kParameters) {
    if (parameter.id == id) return &parameter;
  }
  return nullptr;
}

HRESULT Parameters::GetPages(CAUUID* pPages) {
  if (pPages == nullptr) return E_POINTER;
  return ComBoundary([&] {
    auto pages = CoTaskMem<GUID>::Allocate(2);
    pages[0] = CLSID_MatroskaSettingsPage;
    pages[1] = CLSID_MatroskaAboutPage;
    *pPages = {.cElems = 2, .pElems = pages.Detach()};
    return S_OK;
  });
}

HRESULT Parameters::SetValue(const GUID* parameter, const VARIANT* value) {
  if (parameter == nullptr || value == nullptr) return E_POINTER;
  const Parameter* found = FindParameter(*parameter);
  if (found == nullptr || found->set == nullptr) return E_NOTIMPL;
  return ComBoundary([&] { return (this->*found->set)(*value); });
}

HRESULT Parameters::GetValue(const GUID* parameter, VARIANT* value) {
  if (parameter == nullptr || value == nullptr) return E_POINTER;
  const Parameter* found = FindParameter(*parameter);
  if (found == nullptr || found->get == nullptr) return E_NOTIMPL;
  return ComBoundary([&] {
    const CAutoLock lock(m_filter.FilterLock());
    return (this->*found->get)(*value);
  });
}

namespace {

// 1 for true, as readers of these parameters expect, not the usual -1.
HRESULT StoreBool(VARIANT& value, bool setting) {
  value.vt = VT_BOOL;
  value.boolVal = setting ? 1 : 0;
  return S_OK;
}

}  // namespace

HRESULT Parameters::SetAnnexBOutput(const VARIANT& value) {
  const CAutoLock lock(m_filter.FilterLock());
  m_annexBOutput = value.boolVal != 0;
  ApplyH264Form();
  SetDirty(true);
  return S_OK;
}

// Connections stay as they are: what was agreed with a peer holds until the pin connects anew.
void Parameters::ApplyH264Form() {
  m_creator.SetH264Form(m_annexBOutput);
  m_pins.SetH264Form(m_annexBOutput);
}

HRESULT Parameters::GetAnnexBOutput(VARIANT& value) { return StoreBool(value, m_annexBOutput); }

HRESULT Parameters::SetSeparatePins(const VARIANT& value) {
  const CAutoLock lock(m_filter.FilterLock());
  const HRESULT result = ChangeSeparatePins(value.boolVal != 0);
  if (SUCCEEDED(result)) SetDirty(true);
  return result;
}

HRESULT Parameters::ChangeSeparatePins(bool separate) {
  // Pins that could not be made are missing whatever the setting is.
  const bool pinsAreMissing = m_pins.All().empty() && m_creator.GetStreamCount() != 0;
  if (separate == m_separatePins && !pinsAreMissing) return S_OK;
  // Connected pins cannot be taken away from under the graph and the worker.
  if (m_filter.IsActive()) return VFW_E_NOT_STOPPED;
  m_worker.End();
  if (m_source.IsOpen()) m_pins.Create(m_creator, separate);
  m_separatePins = separate;
  return S_OK;
}

HRESULT Parameters::GetSeparatePins(VARIANT& value) { return StoreBool(value, m_separatePins); }

namespace {

HRESULT CopyChapters(const std::vector<ScannedChapter>& chapters, ChapterEntry* out) {
  std::vector<BStr> names;
  names.reserve(chapters.size());
  for (const auto& chapter : chapters) names.emplace_back(chapter.name.View());
  // All names are there; from here on nothing fails.
  for (std::size_t i = 0; i < chapters.size(); ++i) {
    out[i] = {.name = names[i].Detach(),
              .start = static_cast<LONGLONG>(chapters[i].start),
              .end = static_cast<LONGLONG>(chapters[i].end)};
  }
  return S_OK;
}

}  // namespace

HRESULT Parameters::GetChapterList(VARIANT& value) {
  const auto& chapters = m_source.Scanner().Chapters();
  if (value.vt == VT_UINT) {
    value.ulVal = static_cast<ULONG>(chapters.size());
    return S_OK;
  }
  if (value.vt != VT_PTR || value.byref == nullptr) return E_INVALIDARG;
  return CopyChapters(chapters, static_cast<ChapterEntry*>(value.byref));
}

HRESULT Parameters::GetDocType(VARIANT& value) {
  static constexpr std::array<std::string_view, 2> kDocTypes = {"matroska", "webm"};
  for (std::size_t i = 0; i < kDocTypes.size(); ++i) {
    if (m_source.Scanner().DocType() != kDocTypes[i]) continue;
    value.ulVal = static_cast<ULONG>(i);
    return S_OK;
  }
  return E_FAIL;
}

// Without the filter lock: the graph has a lock of its own, under which it calls us.
HRESULT Parameters::SetPosition(const VARIANT& value) {
  const ComPtr<IFilterGraph> graph = m_filter.GetFilterGraph();
  if (!graph) return VFW_E_NOT_IN_GRAPH;
  ComPtr<IMediaSeeking> seeking;
  HRESULT result = graph.Query(seeking);
  if (FAILED(result)) return result;
  LONGLONG current = 0;
  LONGLONG stop = 0;
  result = seeking->GetPositions(&current, &stop);
  if (FAILED(result)) return result;
  current = value.llVal;
  return seeking->SetPositions(&current, AM_SEEKING_AbsolutePositioning, &stop, AM_SEEKING_AbsolutePositioning);
}

HRESULT Parameters::WriteToStream(IStream* stream) {
  const CAutoLock lock(m_filter.FilterLock());
  const BYTE annexB = m_annexBOutput ? 1 : 0;
  const BYTE separate = m_separatePins ? 1 : 0;
  const HRESULT result = WriteExact(stream, &annexB, sizeof annexB);
  return FAILED(result) ? result : WriteExact(stream, &separate, sizeof separate);
}

HRESULT Parameters::ReadFromStream(IStream* stream) {
  BYTE annexB = 0;
  BYTE separate = 0;
  HRESULT result = ReadExact(stream, &annexB, sizeof annexB);
  if (SUCCEEDED(result)) result = ReadExact(stream, &separate, sizeof separate);
  if (FAILED(result)) return result;
  const CAutoLock lock(m_filter.FilterLock());
  result = ChangeSeparatePins(separate != 0);
  if (FAILED(result)) return result;
  m_annexBOutput = annexB != 0;
  ApplyH264Form();
  return S_OK;
}

}  // namespace tarvex
