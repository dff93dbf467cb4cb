#include "host/graph/chapter_list.h"

#include "framework/bstr.h"
#include "framework/text_conversion.h"
#include "include/tarvex/chapter_entry.h"
#include "include/tarvex/module_config.h"

namespace tarvex::host {

namespace {

// Takes over the name of an entry, which is the caller's to free.
ChapterReport ReportChapter(const ChapterEntry& entry) {
  BStr name;
  *name.Put() = entry.name;
  return {Utf8FromWide(name.View()), entry.start, entry.end};
}

std::vector<ChapterReport> ChaptersOf(IModuleConfig* config) {
  VARIANT value{};
  value.vt = VT_UINT;
  if (FAILED(config->GetValue(&paramChapterList, &value)) || value.ulVal == 0) return {};
  std::vector<ChapterEntry> entries(value.ulVal);
  value = VARIANT{};
  value.vt = VT_PTR;
  value.byref = entries.data();
  if (FAILED(config->GetValue(&paramChapterList, &value))) return {};
  std::vector<ChapterReport> chapters;
  for (const ChapterEntry& entry : entries) chapters.push_back(ReportChapter(entry));
  return chapters;
}

// Markers are numbered from 1.
MarkerReport MarkerAt(IAMExtendedSeeking* seeking, LONG number) {
  MarkerReport marker;
  BStr name;
  seeking->GetMarkerTime(number, &marker.seconds);
  seeking->GetMarkerName(number, name.Put());
  marker.name = Utf8FromWide(name.View());
  return marker;
}

}  // namespace

std::vector<MarkerReport> MarkersOf(IBaseFilter* splitter) {
  std::vector<MarkerReport> markers;
  const auto seeking = QueryFor<IAMExtendedSeeking>(splitter);
  LONG count = 0;
  if (!seeking || FAILED(seeking->get_MarkerCount(&count))) return markers;
  for (LONG number = 1; number <= count; ++number) markers.push_back(MarkerAt(seeking.Get(), number));
  return markers;
}

void AddChapters(IBaseFilter* splitter, InfoReport& report) {
  ComPtr<IModuleConfig> config;
  if (SUCCEEDED(splitter->QueryInterface(IID_IModuleConfig, config.PutVoid()))) {
    report.chapters = ChaptersOf(config.Get());
  }
  report.markers = MarkersOf(splitter);
  const auto seeking = QueryFor<IAMExtendedSeeking>(splitter);
  LONG capabilities = 0;
  if (seeking && SUCCEEDED(seeking->get_ExSeekCapabilities(&capabilities))) report.seekCapabilities = capabilities;
}

}  // namespace tarvex::host
