// Times of a frame as pins reckon with them: signed, in 100 ns units, of the file. Pure functions; any thread.
#pragma once

#include "framework/platform/platform.h"
#include "pins/output/seek_arithmetic.h"
#include "scanner/frames/frame_info.h"

namespace tarvex {

inline REFERENCE_TIME StartOf(const FrameInfo& frame) noexcept { return static_cast<REFERENCE_TIME>(frame.start); }

inline REFERENCE_TIME DurationOf(const FrameInfo& frame) noexcept {
  return static_cast<REFERENCE_TIME>(frame.duration);
}

inline REFERENCE_TIME EndOf(const FrameInfo& frame) noexcept { return AddTimes(StartOf(frame), DurationOf(frame)); }

}  // namespace tarvex
