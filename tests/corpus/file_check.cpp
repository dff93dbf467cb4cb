// See file_check.h.
#include "tests/corpus/file_check.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <fstream>
#include <map>
#include <sstream>

#include "framework/bstr.h"
#include "framework/text_conversion.h"
#include "include/tarvex/chapter_entry.h"
#include "include/tarvex/module_config.h"
#include "tests/corpus/type_text.h"
#include "tests/support/source_dir.h"
#include "tests/support/test_system.h"

namespace tarvex::test {
namespace {

std::string Hex(HRESULT result) {
  std::array<char, 12> text{};
  std::snprintf(text.data(), text.size(), "%08X", static_cast<unsigned>(result));
  return text.data();
}

std::vector<ManifestFrame> FramesOf(const std::vector<SinkEvent>& samples, REFERENCE_TIME origin) {
  std::vector<ManifestFrame> frames;
  for (const SinkEvent& sample : samples) {
    frames.push_back({sample.start + origin, sample.stop - sample.start, sample.key, sample.size, sample.sha1});
  }
  return frames;
}

ComPtr<IModuleConfig> ConfigOf(IBaseFilter* filter) {
  ComPtr<IModuleConfig> config;
  filter->QueryInterface(IID_IModuleConfig, config.PutVoid());
  return config;
}

// By file#track; nothing for a track that the list does not have.
const std::map<std::string, std::string>& ListedTypes() {
  static const std::map<std::string, std::string> types = [] {
    std::map<std::string, std::string> found;
    std::ifstream list(SystemPath(SourceDir() + "/tests/data/corpus/media_types.txt"));
    for (std::string type, tracks; std::getline(list, type);) {
      if (type.starts_with('#') || !std::getline(list, tracks)) continue;
      std::istringstream words(tracks);
      for (std::string track; words >> track;) found[track] = type;
    }
    return found;
  }();
  return types;
}

}  // namespace

std::vector<std::string> FileCheck::Run() {
  try {
    TestGraph graph;
    LogCapture log(graph.Splitter());
    if (FAILED(graph.SeparatePins(true))) Add("paramSeparatePins cannot be set");
    const HRESULT result = graph.Open(m_file.path);
    if (FAILED(result)) {
      CheckRefusal(result, log);
    } else {
      CheckOpened(graph);
    }
  } catch (const std::exception& error) {
    Add(std::string("stopped by: ") + error.what());
  }
  return m_differences;
}

void FileCheck::CheckRefusal(HRESULT result, LogCapture& log) {
  if (m_file.opens) return Add("refused with " + Hex(result) + ": " + log.Joined());
  if (!m_file.message.empty() && !log.Contains(m_file.message)) {
    Add("refused without \"" + m_file.message + "\" but with: " + log.Joined());
  }
}

void FileCheck::CheckOpened(TestGraph& graph) {
  if (!m_file.opens) return Add("opened, though it must be refused: " + m_file.message);
  m_expected = ExpectPins(m_file);
  CheckDocType(graph.Splitter());
  CheckChapters(graph.Splitter());
  CheckMarkers(graph.Splitter());
  CheckPins(graph.OutputPins());
  Play(graph);
}

void FileCheck::CheckDocType(IBaseFilter* filter) {
  VARIANT value{};
  VariantInit(&value);
  const HRESULT result = ConfigOf(filter)->GetValue(&paramDocType, &value);
  const bool known = m_file.docType == "matroska" || m_file.docType == "webm";
  if (!known) {
    if (result != E_FAIL) Add("doc type answers " + Hex(result) + " for \"" + m_file.docType + "\"");
  } else if (result != S_OK || value.ulVal != (m_file.docType == "webm" ? 1U : 0U)) {
    Add("doc type is " + std::to_string(value.ulVal) + " (" + Hex(result) + ") for " + m_file.docType);
  }
}

void FileCheck::CheckChapters(IBaseFilter* filter) {
  const ComPtr<IModuleConfig> config = ConfigOf(filter);
  VARIANT value{};
  VariantInit(&value);
  value.vt = VT_UINT;
  if (config->GetValue(&paramChapterList, &value) != S_OK) return Add("the chapters cannot be counted");
  if (value.ulVal != m_file.chapters.size()) {
    return Add(std::to_string(value.ulVal) + " chapters, not " + std::to_string(m_file.chapters.size()));
  }
  std::vector<ChapterEntry> chapters(value.ulVal + 1);
  value.vt = VT_PTR;
  value.byref = chapters.data();
  if (config->GetValue(&paramChapterList, &value) != S_OK) return Add("the chapters cannot be read");
  for (std::size_t k = 0; k < m_file.chapters.size(); ++k) {
    const ManifestChapter& expected = m_file.chapters[k];
    const std::string name = Utf8FromWide({chapters[k].name, SysStringLen(chapters[k].name)});
    SysFreeString(chapters[k].name);
    if (name != ThroughCodePage(expected.name)) Add("chapter " + std::to_string(k) + " is named " + name);
    if (chapters[k].start != expected.start || chapters[k].end != expected.end) {
      Add("chapter " + std::to_string(k) + " is from " + std::to_string(chapters[k].start) + " to " +
          std::to_string(chapters[k].end));
    }
  }
}

void FileCheck::CheckMarkers(IBaseFilter* filter) {
  const ComPtr<IAMExtendedSeeking> markers = QueryFor<IAMExtendedSeeking>(filter);
  if (!markers) return Add("no IAMExtendedSeeking");
  LONG count = -1;
  markers->get_MarkerCount(&count);
  if (count != static_cast<LONG>(m_file.chapters.size())) Add(std::to_string(count) + " markers");
  for (LONG k = 0; k < count; ++k) {
    double time = -1;
    BStr name;
    markers->GetMarkerTime(k + 1, &time);
    markers->GetMarkerName(k + 1, name.Put());
    const ManifestChapter& expected = m_file.chapters.at(static_cast<std::size_t>(k));
    const std::int64_t seconds = expected.start / 10000000;
    if (time != static_cast<double>(seconds)) Add("marker " + std::to_string(k + 1) + " is misplaced");
    if (Utf8FromWide(name.View()) != ThroughCodePage(expected.name))
      Add("marker " + std::to_string(k + 1) + " is misnamed");
  }
}

void FileCheck::CheckPins(const std::vector<ComPtr<IPin>>& pins) {
  if (pins.size() != m_expected.size()) {
    Add(std::to_string(pins.size()) + " output pins, not " + std::to_string(m_expected.size()));
  }
  for (std::size_t k = 0; k < std::min(pins.size(), m_expected.size()); ++k) {
    const std::string name = NameOf(pins[k].Get());
    if (name != m_expected[k].name) Add("pin " + std::to_string(k) + " is \"" + name + "\", not " + m_expected[k].name);
    CheckMediaType(pins[k].Get(), m_expected[k]);
    CheckDuration(pins[k].Get());
  }
}

void FileCheck::CheckMediaType(IPin* pin, const ExpectedPin& expected) {
  const auto type = ListedTypes().find(m_file.name + '#' + std::to_string(expected.track->number.value()));
  if (m_file.robustness || type == ListedTypes().end()) return;
  const std::string offered = OfferedType(pin);
  if (offered != type->second) Add(expected.name + " offers \"" + offered + "\", not \"" + type->second + '"');
}

void FileCheck::CheckDuration(IPin* pin) {
  const ComPtr<IMediaSeeking> seeking = QueryFor<IMediaSeeking>(pin);
  LONGLONG duration = -1;
  if (!seeking || FAILED(seeking->GetDuration(&duration))) return;
  const LONGLONG expected = m_file.duration > 0 ? m_file.duration : 0x7FFFFFFFFFFFFFFF;
  if (duration != expected) Add("the duration is " + std::to_string(duration) + ", not " + std::to_string(expected));
}

void FileCheck::Play(TestGraph& graph) {
  const HRESULT connected = graph.ConnectSinks(SinkKind::kRecording);
  if (FAILED(connected)) return Add("a pin cannot be connected: " + Hex(connected));
  const HRESULT run = graph.Run();
  if (FAILED(run)) return Add("the graph does not run: " + Hex(run));
  const bool ended = graph.WaitForEnd(kPatience / 2);
  if (!ended && !m_file.robustness) Add("no end of stream");
  const HRESULT stopped = graph.Stop();
  if (FAILED(stopped)) Add("the graph does not stop: " + Hex(stopped));
  if (m_file.robustness) return;
  for (std::size_t k = 0; k < std::min(graph.Sinks().size(), m_expected.size()); ++k) {
    CheckStream(graph.Sink(k), m_expected[k]);
  }
}

void FileCheck::CheckStream(SinkFilter& sink, const ExpectedPin& expected) {
  const std::vector<SinkEvent> events = sink.Events();
  const std::vector<SinkEvent> samples = sink.Samples();
  const std::size_t segments = sink.CountOf(SinkEvent::Kind::kNewSegment);
  if (sink.CountOf(SinkEvent::Kind::kEndOfStream) != 1) Add(expected.name + ": not one end of stream");
  if (!events.empty() && events.back().kind != SinkEvent::Kind::kEndOfStream)
    Add(expected.name + ": the end is not last");
  if (segments != (samples.empty() ? 0U : 1U)) Add(expected.name + ": " + std::to_string(segments) + " segments");
  const bool segmentFirst = samples.empty() || events.front().kind == SinkEvent::Kind::kNewSegment;
  if (!segmentFirst) Add(expected.name + ": the first sample is not preceded by a segment");
  const REFERENCE_TIME origin = samples.empty() || !segmentFirst ? 0 : events.front().start;
  for (const std::string& different : CompareFrames(m_file, *expected.track, FramesOf(samples, origin))) {
    Add(expected.name + ": " + different);
  }
  for (std::size_t k = 0; k < samples.size(); ++k) {
    if (samples[k].discontinuity != (k == 0)) Add(expected.name + ": discontinuity at frame " + std::to_string(k));
    if (samples[k].preroll != (samples[k].start < 0 && samples[k].stop < 0)) {
      Add(expected.name + ": preroll at frame " + std::to_string(k));
    }
  }
}

void FileCheck::Add(const std::string& difference) {
  constexpr std::size_t kMost = 12;
  if (m_differences.size() < kMost) m_differences.push_back(difference);
}

}  // namespace tarvex::test
