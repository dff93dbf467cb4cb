// The audio pin.
#include "pins/output/matroska_audio_pin.h"

namespace tarvex {

CMatroskaAudioPin::CMatroskaAudioPin(CBaseFilter* filter, CCritSec* lock, PinHost* host, HRESULT* result,
                                     const WideString& name)
    : CMatroskaOutputPin("CMatroskaAudioPin", Kind::kOther, filter, lock, host, result, name) {}

}  // namespace tarvex
