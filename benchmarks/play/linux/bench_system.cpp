// bench_system.h for Linux.
#include "benchmarks/play/bench_system.h"

#include <fcntl.h>
#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

#include <fstream>
#include <limits>
#include <stdexcept>
#include <vector>

#include "benchmarks/play/linux/file_reader.h"
#include "framework/class_factory.h"
#include "include/tarvex/class_ids.h"
#include "module/class_table.h"

namespace tarvex::bench {
namespace {

double Milliseconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

}  // namespace

void EnterApartment() {}

ComPtr<IBaseFilter> NewSplitter() {
  ComPtr<IClassFactory> factory;
  ComPtr<IBaseFilter> filter;
  if (FAILED(GetClassObjectFrom(ModuleClasses(), CLSID_MatroskaSplitter, IidOf<IClassFactory>(), factory.PutVoid())) ||
      FAILED(factory->CreateInstance(nullptr, IidOf<IBaseFilter>(), filter.PutVoid()))) {
    throw std::runtime_error("there is no splitter");
  }
  return filter;
}

ComPtr<IGraphBuilder> NewGraph() { return nullptr; }

OpenedFile OpenFile(const std::string& path) { return {nullptr, MakeCom<FileReader>(path)}; }

CpuTimes ProcessTimes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return {Milliseconds(usage.ru_utime), Milliseconds(usage.ru_stime)};
}

std::uint64_t PeakResidentBytes() {
  std::ifstream status("/proc/self/status");
  std::string word;
  while (status >> word) {
    std::uint64_t kibibytes = 0;
    if (word == "VmHWM:" && status >> kibibytes) return kibibytes * 1024;
    status.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
  }
  return 0;
}

void ResetPeakResident() {
  malloc_trim(0);
  std::ofstream("/proc/self/clear_refs") << "5";
}

// One word a page, whose highest bit says that the page is there. The system takes only whole words, so a
// stream's buffer does not do.
std::uint64_t ResidentBytes(const void* begin, const void* end) {
  const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const std::uintptr_t first = reinterpret_cast<std::uintptr_t>(begin) / page;
  const std::uintptr_t last = (reinterpret_cast<std::uintptr_t>(end) + page - 1) / page;
  if (last <= first) return 0;
  std::vector<std::uint64_t> words(last - first);
  const int map = ::open("/proc/self/pagemap", O_RDONLY | O_CLOEXEC);
  if (map < 0) return 0;
  const ssize_t got =
      ::pread(map, words.data(), words.size() * sizeof words[0], static_cast<off_t>(first * sizeof words[0]));
  ::close(map);
  if (got != static_cast<ssize_t>(words.size() * sizeof words[0])) return 0;
  std::uint64_t bytes = 0;
  for (const std::uint64_t word : words) bytes += (word >> 63) * page;
  return bytes;
}

std::uint64_t HeapBytes() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

}  // namespace tarvex::bench
