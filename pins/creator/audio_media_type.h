// The media type of an audio track, chosen by its codec identifier. A free function, called while a file
// is opened.
#pragma once

#include "framework/media_type.h"

namespace tarvex {

class CHeap;

/// An empty or unknown identifier gives the major type alone, and damaged Vorbis headers count as none.
/// Throws MessageError only for codec data larger than a format block can be.
CMediaType AudioMediaType(const CHeap& track);

}  // namespace tarvex
