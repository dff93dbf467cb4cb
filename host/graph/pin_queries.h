// What any filter and pin can be asked. Free functions; application threads. Texts are UTF-8 and not
// escaped.
#pragma once

#include <string>
#include <vector>

#include "framework/com_ptr.h"
#include "framework/media_type.h"

namespace tarvex::host {

std::string PinName(IPin* pin);

/// All types that the pin offers, in its order.
std::vector<CMediaType> OfferedTypes(IPin* pin);

/// The filters behind `output`, one after the other: each is the peer of the first connected output pin of the one
/// before. 16 at most.
std::vector<ComPtr<IBaseFilter>> ChainBehind(IPin* output);

/// The name that it has in the graph.
std::string FilterName(IBaseFilter* filter);

}  // namespace tarvex::host
