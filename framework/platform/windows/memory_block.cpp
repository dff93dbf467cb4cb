// Blocks of memory by VirtualAlloc.
#include "framework/platform/memory_block.h"

namespace tarvex {

bool MemoryBlock::Allocate(std::size_t size) noexcept {
  Free();
  m_data = static_cast<BYTE*>(VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
  m_size = m_data == nullptr ? 0 : size;
  return m_data != nullptr;
}

void MemoryBlock::Free() noexcept {
  if (m_data != nullptr) VirtualFree(m_data, 0, MEM_RELEASE);
  m_data = nullptr;
  m_size = 0;
}

}  // namespace tarvex
