// One splitter in a graph and everything that an application may ask of it, drawn at random by any number of
// threads at once. Owned by one test, which checks at the end that the graph still plays.
#pragma once

#include <atomic>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "tests/control/watchdog.h"
#include "tests/support/test_graph.h"

namespace tarvex::test {

/// Repeatable draws of one thread.
class Dice {
 public:
  explicit Dice(unsigned seed) : m_random(seed) {}
  /// 0 to below `sides`.
  unsigned operator()(unsigned sides) { return static_cast<unsigned>(m_random() % sides); }
  std::int64_t Between(std::int64_t low, std::int64_t high) {
    return low + static_cast<std::int64_t>(m_random() % static_cast<std::uint64_t>(high - low));
  }

 private:
  std::mt19937_64 m_random;
};

class RandomController {
 public:
  /// With `sinksSeek` sinks seek from within Receive now and then.
  RandomController(const std::string& path, ComPtr<IGraphBuilder> graph, Watchdog& dog, bool sinksSeek);
  ~RandomController();
  RandomController(const RandomController&) = delete;
  RandomController& operator=(const RandomController&) = delete;

  /// So many random operations. Any number of threads may be in here.
  void Perform(unsigned operations, unsigned seed);
  /// All streams from the start, each on a pin of its own: how many samples each sink got. To be called with
  /// no thread in Perform.
  std::vector<std::size_t> PlayToTheEnd();
  /// Over all sinks that there were.
  int SamplesAfterEnd();

 private:
  struct Operation;
  using Sinks = std::vector<ComPtr<SinkFilter>>;

  static const Operation& Draw(Dice& dice);
  void Seek(Dice& dice);
  void SetRate(Dice& dice);
  void AskPositions(Dice& dice);
  void Run(Dice& dice);
  void Pause(Dice& dice);
  void Stop(Dice& dice);
  void SelectStream(Dice& dice);
  void SetAnnexB(Dice& dice);
  void SetSeparatePins(Dice& dice);
  void SetPosition(Dice& dice);
  void AskChapters(Dice& dice);
  void Reopen(Dice& dice);
  void DisconnectPin(Dice& dice);
  void ConnectPins(Dice& dice);

  ComPtr<IPin> AnyPin(Dice& dice) const;
  ComPtr<IMediaSeeking> AnySeeking(Dice& dice) const;
  HRESULT Set(const GUID& parameter, VARTYPE type, std::int64_t value);
  ComPtr<SinkFilter> Connect(IPin* pin, SinkKind kind);
  void DropSources();
  HRESULT OpenSource(const std::string& path);
  void SeekFrom(IMediaSeeking* seeking);
  void Keep(const ComPtr<SinkFilter>& sink);
  void DropSinks(bool connectedToo);

  const std::string m_path;
  TestGraph m_graph;
  const ComPtr<IPin> m_input = m_graph.InputPin();
  Watchdog& m_dog;
  std::int64_t m_duration = 0;
  std::atomic<bool> m_sinksSeek;
  std::atomic<unsigned> m_sinkSamples{0};
  CCritSec m_graphLock{"RandomController graph", LockRank::kController};  // where the graph needs one
  CCritSec m_sourceLock{"RandomController source", LockRank::kController};
  std::vector<ComPtr<IBaseFilter>> m_sources;  // those in the graph, the last one connected; under m_sourceLock
  CCritSec m_lock{"RandomController", LockRank::kController};
  Sinks m_sinks;       // under m_lock
  int m_afterEnd = 0;  // of sinks that are gone; under m_lock
};

}  // namespace tarvex::test
