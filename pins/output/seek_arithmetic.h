// The arithmetic of times: formats, sums and how a request changes the played range. Pure functions; any thread.
#pragma once

#include "framework/platform/platform.h"

namespace tarvex {

/// Converts a time between TIME_FORMAT_MEDIA_TIME (100 ns units) and TIME_FORMAT_FRAME. Both directions
/// divide by `frameDuration` (100 ns units); 0 gives 0. E_INVALIDARG, and `target` untouched, for another
/// pair of formats that are not equal.
HRESULT ConvertTime(LONGLONG& target, const GUID& targetFormat, LONGLONG source, const GUID& sourceFormat,
                    REFERENCE_TIME frameDuration) noexcept;

/// Changes `start` and `stop` as a request with `newStart` and `newStop` asks for. `mode` is one of the
/// positioning bits AM_SEEKING_AbsolutePositioning (replaces both), AM_SEEKING_RelativePositioning and
/// AM_SEEKING_IncrementalPositioning (add to both). Throws MessageError for any other.
void applySeekPosition(REFERENCE_TIME& start, REFERENCE_TIME newStart, REFERENCE_TIME& stop, REFERENCE_TIME newStop,
                       DWORD mode);

// Sum and difference of times; what does not fit stays at the end of the range.
REFERENCE_TIME AddTimes(REFERENCE_TIME a, REFERENCE_TIME b) noexcept;
REFERENCE_TIME SubtractTimes(REFERENCE_TIME a, REFERENCE_TIME b) noexcept;

}  // namespace tarvex
