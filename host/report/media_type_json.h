// A decoded media type as JSON. A free function over values; any thread.
#pragma once

#include <nlohmann/json.hpp>

#include "host/report/media_type_text.h"

namespace tarvex::host {

/// Keys stay in the order in which they are written.
using Json = nlohmann::ordered_json;

/// Names and numbers of the type; with `withBlock` also every byte of the format block.
Json MediaTypeJson(const MediaTypeText& text, bool withBlock);

/// On one line, plain ASCII; what is no UTF-8 in a text becomes U+FFFD.
std::string JsonLine(const Json& value);

}  // namespace tarvex::host
