// The media type of a subtitle track, chosen by its codec identifier. A free function, called while a
// file is opened.
#pragma once

#include <string_view>

#include "framework/media_type.h"

namespace tarvex {

class CHeap;

/// `language` is the track's, "eng" where the file gives none. An unknown identifier gives subtitle
/// media without a subtype, none at all gives the major type alone. Throws MessageError for codec data
/// larger than a format block can be.
CMediaType SubtitleMediaType(const CHeap& track, std::string_view language);

}  // namespace tarvex
