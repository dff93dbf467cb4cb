// One graph with one splitter in it, built, run and taken down the way an application does. A value
// on the stack of one test; not shared between threads.
#pragma once

#include <string>
#include <vector>

#include "tests/support/patience.h"
#include "tests/support/sink_filter.h"
#include "tests/support/source_filter.h"

namespace tarvex::test {

class TestGraph {
 public:
  /// A graph with a splitter that is not connected to anything.
  TestGraph();
  /// The same with this splitter, and in this graph where one is given.
  explicit TestGraph(ComPtr<IBaseFilter> splitter, ComPtr<IGraphBuilder> graph = nullptr);
  /// Stops, disconnects and drops everything.
  ~TestGraph();
  TestGraph(const TestGraph&) = delete;
  TestGraph& operator=(const TestGraph&) = delete;

  /// Sets paramSeparatePins. To be called before Open.
  HRESULT SeparatePins(bool on);
  /// Connects the platform's file source to the splitter.
  HRESULT Open(const std::string& path);
  /// Connects this source instead.
  HRESULT Open(IBaseFilter* source);
  /// Disconnects the splitter's input and drops the source.
  HRESULT CloseSource();

  IBaseFilter* Splitter() const noexcept { return m_splitter.Get(); }
  IGraphBuilder* Graph() const noexcept { return m_graph.Get(); }
  ComPtr<IPin> InputPin() const;
  std::vector<ComPtr<IPin>> OutputPins() const;

  /// One sink of this kind on every output pin that has none.
  HRESULT ConnectSinks(SinkKind kind);
  /// One on this pin.
  HRESULT ConnectSink(IPin* pin, SinkKind kind);
  /// In the order of the pins they were connected to.
  const std::vector<ComPtr<SinkFilter>>& Sinks() const noexcept { return m_sinks; }
  SinkFilter& Sink(std::size_t index) const { return *m_sinks.at(index); }

  HRESULT Run();
  HRESULT Pause();
  HRESULT Stop();
  /// Every sink got its end of stream in time.
  bool WaitForEnd(DWORD milliseconds = kPatience) const;
  /// An event with this code was signalled to the graph in time.
  bool WaitForEvent(LONG code, DWORD milliseconds = kPatience) const;

  /// Lets go of everything as it is, while it plays: nothing is stopped or disconnected before. For a source of ours.
  /// Nothing else may be asked afterwards.
  void Abandon();
  /// Disconnects every pin of the splitter, outputs first. The answer of one that refused, if one did.
  HRESULT DisconnectAll();

 private:
  ComPtr<IGraphBuilder> m_graph;
  ComPtr<IMediaControl> m_control;
  ComPtr<IBaseFilter> m_splitter;
  ComPtr<IBaseFilter> m_source;
  std::vector<ComPtr<SinkFilter>> m_sinks;
};

/// All pins of a filter, in the order in which it lists them.
std::vector<ComPtr<IPin>> AllPins(IBaseFilter* filter);
PIN_DIRECTION DirectionOf(IPin* pin);
/// As QueryPinInfo gives it, in UTF-8.
std::string NameOf(IPin* pin);
bool IsConnected(IPin* pin);

}  // namespace tarvex::test
