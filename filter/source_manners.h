// What is known of the filter that a stream is read from, by its class. Free function; the thread that connects.
#pragma once

#include "scanner/source/read_ahead_reader.h"

namespace tarvex {

/// The platform's own file source takes several reads at a time. Of another one nothing is known, so it gets one.
SourceReads ReadsTakenBy(IPin* sourcePin) noexcept;

}  // namespace tarvex
