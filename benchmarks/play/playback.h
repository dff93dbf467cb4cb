// One file played through one splitter into counting sinks: opened, started, watched, taken down. On the
// main thread's stack.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "benchmarks/play/bench_system.h"
#include "benchmarks/play/counting_sink.h"
#include "benchmarks/play/play_monitor.h"

namespace tarvex::bench {

/// Where the bytes come from: a filter of our own that counts the reads, or the platform's file source
/// itself, where there is one.
enum class SourceKind { kCounting, kPlatform };

class Playback {
 public:
  /// Makes the graph, source and splitter. Throws std::runtime_error.
  /// `delay` is what each read of a counting source takes besides.
  Playback(const std::string& path, SourceKind kind, bool separatePins, std::chrono::microseconds delay);
  /// Stops, disconnects and drops everything.
  ~Playback();
  Playback(const Playback&) = delete;
  Playback& operator=(const Playback&) = delete;

  /// Connects source and splitter, which opens the file. Throws std::runtime_error.
  void Open();
  /// A sink on every output pin. Throws std::runtime_error.
  void ConnectSinks(SinkManner manner);
  /// Data flows when this is done, renderers paused or not. Throws std::runtime_error.
  void Run();
  void Stop() noexcept;

  PlayMonitor& Monitor() noexcept { return m_monitor; }
  /// Zero where the platform's source is read.
  ReadCount Reads() const noexcept;
  /// Names of the output pins, in the order of the sinks.
  const std::vector<std::string>& PinNames() const noexcept { return m_names; }
  const std::vector<ComPtr<CountingSink>>& Sinks() const noexcept { return m_sinks; }

  /// Of the first output pin, which decides about positions. Throws std::runtime_error.
  LONGLONG Duration() const;
  /// To an absolute position, 100 ns units; returns when the splitter has its order. Throws
  /// std::runtime_error.
  void Seek(LONGLONG position) const;

 private:
  void Add(IBaseFilter* filter, const OLECHAR* name);
  void Connect(IPin* output, IPin* input) const;
  void MakeSource(const std::string& path, SourceKind kind, std::chrono::microseconds delay);
  void SeparatePins() const;
  ComPtr<IMediaSeeking> Seeking() const;
  void TakeDown() noexcept;

  PlayMonitor m_monitor;
  ComPtr<IGraphBuilder> m_graph;      // null where the filters are driven directly
  ComPtr<CountingSource> m_counting;  // null where the platform's source is read
  ComPtr<IBaseFilter> m_source;
  ComPtr<IBaseFilter> m_splitter;
  std::vector<ComPtr<CountingSink>> m_sinks;
  std::vector<ComPtr<IPin>> m_outputs;
  std::vector<std::string> m_names;
};

}  // namespace tarvex::bench
