// Blocks of memory by mmap. What is not committed cannot be touched, as on Windows, so that tests see it.
#include "framework/platform/memory_block.h"

#include <sys/mman.h>

namespace tarvex {

bool MemoryBlock::Reserve(std::size_t size) noexcept {
  Free();
  void* data = ::mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (data == MAP_FAILED) return false;
  m_data = static_cast<BYTE*>(data);
  m_size = size;
  return true;
}

bool MemoryBlock::CommitMore(std::size_t size) noexcept {
  const std::size_t end = StepFor(size);
  if (::mprotect(m_data + m_committed, end - m_committed, PROT_READ | PROT_WRITE) != 0) return false;
  m_committed = end;
  return true;
}

void MemoryBlock::Free() noexcept {
  if (m_data != nullptr) ::munmap(m_data, m_size);
  m_data = nullptr;
  m_size = m_committed = 0;
}

}  // namespace tarvex
