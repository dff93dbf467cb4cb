// Which stream or chapter a user means: the rules behind the options and keys of the play command, over
// the lists that the splitter gives. Free functions over values; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/report/info_report.h"

namespace tarvex::host {

/// "video", "audio", "subtitle", or the number.
std::string GroupName(std::uint32_t group);

/// Streams of one group are counted from 1. `index` is one of the list.
std::uint32_t NumberInGroup(const std::vector<StreamReport>& streams, std::uint32_t index);

/// Index of the first stream of the group that `wish` names. A wish is its number within the group, or its language as
/// a three-letter code or in English, in capitals or not, or "off" for the one that shows no subtitles. Nothing when
/// there is none.
std::optional<std::uint32_t> FindStream(const std::vector<StreamReport>& streams, std::uint32_t group,
                                        std::string_view wish);

/// Index of the stream after the enabled one, the first after the last; nothing when there is no other.
std::optional<std::uint32_t> NextStream(const std::vector<StreamReport>& streams, std::uint32_t group);

/// Time of a marker in 100 ns units.
std::int64_t TimeOf(const MarkerReport& marker);

/// Index of the first marker behind `position`, 100 ns units; nothing when there is none.
std::optional<std::size_t> NextMarker(const std::vector<MarkerReport>& markers, std::int64_t position);

}  // namespace tarvex::host
