// What hosts of output pins have in common.
#include "pins/output/pin_host.h"

#include "pins/output/pin_seeking.h"

namespace tarvex {

HRESULT PinHost::ChangePlayRange(const RangeChange& change) {
  PlayRange range = Positions();
  if (change.mode != AM_SEEKING_NoPositioning) {
    const bool absolute = change.mode == AM_SEEKING_AbsolutePositioning;
    // What the caller does not give stays: itself when replaced, nothing when added.
    applySeekPosition(range.start, change.start.value_or(absolute ? range.start : 0), range.stop,
                      change.stop.value_or(absolute ? range.stop : 0), change.mode);
  }
  return SetPlayRange(range.start, range.stop, range.rate);
}

}  // namespace tarvex
