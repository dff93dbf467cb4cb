// A class of its own gives the pin its kind.
#include "pins/output/matroska_subtitle_pin.h"

namespace tarvex {

CMatroskaSubtitlePin::CMatroskaSubtitlePin(const SharedByPins& shared, const WideString& name)
    : CMatroskaOutputPin("CMatroskaSubtitlePin", shared, name) {}

bool CMatroskaSubtitlePin::OnData(const FrameInfo& frame) { return CMatroskaOutputPin::OnData(frame); }

}  // namespace tarvex
