// The output pin of an audio track: the base pin as it is. Made by pin creation,
// owned by the filter; threads as in the base.
#pragma once

#include "pins/output/matroska_output_pin.h"

namespace tarvex {

class CMatroskaAudioPin : public CMatroskaOutputPin {
 public:
  /// See CMatroskaOutputPin.
  CMatroskaAudioPin(const SharedByPins& shared, const WideString& name);
};

}  // namespace tarvex
