// What any filter can be asked about its pins, ours and those of others alike. Free functions, for application threads.
#pragma once

#include <vector>

#include "framework/com_ptr.h"

namespace tarvex {

/// All pins, in the order in which the filter lists them. Where it fails, those that came before. Throws
/// std::bad_alloc.
std::vector<ComPtr<IPin>> PinsOf(IBaseFilter* filter);
/// Those with this direction.
std::vector<ComPtr<IPin>> PinsOf(IBaseFilter* filter, PIN_DIRECTION direction);

bool IsConnected(IPin* pin);

}  // namespace tarvex
