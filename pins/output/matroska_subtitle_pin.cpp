// The subtitle pin.
#include "pins/output/matroska_subtitle_pin.h"

namespace tarvex {

CMatroskaSubtitlePin::CMatroskaSubtitlePin(CBaseFilter* filter, CCritSec* lock, PinHost* host, HRESULT* result,
                                           const WideString& name)
    : CMatroskaOutputPin("CMatroskaSubtitlePin", Kind::kOther, filter, lock, host, result, name) {}

bool CMatroskaSubtitlePin::OnData(const FrameInfo& frame) { return CMatroskaOutputPin::OnData(frame); }

}  // namespace tarvex
