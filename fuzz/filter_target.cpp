// The whole filter between a source in memory and counting sinks.
#include <cstdlib>
#include <iostream>
#include <vector>

#include "fuzz/targets.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"

namespace tarvex::fuzz {

namespace {

constexpr std::size_t kScriptLength = 8;

/// What does not hold is a finding.
void Require(bool holds, const char* what) {
  if (holds) return;
  std::cerr << what << std::endl;
  std::abort();
}

// A frame that is too large ends the pass without an end of stream, and says so to the graph.
bool Ends(const test::TestGraph& graph) {
  return test::Eventually([&] { return graph.WaitForEnd(50) || graph.WaitForEvent(EC_ERRORABORT, 1); });
}

void Seek(const test::TestGraph& graph, std::uint8_t place) {
  const auto pins = graph.OutputPins();
  if (pins.empty()) return;
  const auto seeking = QueryFor<IMediaSeeking>(pins[place % pins.size()].Get());
  LONGLONG duration = 0;
  if (!seeking || FAILED(seeking->GetDuration(&duration))) return;
  LONGLONG start = duration / 256 * place;
  seeking->SetPositions(&start, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning);
}

/// One step of a script. Whether the graph runs, or is paused, where sinks take all as well.
bool Step(test::TestGraph& graph, std::uint8_t step, bool runs) {
  switch (step >> 5) {
    case 0:
      Require(SUCCEEDED(graph.Stop()), "the graph does not stop");
      return false;
    case 1:
      return SUCCEEDED(graph.Pause());
    case 2:
      return SUCCEEDED(graph.Run());
    case 3:
      Require(!runs || Ends(graph), "neither an end nor an error");
      return runs;
    default:
      Seek(graph, static_cast<std::uint8_t>(step * 2));
      return runs;
  }
}

}  // namespace

// A file that cannot be played to its end within the time limit of the run is a finding. One may be refused, or a pin
// have a type that cannot be made.
void FuzzFilter(Input fileAndScript) {
  if (fileAndScript.size() < kScriptLength) return;
  const Input script = fileAndScript.last(kScriptLength);
  const Input file = fileAndScript.first(fileAndScript.size() - kScriptLength);
  {
    test::TestGraph graph;
    graph.SeparatePins(script[0] % 2 != 0);
    const auto source = test::SourceFilter::FromBytes({file.begin(), file.end()});
    if (SUCCEEDED(graph.Open(source.Get())) && SUCCEEDED(graph.ConnectSinks(test::SinkKind::kCounting))) {
      bool runs = false;
      for (const std::uint8_t step : script) runs = Step(graph, step, runs);
    }
    Require(SUCCEEDED(graph.Stop()), "the graph does not stop");
    for (const auto& sink : graph.Sinks()) Require(sink->AfterEnd() == 0, "something came after an end of stream");
  }
  Require(test::ModuleBecomesIdle(), "something of the module is left");
}

}  // namespace tarvex::fuzz
