// Reading how a track's frames are compressed. A free function; runs while a file is opened.
#pragma once

#include <matroska/KaxContentEncoding.h>

#include "scanner/elements/heap.h"

namespace tarvex {

/// Stores the last compression algorithm and the last settings of a track entry in its table. The
/// element gains the defaults that an empty compression stands for.
void ReadContentEncodings(libmatroska::KaxContentEncodings& encodings, CHeap& track);

}  // namespace tarvex
