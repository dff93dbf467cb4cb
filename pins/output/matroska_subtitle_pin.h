// The output pin of a subtitle track: the base pin as it is. Made by pin creation,
// owned by the filter; threads as in the base.
#pragma once

#include "pins/output/matroska_output_pin.h"

namespace tarvex {

class CMatroskaSubtitlePin : public CMatroskaOutputPin {
 public:
  /// See CMatroskaOutputPin.
  CMatroskaSubtitlePin(const SharedByPins& shared, const WideString& name);

  bool OnData(const FrameInfo& frame) override;
};

}  // namespace tarvex
