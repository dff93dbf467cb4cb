// The whole filter between a source in memory and counting sinks.
#include <chrono>
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

class Player {
 public:
  explicit Player(bool separatePins) { m_graph.SeparatePins(separatePins); }
  ~Player() {
    Require(SUCCEEDED(m_graph.Stop()), "the graph does not stop");
    for (const auto& sink : m_graph.Sinks()) Require(sink->AfterEnd() == 0, "something came after an end of stream");
  }
  Player(const Player&) = delete;
  Player& operator=(const Player&) = delete;

  /// A file may be refused, or a pin have a type that cannot be made.
  bool Open(Input file) {
    const auto source = test::SourceFilter::FromBytes(std::vector<std::uint8_t>(file.begin(), file.end()));
    return SUCCEEDED(m_graph.Open(source.Get())) && SUCCEEDED(m_graph.ConnectSinks(test::SinkKind::kCounting));
  }

  void Step(std::uint8_t step) {
    switch (step >> 5) {
      case 0:
        m_runs = false;
        return Require(SUCCEEDED(m_graph.Stop()), "the graph does not stop");
      case 1:
        m_runs = SUCCEEDED(m_graph.Pause());
        return;
      case 2:
        m_runs = SUCCEEDED(m_graph.Run());
        return;
      case 3:
        return Require(!m_runs || Ends(), "neither an end nor an error");
      default:
        Seek(static_cast<std::uint8_t>(step * 2));
    }
  }

 private:
  // A frame that is too large ends the pass without an end of stream, and says so to the graph.
  bool Ends() const {
    constexpr DWORD kInterval = 50;  // milliseconds
    for (DWORD waited = 0; waited < test::kPatience; waited += kInterval) {
      if (m_graph.WaitForEnd(kInterval) || m_graph.WaitForEvent(EC_ERRORABORT, 1)) return true;
    }
    return false;
  }

  void Seek(std::uint8_t place) {
    const auto pins = m_graph.OutputPins();
    if (pins.empty()) return;
    const auto seeking = QueryFor<IMediaSeeking>(pins[place % pins.size()].Get());
    LONGLONG duration = 0;
    if (!seeking || FAILED(seeking->GetDuration(&duration))) return;
    LONGLONG start = duration / 256 * place;
    seeking->SetPositions(&start, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning);
  }

  test::TestGraph m_graph;
  bool m_runs = false;  // or is paused, where sinks take all as well
};

}  // namespace

// A file that cannot be played to its end within the time limit of the run is a finding.
void FuzzFilter(Input fileAndScript) {
  if (fileAndScript.size() < kScriptLength) return;
  const Input script = fileAndScript.last(kScriptLength);
  {
    Player player(script[0] % 2 != 0);
    if (player.Open(fileAndScript.first(fileAndScript.size() - kScriptLength))) {
      for (const std::uint8_t step : script) player.Step(step);
    }
  }
  Require(test::ModuleBecomesIdle(), "something of the module is left");
}

}  // namespace tarvex::fuzz
