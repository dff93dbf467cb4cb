// test_system.h for Linux.
#include "tests/support/test_system.h"

#include <malloc.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/support/linux/filter_graph.h"
#include "tests/support/source_filter.h"

namespace tarvex::test {

ComPtr<IGraphBuilder> CreateFilterGraph() { return MakeCom<FilterGraph>(); }

ComPtr<IBaseFilter> CreateFileSource(const std::string& path) { return SourceFilter::FromFile(path); }

HRESULT MakeComObject() { return IsInApartment() ? S_OK : CO_E_NOTINITIALIZED; }

std::string SystemPath(const std::string& path) { return path; }

namespace {

std::uint32_t EntriesOf(const char* folder) {
  const std::filesystem::directory_iterator entries(folder);
  return static_cast<std::uint32_t>(std::distance(begin(entries), end(entries)));
}

// Otherwise every thread may get a heap of its own, and how many there are depends on the machine's load.
[[maybe_unused]] const int kOneHeap = mallopt(M_ARENA_MAX, 1);

}  // namespace

std::uint32_t OpenHandles() { return EntriesOf("/proc/self/fd"); }

std::uint32_t LivingThreads() { return EntriesOf("/proc/self/task"); }

// What the allocator keeps for later is not in use.
std::uint64_t MemoryInUse() {
  malloc_trim(0);
  std::ifstream statm("/proc/self/statm");
  std::uint64_t total = 0;
  std::uint64_t resident = 0;
  statm >> total >> resident;
  return resident * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

bool GraphTakesThreads() { return true; }

bool IsInstrumented() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  return true;
#else
  return false;
#endif
}

}  // namespace tarvex::test
