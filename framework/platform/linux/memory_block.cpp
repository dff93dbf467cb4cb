// Blocks of memory by mmap.
#include "framework/platform/memory_block.h"

#include <sys/mman.h>

namespace tarvex {

bool MemoryBlock::Allocate(std::size_t size) noexcept {
  Free();
  void* data = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (data == MAP_FAILED) return false;
  m_data = static_cast<BYTE*>(data);
  m_size = size;
  return true;
}

void MemoryBlock::Free() noexcept {
  if (m_data != nullptr) ::munmap(m_data, m_size);
  m_data = nullptr;
  m_size = 0;
}

}  // namespace tarvex
