// The output pin of a video track. Delivers like any other pin, and counts in frames as well as in time.
// Made by pin creation.
#pragma once

#include "pins/output/matroska_output_pin.h"

namespace tarvex {

class CMatroskaVideoPin : public CMatroskaOutputPin {
 public:
  /// See CMatroskaOutputPin.
  CMatroskaVideoPin(CBaseFilter* filter, CCritSec* lock, PinHost* host, HRESULT* result, const WideString& name);
};

}  // namespace tarvex
