// The two forms in which an H.264 pin can offer its stream. Pure; called with whatever guards the type.
#pragma once

#include "framework/media_type.h"

namespace tarvex {

/// Turns an H.264 type to start codes (`byteStream`) or to length-prefixed units: the subtype and the
/// format's compression code. Leaves every other type alone.
void SetH264Form(CMediaType& type, bool byteStream) noexcept;

}  // namespace tarvex
