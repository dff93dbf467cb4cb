// A sample of a ring, or over bytes that lie elsewhere. Belongs to the sample buffer, which guards what is beside the
// sample itself.
#pragma once

#include "framework/com_ptr.h"
#include "framework/media_sample.h"
#include "pins/output/ring_regions.h"

namespace tarvex {

class RingSample final : public CMediaSample {
 public:
  /// `allocator` is not counted until the sample is awaited.
  explicit RingSample(IMemAllocator* allocator) noexcept : CMediaSample(allocator, nullptr, 0) {}

  RingRegions::Region region;  ///< empty for a sample over bytes elsewhere
  ComPtr<IUnknown> keeper;     ///< of those
};

}  // namespace tarvex
