// Blocks of memory by VirtualAlloc.
#include "framework/platform/memory_block.h"

namespace tarvex {

bool MemoryBlock::Reserve(std::size_t size) noexcept {
  Free();
  m_data = static_cast<BYTE*>(VirtualAlloc(nullptr, size, MEM_RESERVE, PAGE_READWRITE));
  m_size = m_data == nullptr ? 0 : size;
  return m_data != nullptr;
}

bool MemoryBlock::CommitMore(std::size_t size) noexcept {
  const std::size_t end = StepFor(size);
  if (VirtualAlloc(m_data + m_committed, end - m_committed, MEM_COMMIT, PAGE_READWRITE) == nullptr) return false;
  m_committed = end;
  return true;
}

void MemoryBlock::Free() noexcept {
  if (m_data != nullptr) VirtualFree(m_data, 0, MEM_RELEASE);
  m_data = nullptr;
  m_size = m_committed = 0;
}

}  // namespace tarvex
