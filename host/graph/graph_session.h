// One graph with the platform's file source and the splitter in it, opened on one file. Owned by a
// command on the main thread; taking it down stops the graph and drops every filter in it.
#pragma once

#include <string>
#include <vector>

#include "framework/com_ptr.h"
#include "framework/text_conversion.h"
#include "host/graph/log_listener.h"
#include "host/system/module_loader.h"

namespace tarvex::host {

/// What every command that opens a file is told. Texts as NarrowFileName gives them.
struct SessionOptions {
  std::string file;
  std::string module;   ///< empty: the registered one
  std::string logFile;  ///< empty: none
  bool separatePins = false;
  bool annexB = false;  ///< H.264 with start codes
};

class GraphSession {
 public:
  /// Opens the file. Throws HostError with the reason.
  explicit GraphSession(const SessionOptions& options);
  ~GraphSession();
  GraphSession(const GraphSession&) = delete;
  GraphSession& operator=(const GraphSession&) = delete;

  // Valid as long as this object; not counted.
  IGraphBuilder* Graph() const noexcept { return m_graph.Get(); }
  IBaseFilter* Splitter() const noexcept { return m_splitter.Get(); }
  const ModuleLoader& Module() const noexcept { return m_module; }

  /// What the user calls the file.
  const std::string& File() const noexcept { return m_options.file; }

  std::vector<ComPtr<IPin>> OutputPins() const;

  /// Adds a filter to the graph. Throws HostError.
  void Add(IBaseFilter* filter, const OLECHAR* name);
  /// Adds `filter` and connects `output` to `input`, which is a pin of it. Throws HostError; the filter
  /// is out of the graph again then.
  void AddAndConnect(IBaseFilter* filter, const OLECHAR* name, IPin* output, IPin* input);
  /// Disconnects what is connected to the filter and takes it out.
  void Remove(IBaseFilter* filter) noexcept;

  /// Gives the graph's clock to filters that were added after it was chosen: not every platform does that.
  void ShareClock() noexcept;
  /// No filter keeps time: data flows as fast as it is taken.
  void RunWithoutClock();
  /// Throws HostError.
  void Run();
  /// Throws HostError.
  void Pause();
  void Stop() noexcept;

 private:
  void OpenFile();
  void SetSettings();
  void ConnectSource();
  [[noreturn]] void Refuse(HRESULT result);
  void RemoveAll() noexcept;

  const SessionOptions m_options;
  const WideString m_path;
  const ModuleLoader m_module;  // before everything that comes from it
  ComPtr<IGraphBuilder> m_graph;
  ComPtr<IBaseFilter> m_source;
  ComPtr<IBaseFilter> m_splitter;
  LogListener m_listener;  // the first to go, since it holds on to the splitter
};

}  // namespace tarvex::host
