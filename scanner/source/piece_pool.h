// Memory that pieces of a stream are read into, and in which samples may lie for as long as they are out. Belongs to a
// prefetcher; its reading thread and that of its owner take memory.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>

#include "framework/com_ptr.h"
#include "framework/unknown.h"

namespace tarvex {

class PiecePool {
 public:
  /// Each piece gets so many bytes. None is there before it is taken for the first time.
  explicit PiecePool(std::size_t bytes) : m_bytes(bytes) {}
  PiecePool(const PiecePool&) = delete;
  PiecePool& operator=(const PiecePool&) = delete;

  /// So many pieces are in the hands of the reading threads at most.
  static constexpr std::size_t kTaken = 5;
  /// In so many samples may lie beside those. More would make a pin's ring no limit of what downstream holds.
  static constexpr std::size_t kKept = 6;

 private:
  /// Counted by the pool and by every sample in it, so that it outlasts the reader if they do.
  class Memory final : public UnknownImpl<IUnknown> {
   public:
    explicit Memory(std::size_t bytes) noexcept;
    BYTE* Bytes() const noexcept { return m_bytes.get(); }
    bool HasSamples() const noexcept { return References() > 1; }

   private:
    const std::unique_ptr<BYTE[]> m_bytes;
  };

  struct Slot {
    ComPtr<Memory> memory;
    std::atomic<bool> isTaken{false};
  };
  struct GiveBack {
    void operator()(Slot* slot) const noexcept { slot->isTaken = false; }
  };

 public:
  /// Taken memory. The pool outlives it.
  class Taken {
   public:
    Taken() noexcept = default;
    explicit Taken(Slot* slot) noexcept : m_slot(slot) {}
    explicit operator bool() const noexcept { return m_slot != nullptr; }
    BYTE* Bytes() const noexcept { return m_slot->memory->Bytes(); }

   private:
    friend class PiecePool;
    std::unique_ptr<Slot, GiveBack> m_slot;
  };

  /// Memory in which nothing lies any more. Empty when there is none.
  Taken Take() noexcept;
  /// For samples that are to lie in that memory: what each holds as long as it is out. Null when they lie in too many
  /// others already. One thread, which has taken it.
  ComPtr<IUnknown> Keep(const Taken& taken) noexcept;

 private:
  const std::size_t m_bytes;
  std::array<Slot, kTaken + kKept> m_slots;
  std::array<Memory*, kKept> m_kept{};  // where samples lay when last looked at, each once
};

}  // namespace tarvex
