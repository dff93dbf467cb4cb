// Times are what a file or an application says, so every sum may be too large.
#include "pins/output/seek_arithmetic.h"

#include <cinttypes>
#include <limits>

#include "framework/log.h"
#include "framework/message_error.h"

namespace tarvex {

namespace {

constexpr REFERENCE_TIME kLast = std::numeric_limits<REFERENCE_TIME>::max();
constexpr REFERENCE_TIME kFirst = std::numeric_limits<REFERENCE_TIME>::min();

bool AreTimeAndFrame(const GUID& a, const GUID& b) {
  return (a == TIME_FORMAT_MEDIA_TIME && b == TIME_FORMAT_FRAME) ||
         (a == TIME_FORMAT_FRAME && b == TIME_FORMAT_MEDIA_TIME);
}

}  // namespace

HRESULT ConvertTime(LONGLONG& target, const GUID& targetFormat, LONGLONG source, const GUID& sourceFormat,
                    REFERENCE_TIME frameDuration) noexcept {
  if (targetFormat == sourceFormat) {
    target = source;
    return S_OK;
  }
  if (!AreTimeAndFrame(targetFormat, sourceFormat)) return E_INVALIDARG;
  // Applications know that frames are divided as well; a product would move their seeks.
  target = frameDuration > 0 ? source / frameDuration : 0;
  return S_OK;
}

void applySeekPosition(REFERENCE_TIME& start, REFERENCE_TIME newStart, REFERENCE_TIME& stop, REFERENCE_TIME newStop,
                       DWORD mode) {
  switch (mode) {
    case AM_SEEKING_AbsolutePositioning:
      LogFormat("AM_SEEKING_AbsolutePositioning %" PRId64, std::int64_t{newStart});
      start = newStart;
      stop = newStop;
      break;
    case AM_SEEKING_RelativePositioning:
    case AM_SEEKING_IncrementalPositioning:
      start = AddTimes(start, newStart);
      stop = AddTimes(stop, newStop);
      break;
    default:
      throw MessageError("CMatroskaOutputPin::applySeekPosition unknown flags");
  }
}

REFERENCE_TIME AddTimes(REFERENCE_TIME a, REFERENCE_TIME b) noexcept {
  if (b > 0 && a > kLast - b) return kLast;
  if (b < 0 && a < kFirst - b) return kFirst;
  return a + b;
}

REFERENCE_TIME SubtractTimes(REFERENCE_TIME a, REFERENCE_TIME b) noexcept {
  if (b < 0 && a > kLast + b) return kLast;
  if (b > 0 && a < kFirst + b) return kFirst;
  return a - b;
}

}  // namespace tarvex
