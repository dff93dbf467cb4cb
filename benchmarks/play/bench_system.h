// What the measuring program needs of the system and each build does its own way: the splitter, the file,
// the graph, and the process's own use of time and memory. Free functions; main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "framework/com_ptr.h"

namespace tarvex::bench {

/// Initialises COM for the calling thread where there is something to initialise.
void EnterApartment();

/// A new splitter: linked in, or the registered module's. Throws std::runtime_error.
ComPtr<IBaseFilter> NewSplitter();

/// The platform's filter graph, without a clock; null where there is none. Throws std::runtime_error.
ComPtr<IGraphBuilder> NewGraph();

/// A file to read from. The filter is the platform's file source, or null where there is none; the reader
/// is its pin's, or one over the system's own calls.
struct OpenedFile {
  ComPtr<IBaseFilter> filter;
  ComPtr<IAsyncReader> reader;
};
/// Throws std::runtime_error.
OpenedFile OpenFile(const std::string& path);

struct CpuTimes {
  double user = 0;  ///< milliseconds, of all threads so far
  double system = 0;
};
CpuTimes ProcessTimes();

/// Largest resident size since the last reset, in bytes; 0 where it is not known.
std::uint64_t PeakResidentBytes();
/// Begins a new peak where the system can do that.
void ResetPeakResident();
/// Resident bytes of the pages that the range touches; 0 where it is not known.
std::uint64_t ResidentBytes(const void* begin, const void* end);
/// Bytes that are allocated on the heap; 0 where it is not known. Only the first heap is counted: set
/// MALLOC_ARENA_MAX=1 for the process to see all.
std::uint64_t HeapBytes();

}  // namespace tarvex::bench
