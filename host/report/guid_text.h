// Names of the identifiers that media types carry. Free functions over values; any thread.
#pragma once

#include <optional>
#include <string>

#include "framework/platform/platform.h"

namespace tarvex::host {

/// "{8D2D71CB-243F-45E3-B2D8-5FD7967EC09B}"
std::string GuidText(const GUID& guid);

// Short names for people: "Video", "AVC1", "MPEG2VIDEOINFO". "none" for the null identifier, the whole
// identifier when it is not known.
std::string MajorTypeName(const GUID& guid);
std::string FormatTypeName(const GUID& guid);
/// The major type decides: one number may be a picture compression and a sound format.
std::string SubtypeName(const GUID& major, const GUID& subtype);

/// The number that a subtype of the common form stands for: a picture compression or a wave format tag.
std::optional<std::uint32_t> CodeOfSubtype(const GUID& guid);

/// "AVC1" where all four characters are printable, otherwise "0x00002000".
std::string FourCcText(std::uint32_t code);

/// "AC-3" and so on; empty for a tag without a name here.
std::string WaveTagName(std::uint32_t tag);

}  // namespace tarvex::host
