// Stands between the splitter and Wine's decoders of Video for Windows codecs. The splitter describes such
// pictures with a VIDEOINFOHEADER2; these decoders take a VIDEOINFOHEADER only. The samples pass unchanged.
#pragma once

#include "host/graph/tap_filter.h"

namespace tarvex::test {

class PlainFormatFilter : public host::TapFilter {
 public:
  PlainFormatFilter();
};

}  // namespace tarvex::test
