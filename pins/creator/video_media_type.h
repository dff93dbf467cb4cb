// The media type of a video track, chosen by its codec identifier. A free function, called while a file
// is opened.
#pragma once

#include "framework/media_type.h"

namespace tarvex {

class CHeap;

/// `annexBOutput` announces H.264 as a byte stream with start codes. Throws MessageError when the
/// identifier is not known, or when elements that its format block needs are missing or damaged. An
/// empty identifier gives the major type alone.
CMediaType VideoMediaType(const CHeap& track, bool annexBOutput);

}  // namespace tarvex
