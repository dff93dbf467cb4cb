// bench_system.h for Windows.
#include "benchmarks/play/bench_system.h"

#include <psapi.h>

#include <stdexcept>

#include "framework/text_conversion.h"
#include "include/tarvex/class_ids.h"

namespace tarvex::bench {
namespace {

template <class T>
ComPtr<T> CreateInstance(REFCLSID clsid, const char* name) {
  ComPtr<T> object;
  if (FAILED(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IidOf<T>(), object.PutVoid()))) {
    throw std::runtime_error(std::string("cannot create ") + name);
  }
  return object;
}

// Unix paths come from a shell outside Wine, which shows the whole file system as drive Z.
WideString SystemPath(const std::string& path) {
  WideString result = WideFromUtf8(path.starts_with('/') ? "Z:" + path : path);
  for (OLECHAR& letter : result) {
    if (letter == L'/') letter = L'\\';
  }
  return result;
}

ComPtr<IAsyncReader> ReaderOf(IBaseFilter* source) {
  ComPtr<IEnumPins> pins;
  ComPtr<IPin> pin;
  if (FAILED(source->EnumPins(pins.Put())) || pins->Next(1, pin.Put(), nullptr) != S_OK) return nullptr;
  return pin.Query<IAsyncReader>();
}

double Milliseconds(const FILETIME& time) {
  const auto units = (static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
  return static_cast<double>(units) / 1e4;
}

}  // namespace

void EnterApartment() {
  if (FAILED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) throw std::runtime_error("COM does not start");
}

ComPtr<IBaseFilter> NewSplitter() {
  return CreateInstance<IBaseFilter>(CLSID_MatroskaSplitter, "the splitter; is it registered?");
}

// As fast as the data flows: without a clock nothing waits for its time.
ComPtr<IGraphBuilder> NewGraph() {
  auto graph = CreateInstance<IGraphBuilder>(CLSID_FilterGraph, "the filter graph");
  const auto filter = graph.Query<IMediaFilter>();
  if (!filter || FAILED(filter->SetSyncSource(nullptr))) throw std::runtime_error("the graph keeps its clock");
  return graph;
}

OpenedFile OpenFile(const std::string& path) {
  auto filter = CreateInstance<IBaseFilter>(CLSID_AsyncReader, "the file source");
  const auto file = filter.Query<IFileSourceFilter>();
  if (!file || FAILED(file->Load(SystemPath(path).c_str(), nullptr))) throw std::runtime_error("cannot read " + path);
  auto reader = ReaderOf(filter.Get());
  if (!reader) throw std::runtime_error("the file source has no reader");
  return {std::move(filter), std::move(reader)};
}

CpuTimes ProcessTimes() {
  FILETIME created{};
  FILETIME ended{};
  FILETIME kernel{};
  FILETIME user{};
  GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &user);
  return {Milliseconds(user), Milliseconds(kernel)};
}

std::uint64_t PeakResidentBytes() {
  PROCESS_MEMORY_COUNTERS counters{};
  const BOOL known = GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
  return known != FALSE ? counters.PeakWorkingSetSize : 0;
}

void ResetPeakResident() {}

std::uint64_t ResidentBytes(const void* /*begin*/, const void* /*end*/) { return 0; }

std::uint64_t HeapBytes() { return 0; }

}  // namespace tarvex::bench
