// The video pin.
#include "pins/output/matroska_video_pin.h"

namespace tarvex {

CMatroskaVideoPin::CMatroskaVideoPin(CBaseFilter* filter, CCritSec* lock, PinHost* host, HRESULT* result,
                                     const WideString& name)
    : CMatroskaOutputPin("CMatroskaVideoPin", Kind::kVideo, filter, lock, host, result, name) {}

}  // namespace tarvex
