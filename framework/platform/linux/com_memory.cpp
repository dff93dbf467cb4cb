// Task memory and counted strings for builds without the system's. Callable from any thread.
#include <cstdlib>
#include <cstring>
#include <string>

#include "framework/platform/linux/com_types.h"

namespace {
// The published layout: a 32-bit byte count stands before the text.
constexpr std::size_t kPrefix = sizeof(std::uint64_t);  // keeps the text aligned; the count is its last half
}  // namespace

void* CoTaskMemAlloc(std::size_t size) { return std::malloc(size == 0 ? 1 : size); }

void CoTaskMemFree(void* memory) { std::free(memory); }

BSTR SysAllocStringLen(const OLECHAR* text, UINT length) {
  const std::size_t bytes = std::size_t{length} * sizeof(OLECHAR);
  auto* block = static_cast<unsigned char*>(std::calloc(1, kPrefix + bytes + sizeof(OLECHAR)));
  if (block == nullptr) return nullptr;
  const auto count = static_cast<std::uint32_t>(bytes);
  std::memcpy(block + kPrefix - sizeof(count), &count, sizeof(count));
  if (text != nullptr && bytes != 0) std::memcpy(block + kPrefix, text, bytes);
  return reinterpret_cast<BSTR>(block + kPrefix);
}

BSTR SysAllocString(const OLECHAR* text) {
  if (text == nullptr) return nullptr;
  return SysAllocStringLen(text, static_cast<UINT>(std::char_traits<OLECHAR>::length(text)));
}

void SysFreeString(BSTR text) {
  if (text != nullptr) std::free(reinterpret_cast<unsigned char*>(text) - kPrefix);
}

UINT SysStringLen(BSTR text) {
  if (text == nullptr) return 0;
  std::uint32_t count = 0;
  std::memcpy(&count, reinterpret_cast<const unsigned char*>(text) - sizeof(count), sizeof(count));
  return count / static_cast<UINT>(sizeof(OLECHAR));
}
