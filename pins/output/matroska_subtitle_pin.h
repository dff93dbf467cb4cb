// The output pin of a subtitle track: the base pin as it is. Made by pin creation.
#pragma once

#include "pins/output/matroska_output_pin.h"

namespace tarvex {

class CMatroskaSubtitlePin : public CMatroskaOutputPin {
 public:
  /// See CMatroskaOutputPin.
  CMatroskaSubtitlePin(CBaseFilter* filter, CCritSec* lock, PinHost* host, HRESULT* result, const WideString& name);

  bool OnData(const FrameInfo& frame) override;
};

}  // namespace tarvex
