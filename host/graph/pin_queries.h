// What any filter and pin can be asked. Free functions; application threads. Texts are UTF-8 and not
// escaped.
#pragma once

#include <string>
#include <vector>

#include "framework/com_ptr.h"
#include "framework/media_type.h"

namespace tarvex::host {

/// All pins of a filter with this direction, in the order in which it lists them.
std::vector<ComPtr<IPin>> PinsOf(IBaseFilter* filter, PIN_DIRECTION direction);

std::string PinName(IPin* pin);

/// All types that the pin offers, in its order.
std::vector<CMediaType> OfferedTypes(IPin* pin);

bool IsConnected(IPin* pin);

/// The filters that come after `output`, up to the last one that can be reached over first connected
/// output pins.
std::vector<ComPtr<IBaseFilter>> DownstreamFilters(IPin* output);

/// The name that it has in the graph.
std::string FilterName(IBaseFilter* filter);

}  // namespace tarvex::host
