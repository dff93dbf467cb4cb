// The output pin of an audio track: the base pin as it is. Made by pin creation.
#pragma once

#include "pins/output/matroska_output_pin.h"

namespace tarvex {

class CMatroskaAudioPin : public CMatroskaOutputPin {
 public:
  /// See CMatroskaOutputPin.
  CMatroskaAudioPin(CBaseFilter* filter, CCritSec* lock, PinHost* host, HRESULT* result, const WideString& name);
};

}  // namespace tarvex
