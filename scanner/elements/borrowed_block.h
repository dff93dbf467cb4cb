// A SimpleBlock over bytes that somebody else keeps, used again for one block after the other. Owned by
// the master reader; runs on the thread that drives the scanner.
#pragma once

#include <matroska/KaxBlock.h>

#include <cstdint>
#include <span>

#include "scanner/elements/element_header.h"

namespace tarvex {

/// Spares a block's copy of its bytes and its allocations. Has no buffers, as GetBuffer would give them: the frames
/// lie one after the other, and GetFrameSize tells how long each is.
class BorrowedBlock final : public libmatroska::KaxSimpleBlock {
 public:
  BorrowedBlock() = default;
  BorrowedBlock(const BorrowedBlock&) = delete;
  BorrowedBlock& operator=(const BorrowedBlock&) = delete;
  ~BorrowedBlock() override;

  /// Becomes the block whose head stands at `position` of the stream and whose data are `data`, which stay
  /// until it becomes another one. False when they are no block.
  bool Become(std::uint64_t position, const ElementHeader& header, std::span<const std::uint8_t> data);
  /// Null when it is no block.
  const std::uint8_t* FirstFrame() const noexcept { return m_firstFrame; }

 private:
  const std::uint8_t* m_firstFrame = nullptr;
};

}  // namespace tarvex
