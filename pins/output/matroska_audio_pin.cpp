// A class of its own gives the pin its kind.
#include "pins/output/matroska_audio_pin.h"

namespace tarvex {

CMatroskaAudioPin::CMatroskaAudioPin(const SharedByPins& shared, const WideString& name)
    : CMatroskaOutputPin("CMatroskaAudioPin", shared, name) {}

}  // namespace tarvex
