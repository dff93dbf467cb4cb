// The whole filter between a source in memory and counting sinks.
#include <algorithm>
#include <vector>

#include "filter/interface_ids.h"
#include "fuzz/targets.h"
#include "tests/support/test_graph.h"

namespace tarvex::fuzz {

namespace {

constexpr std::size_t kScriptLength = 8;

void Seek(test::TestGraph& graph, std::uint8_t place) {
  const auto pins = graph.OutputPins();
  if (pins.empty()) return;
  const auto seeking = QueryFor<IMediaSeeking>(pins[place % pins.size()].Get());
  LONGLONG duration = 0;
  if (!seeking || FAILED(seeking->GetDuration(&duration))) return;
  LONGLONG start = duration / 256 * place;
  seeking->SetPositions(&start, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning);
}

void Step(test::TestGraph& graph, std::uint8_t step) {
  switch (step >> 5) {
    case 0:
      return static_cast<void>(graph.Stop());
    case 1:
      return static_cast<void>(graph.Pause());
    case 2:
      return static_cast<void>(graph.Run());
    case 3:
      return static_cast<void>(graph.WaitForEnd(2));
    default:
      return Seek(graph, static_cast<std::uint8_t>(step * 2));
  }
}

}  // namespace

// A file that cannot be played to its end within the time limit of the run is a finding.
void FuzzFilter(Input fileAndScript) {
  if (fileAndScript.size() < kScriptLength) return;
  const Input script = fileAndScript.last(kScriptLength);
  const Input file = fileAndScript.first(fileAndScript.size() - kScriptLength);
  test::TestGraph graph;
  graph.SeparatePins(script[0] % 2 != 0);
  const auto source = test::SourceFilter::FromBytes(std::vector<std::uint8_t>(file.begin(), file.end()));
  if (FAILED(graph.Open(source.Get()))) return;
  if (FAILED(graph.ConnectSinks(test::SinkKind::kCounting))) return;
  for (const std::uint8_t step : script) Step(graph, step);
  graph.Stop();
}

}  // namespace tarvex::fuzz
