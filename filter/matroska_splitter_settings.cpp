// The parameters of IModuleConfig and the settings saved with a graph. Application threads.
#include <array>
#include <utility>
#include <vector>

#include "filter/matroska_splitter.h"
#include "framework/com_boundary.h"
#include "include/tarvex/chapter_entry.h"

namespace tarvex {

/// One parameter and what handles it; null where it cannot be set or read.
struct CMatroskaSplitter::Parameter {
  const GUID& id;
  HRESULT (CMatroskaSplitter::*set)(const VARIANT& value);
  HRESULT (CMatroskaSplitter::*get)(VARIANT& value);
};

const CMatroskaSplitter::Parameter* CMatroskaSplitter::FindParameter(const GUID& id) {
  static constexpr Parameter kParameters[] = {
      {paramAnnexBOutput, &CMatroskaSplitter::SetAnnexBOutput, &CMatroskaSplitter::GetAnnexBOutput},
      {paramSeparatePins, &CMatroskaSplitter::SetSeparatePins, &CMatroskaSplitter::GetSeparatePins},
      {paramChapterList, nullptr, &CMatroskaSplitter::GetChapterList},
      {paramDocType, nullptr, &CMatroskaSplitter::GetDocType},
      {paramPosition, &CMatroskaSplitter::SetPosition, nullptr},
  };
  for (const Parameter& parameter : kParameters) {
    if (parameter.id == id) return &parameter;
  }
  return nullptr;
}

HRESULT CMatroskaSplitter::SetValue(const GUID* parameter, const VARIANT* value) {
  if (parameter == nullptr || value == nullptr) return E_POINTER;
  const Parameter* found = FindParameter(*parameter);
  if (found == nullptr || found->set == nullptr) return E_NOTIMPL;
  return ComBoundary([&] { return (this->*found->set)(*value); });
}

HRESULT CMatroskaSplitter::GetValue(const GUID* parameter, VARIANT* value) {
  if (parameter == nullptr || value == nullptr) return E_POINTER;
  const Parameter* found = FindParameter(*parameter);
  if (found == nullptr || found->get == nullptr) return E_NOTIMPL;
  return ComBoundary([&] {
    const CAutoLock lock(m_filterLock);
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

HRESULT CMatroskaSplitter::SetAnnexBOutput(const VARIANT& value) {
  const CAutoLock lock(m_filterLock);
  m_annexBOutput = value.boolVal != 0;
  ApplyH264Form();
  SetDirty(true);
  return S_OK;
}

// Connections stay as they are: what was agreed with a peer holds until the pin connects anew.
void CMatroskaSplitter::ApplyH264Form() {
  m_creator.SetH264Form(m_annexBOutput);
  for (const auto& pin : m_outputPins) pin->SetH264Form(m_annexBOutput);
}

HRESULT CMatroskaSplitter::GetAnnexBOutput(VARIANT& value) { return StoreBool(value, m_annexBOutput); }

HRESULT CMatroskaSplitter::SetSeparatePins(const VARIANT& value) {
  const CAutoLock lock(m_filterLock);
  const HRESULT result = ChangeSeparatePins(value.boolVal != 0);
  if (SUCCEEDED(result)) SetDirty(true);
  return result;
}

HRESULT CMatroskaSplitter::ChangeSeparatePins(bool separate) {
  // Pins that could not be made are missing whatever the setting is.
  const bool pinsAreMissing = m_outputPins.empty() && m_creator.GetStreamCount() != 0;
  if (separate == m_separatePins && !pinsAreMissing) return S_OK;
  // Connected pins cannot be taken away from under the graph and the worker.
  if (IsActive()) return VFW_E_NOT_STOPPED;
  EndWorker();
  if (m_reader) CreateOutputPins(separate);
  m_separatePins = separate;
  return S_OK;
}

HRESULT CMatroskaSplitter::GetSeparatePins(VARIANT& value) { return StoreBool(value, m_separatePins); }

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

HRESULT CMatroskaSplitter::GetChapterList(VARIANT& value) {
  const auto& chapters = m_scanner.Chapters();
  if (value.vt == VT_UINT) {
    value.ulVal = static_cast<ULONG>(chapters.size());
    return S_OK;
  }
  if (value.vt != VT_PTR || value.byref == nullptr) return E_INVALIDARG;
  return CopyChapters(chapters, static_cast<ChapterEntry*>(value.byref));
}

HRESULT CMatroskaSplitter::GetDocType(VARIANT& value) {
  static constexpr std::array<std::string_view, 2> kDocTypes = {"matroska", "webm"};
  for (std::size_t i = 0; i < kDocTypes.size(); ++i) {
    if (m_scanner.DocType() != kDocTypes[i]) continue;
    value.ulVal = static_cast<ULONG>(i);
    return S_OK;
  }
  return E_FAIL;
}

// Without the filter lock: the graph has a lock of its own, under which it calls us.
HRESULT CMatroskaSplitter::SetPosition(const VARIANT& value) {
  const ComPtr<IFilterGraph> graph = GetFilterGraph();
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

HRESULT CMatroskaSplitter::WriteToStream(IStream* stream) {
  const CAutoLock lock(m_filterLock);
  const BYTE annexB = m_annexBOutput ? 1 : 0;
  const BYTE separate = m_separatePins ? 1 : 0;
  const HRESULT result = WriteExact(stream, &annexB, sizeof annexB);
  return FAILED(result) ? result : WriteExact(stream, &separate, sizeof separate);
}

HRESULT CMatroskaSplitter::ReadFromStream(IStream* stream) {
  BYTE annexB = 0;
  BYTE separate = 0;
  HRESULT result = ReadExact(stream, &annexB, sizeof annexB);
  if (SUCCEEDED(result)) result = ReadExact(stream, &separate, sizeof separate);
  if (FAILED(result)) return result;
  const CAutoLock lock(m_filterLock);
  result = ChangeSeparatePins(separate != 0);
  if (FAILED(result)) return result;
  m_annexBOutput = annexB != 0;
  ApplyH264Form();
  return S_OK;
}

}  // namespace tarvex
