#include "scanner/elements/borrowed_block.h"

namespace tarvex {

// libmatroska would free bytes that are not ours.
BorrowedBlock::~BorrowedBlock() { Data = nullptr; }

bool BorrowedBlock::Become(std::uint64_t position, const ElementHeader& header, std::span<const std::uint8_t> data) {
  SizeList.clear();
  SetBuffer(data.data(), static_cast<std::uint32_t>(data.size()));
  SetSizeLength(static_cast<int>(header.sizeLength));
  ElementPosition = position;
  SizePosition = position + header.idLength;
  binary* first = Data;
  const bool isBlock = ReadFrameSizes(first, data.size());
  m_firstFrame = isBlock ? first : nullptr;
  SetValueIsSet(isBlock);
  return isBlock;
}

}  // namespace tarvex
