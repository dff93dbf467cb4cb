#include "host/commands/info_command.h"

#include "host/graph/chapter_list.h"
#include "host/graph/pin_queries.h"
#include "host/graph/stream_list.h"
#include "host/report/info_report.h"
#include "host/report/time_text.h"
#include "host/system/console.h"
#include "include/tarvex/module_config.h"

namespace tarvex::host {

namespace {

std::string DocTypeOf(IBaseFilter* splitter) {
  ComPtr<IModuleConfig> config;
  if (FAILED(splitter->QueryInterface(IID_IModuleConfig, config.PutVoid()))) return "unknown";
  VARIANT value{};
  if (FAILED(config->GetValue(&paramDocType, &value))) return "other";
  return value.ulVal == 0 ? "matroska" : "webm";
}

// Every output pin gives the same.
std::optional<std::int64_t> DurationOf(const std::vector<ComPtr<IPin>>& pins) {
  if (pins.empty()) return std::nullopt;
  const auto seeking = pins.front().Query<IMediaSeeking>();
  LONGLONG duration = 0;
  if (!seeking || FAILED(seeking->GetDuration(&duration)) || duration == kOpenTime) return std::nullopt;
  return duration;
}

PinReport ReportPin(IPin* pin, std::optional<std::uint32_t> stream) {
  PinReport report{PinName(pin), stream, {}};
  for (const CMediaType& type : OfferedTypes(pin)) report.mediaTypes.push_back(DescribeMediaType(type));
  return report;
}

InfoReport MakeReport(const GraphSession& session, const SessionOptions& options) {
  InfoReport report;
  const auto pins = session.OutputPins();
  report.file = options.file;
  report.docType = DocTypeOf(session.Splitter());
  report.duration = DurationOf(pins);
  report.separatePins = options.separatePins;
  report.streams = StreamsOf(session.Splitter());
  const auto carried = StreamsOfPins(pins, report.streams);
  for (std::size_t i = 0; i < pins.size(); ++i) report.pins.push_back(ReportPin(pins[i].Get(), carried[i]));
  AddChapters(session.Splitter(), report);
  return report;
}

}  // namespace

void RunInfo(const InfoOptions& options) {
  const GraphSession session(options.session);
  const InfoReport report = MakeReport(session, options.session);
  WriteOutput(options.json ? InfoJson(report) : InfoTable(report));
}

}  // namespace tarvex::host
