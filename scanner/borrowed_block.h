// A SimpleBlock over bytes that somebody else keeps, used again for one block after the other. Owned by
// the master reader; runs on the thread that drives the scanner.
#pragma once

#include <matroska/KaxBlock.h>

#include <cstdint>
#include <span>

#include "scanner/element_header.h"

namespace tarvex {

/// Spares a block's copy of its bytes and most of its allocations.
class CBorrowedBlock final : public libmatroska::KaxSimpleBlock {
 public:
  CBorrowedBlock() = default;
  CBorrowedBlock(const CBorrowedBlock&) = delete;
  CBorrowedBlock& operator=(const CBorrowedBlock&) = delete;
  ~CBorrowedBlock() override;

  /// Becomes the block whose head stands at `position` of the stream and whose data are `data`, which stay
  /// until it becomes another one. False when they are no block.
  bool Become(std::uint64_t position, const ElementHeader& header, std::span<const std::uint8_t> data);
};

}  // namespace tarvex
