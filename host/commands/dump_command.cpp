#include "host/commands/dump_command.h"

#include <fmt/format.h>

#include "host/graph/dump_recorder.h"
#include "host/graph/graph_events.h"
#include "host/graph/pin_queries.h"
#include "host/graph/sink_filter.h"
#include "host/graph/stream_list.h"
#include "host/system/console.h"
#include "host/system/host_error.h"
#include "host/system/input_file.h"
#include "host/system/result_text.h"

namespace tarvex::host {

namespace {

constexpr std::size_t kOutputPiece = 65536;  // bytes collected before they are written

struct RecordedPin {
  DumpPin pin;
  std::shared_ptr<DumpRecorder> recorder;
};

// One file for each pin, in a folder that is made if it is missing.
FileHandle CreateBytesFile(const DumpOptions& options, std::size_t index) {
  if (options.bytesFolder.empty()) return {};
  const WideString folder = FullPath(options.bytesFolder);
  CreateDirectoryW(folder.c_str(), nullptr);
  FileHandle file = FileHandle::Create(folder + WideFromUtf8(fmt::format("\\pin{}.bin", index)));
  if (!file) {
    throw HostError(ExitCode::kUsage,
                    fmt::format("{}: cannot write into this folder (error {})", options.bytesFolder, GetLastError()));
  }
  return file;
}

RecordedPin Connect(GraphSession& session, const DumpOptions& options, IPin* output, DumpPin pin) {
  const auto types = OfferedTypes(output);
  pin.name = PinName(output);
  if (!types.empty()) pin.mediaType = DescribeMediaType(types.front());
  auto recorder = std::make_shared<DumpRecorder>(CreateBytesFile(options, pin.index));
  const auto sink = MakeCom<SinkFilter>(recorder);
  session.AddAndConnect(sink.Get(), L"Sink", output, sink->Input().Get());
  return {std::move(pin), std::move(recorder)};
}

std::vector<RecordedPin> ConnectAll(GraphSession& session, const DumpOptions& options) {
  std::vector<RecordedPin> recorded;
  const auto pins = session.OutputPins();
  const auto streams = StreamsOfPins(pins, StreamsOf(session.Splitter()));
  for (std::size_t i = 0; i < pins.size(); ++i) {
    recorded.push_back(Connect(session, options, pins[i].Get(), {i, {}, streams[i], {}}));
  }
  return recorded;
}

void Write(const RecordedPin& recorded, bool json) {
  std::size_t samples = 0;
  std::string text = json ? PinJsonLine(recorded.pin) : PinTextLine(recorded.pin);
  for (const DumpEvent& event : recorded.recorder->TakeEvents()) {
    text += json ? EventJsonLine(recorded.pin, event, samples) : EventTextLine(recorded.pin, event, samples);
    if (event.kind == DumpEvent::Kind::kSample) ++samples;
    if (text.size() < kOutputPiece) continue;
    WriteOutput(text);
    text.clear();
  }
  WriteOutput(text);
}

void ReportEnd(GraphEnd end, HRESULT error, const DumpOptions& options) {
  const std::string& file = options.session.file;
  if (end == GraphEnd::kInterrupted) throw HostError(ExitCode::kPlayback, file + ": interrupted");
  if (end == GraphEnd::kAborted) throw HostError(ExitCode::kPlayback, file + ": ended early: " + FailureText(error));
}

}  // namespace

void RunDump(const DumpOptions& options) {
  GraphSession session(options.session);
  const auto recorded = ConnectAll(session, options);
  if (recorded.empty()) return;  // nothing would ever report the end
  GraphEvents events(session.Graph());
  session.RunWithoutClock();
  session.Run();
  const GraphEnd end = events.Wait(INFINITE);
  session.Stop();
  for (const RecordedPin& pin : recorded) Write(pin, options.json);
  ReportEnd(end, events.Error(), options);
  for (const RecordedPin& pin : recorded) {
    if (pin.recorder->HasWriteFailed()) throw HostError(ExitCode::kPlayback, "not all bytes could be written");
  }
}

}  // namespace tarvex::host
