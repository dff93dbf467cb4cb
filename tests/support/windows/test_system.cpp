// test_system.h for Windows.
#include "tests/support/test_system.h"

#include <stdexcept>

#include "framework/text_conversion.h"

// After the system's main header, which it needs.
#include <tlhelp32.h>

namespace tarvex::test {
namespace {

template <class T>
ComPtr<T> CreateInstance(REFCLSID clsid, const char* name) {
  thread_local const HRESULT initialised = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
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

HRESULT MakeComObject() {
  ComPtr<IMemAllocator> object;
  return CoCreateInstance(CLSID_MemoryAllocator, nullptr, CLSCTX_INPROC_SERVER, IID_IMemAllocator, object.PutVoid());
}

// Wine shows the whole Unix file system as drive Z.
std::string SystemPath(const std::string& path) {
  std::string result = path.starts_with('/') ? "Z:" + path : path;
  for (char& letter : result) {
    if (letter == '/') letter = '\\';
  }
  return result;
}

// One by one: Wine gives no count of a process's own. Handles are small numbers, and free ones are given again.
std::uint32_t OpenHandles() {
  std::uint32_t count = 0;
  for (std::uintptr_t value = 4; value < 0x4000; value += 4) {
    DWORD flags = 0;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): that is what handles are
    count += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != FALSE ? 1 : 0;
  }
  return count;
}

std::uint32_t LivingThreads() {
  HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 entry{};
  entry.dwSize = sizeof entry;
  std::uint32_t count = 0;
  for (BOOL more = Thread32First(snapshot, &entry); more != FALSE; more = Thread32Next(snapshot, &entry)) {
    count += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1 : 0;
  }
  CloseHandle(snapshot);
  return count;
}

std::uint64_t MemoryInUse() {
  std::uint64_t total = 0;
  MEMORY_BASIC_INFORMATION region{};
  const std::uint8_t* address = nullptr;
  while (VirtualQuery(address, &region, sizeof region) == sizeof region) {
    if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE) total += region.RegionSize;
    address = static_cast<const std::uint8_t*>(region.BaseAddress) + region.RegionSize;
  }
  return total;
}

// Wine 8 keeps its list of filters without a lock.
bool GraphTakesThreads() { return false; }

bool IsInstrumented() { return false; }

}  // namespace tarvex::test
