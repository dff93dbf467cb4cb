// The one time that is no place in a stream. A constant; any thread.
#pragma once

#include "framework/platform/platform.h"

namespace tarvex {

/// A stop time or a duration that nobody gave, in 100 ns units: the platform's largest time.
inline constexpr REFERENCE_TIME kOpenTime = 0x7FFFFFFFFFFFFFFF;

}  // namespace tarvex
