// The streams that a splitter lists through IAMStreamSelect, and which of them each output pin carries.
// Free functions; application threads.
#pragma once

#include <optional>
#include <vector>

#include "framework/com_ptr.h"
#include "host/report/info_report.h"

namespace tarvex::host {

/// The group of the streams that a pin of this major type carries.
std::uint32_t GroupOf(const GUID& majorType);

/// In the splitter's order; empty when it lists none.
std::vector<StreamReport> StreamsOf(IBaseFilter* splitter);

/// For each output pin the index of its stream. The interfaces do not say it directly: the pins of one
/// kind carry that kind's enabled streams, in order.
std::vector<std::optional<std::uint32_t>> StreamsOfPins(const std::vector<ComPtr<IPin>>& pins,
                                                        const std::vector<StreamReport>& streams);

}  // namespace tarvex::host
