// What the tests need of the system and each build does its own way: the filter graph, the file
// source, paths, and the process's own use of memory and handles. Free functions; any thread.
#pragma once

#include <cstdint>
#include <string>

#include "framework/com_ptr.h"

namespace tarvex::test {

/// A new filter graph: the platform's where there is one, our own small one elsewhere. It offers
/// IGraphBuilder, IMediaControl, IMediaEvent and IMediaEventSink. Throws std::runtime_error.
ComPtr<IGraphBuilder> CreateFilterGraph();

/// Filters may be added and removed on one thread while another one changes the graph's state.
bool GraphTakesThreads();

/// The platform's asynchronous file reader, or SourceFilter, with the file loaded. Throws
/// std::runtime_error.
ComPtr<IBaseFilter> CreateFileSource(const std::string& path);

/// Makes a COM object of the platform's on the calling thread, and answers what COM answers: CO_E_NOTINITIALIZED on a
/// thread that is in no apartment, while no other one of the process is in the multithreaded one. Where there is no
/// COM, the answer is about the calling thread alone.
HRESULT MakeComObject();

/// As the program's own system names the file: Wine gets Unix paths from outside.
std::string SystemPath(const std::string& path);

/// Open handles or file descriptors of this process.
std::uint32_t OpenHandles();
/// Threads of this process.
std::uint32_t LivingThreads();
/// Private memory of this process that the system has committed or made resident, in bytes.
std::uint64_t MemoryInUse();

/// Numbers in this build's reports are from the shipped module, not from an instrumented one.
bool IsInstrumented();

}  // namespace tarvex::test
