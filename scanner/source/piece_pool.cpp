#include "scanner/source/piece_pool.h"

#include <algorithm>
#include <new>

namespace tarvex {

PiecePool::Memory::Memory(std::size_t bytes) noexcept
    : UnknownImpl("PiecePool::Memory", nullptr), m_bytes(new (std::nothrow) BYTE[bytes]) {}

PiecePool::Taken PiecePool::Take() noexcept {
  for (Slot& slot : m_slots) {
    if (slot.isTaken.exchange(true)) continue;
    Taken taken(&slot);
    if (!slot.memory) slot.memory = ComPtr<Memory>(new (std::nothrow) Memory(m_bytes));
    if (slot.memory && slot.memory->Bytes() == nullptr) slot.memory.Reset();
    if (!slot.memory) return {};
    if (!slot.memory->HasSamples()) return taken;
  }
  return {};
}

ComPtr<IUnknown> PiecePool::Keep(const Taken& taken) noexcept {
  Memory* const memory = taken.m_slot->memory.Get();
  if (!memory->HasSamples()) {
    std::ranges::replace(m_kept, memory, nullptr);
    const auto isFree = [](const Memory* kept) { return kept == nullptr || !kept->HasSamples(); };
    const auto place = std::ranges::find_if(m_kept, isFree);
    if (place == m_kept.end()) return {};
    *place = memory;
  }
  return ComPtr<IUnknown>(memory);
}

}  // namespace tarvex
