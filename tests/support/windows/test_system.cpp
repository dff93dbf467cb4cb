// test_system.h for Windows.
#include "tests/support/test_system.h"

// After the platform's own.
#include <psapi.h>

#include <stdexcept>

#include "framework/text_conversion.h"

namespace tarvex::test {
namespace {

template <class T>
ComPtr<T> CreateInstance(REFCLSID clsid, const char* name) {
  static const HRESULT initialised = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
  ComPtr<T> object;
  if (FAILED(initialised) ||
      FAILED(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IidOf<T>(), object.PutVoid()))) {
    throw std::runtime_error(std::string("cannot create ") + name);
  }
  return object;
}

}  // namespace

ComPtr<IGraphBuilder> CreateFilterGraph() {
  return CreateInstance<IGraphBuilder>(CLSID_FilterGraph, "the filter graph");
}

ComPtr<IBaseFilter> CreateFileSource(const std::string& path) {
  ComPtr<IBaseFilter> filter = CreateInstance<IBaseFilter>(CLSID_AsyncReader, "the file reader");
  const ComPtr<IFileSourceFilter> file = filter.Query<IFileSourceFilter>();
  if (!file || FAILED(file->Load(WideFromUtf8(SystemPath(path)).c_str(), nullptr))) {
    throw std::runtime_error("cannot read " + path);
  }
  return filter;
}

// Wine shows the whole Unix file system as drive Z.
std::string SystemPath(const std::string& path) {
  std::string result = path.starts_with('/') ? "Z:" + path : path;
  for (char& letter : result) {
    if (letter == '/') letter = '\\';
  }
  return result;
}

std::uint32_t OpenHandles() {
  DWORD count = 0;
  GetProcessHandleCount(GetCurrentProcess(), &count);
  return static_cast<std::uint32_t>(count);
}

std::uint64_t MemoryInUse() {
  PROCESS_MEMORY_COUNTERS_EX counters{};
  GetProcessMemoryInfo(GetCurrentProcess(), reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&counters), sizeof counters);
  return counters.PrivateUsage;
}

bool RunsFullByDefault() { return true; }

bool IsInstrumented() { return false; }

}  // namespace tarvex::test
