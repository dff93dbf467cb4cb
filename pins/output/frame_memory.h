// Whose memory frames lie in when they are handed on. Implemented by the owner of the file; asked by pins on the
// worker.
#pragma once

#include <cstdint>
#include <span>

#include "framework/com_ptr.h"
#include "framework/platform/platform.h"

namespace tarvex {

class FrameMemory {
 public:
  /// What keeps a frame's bytes where they are for as long as it is held; they may be written to. Null where they have
  /// to be copied: they lie elsewhere, or too much is kept already.
  virtual ComPtr<IUnknown> Keep(std::span<const std::uint8_t> frame) noexcept = 0;

 protected:
  FrameMemory() = default;
  FrameMemory(const FrameMemory&) = default;
  FrameMemory& operator=(const FrameMemory&) = default;
  ~FrameMemory() = default;  // never owned through this interface
};

}  // namespace tarvex
