// See pin_rig.h.
#include "tests/pins_output/pin_rig.h"

#include <algorithm>

#include "framework/condition_variable.h"
#include "framework/log.h"
#include "framework/thread.h"

namespace tarvex::test {

PlayRange FakeHost::Range() const {
  const CAutoLock hold(m_lock);
  return m_range;
}

PlayRange FakeHost::Positions() {
  const CAutoLock hold(m_lock);
  if (m_range.stop == PlayRange{}.stop) m_range.stop = duration;
  return m_range;
}

HRESULT FakeHost::SetPlayRange(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
  const CAutoLock hold(m_lock);
  ++moves;
  m_range = {.start = start, .stop = stop, .rate = rate};
  return S_OK;
}

void FakeHost::SetRate(double rate) {
  const CAutoLock hold(m_lock);
  m_range.rate = rate;
}

void FakeHost::SetStartPosition(REFERENCE_TIME start) {
  const CAutoLock hold(m_lock);
  m_range.start = start;
}

bool FakeHost::ClaimSeekingOwner(const CMatroskaOutputPin* pin) {
  const CAutoLock hold(m_lock);
  if (m_owner == nullptr) m_owner = pin;
  return m_owner == pin;
}

void FakeHost::ClearSeekingOwner() {
  const CAutoLock hold(m_lock);
  m_owner = nullptr;
}

void FakeHost::SetTimeFormatOnAllPins(const GUID& format) {
  for (CMatroskaOutputPin* pin : pins) pin->StoreTimeFormat(format);
}

REFERENCE_TIME FakeHost::DefaultFrameDuration(std::uint32_t trackNumber) const {
  return trackNumber == 1 ? frameDuration : 0;
}

void FakeHost::SetHoldingOnAllPins(bool on) {
  for (CMatroskaOutputPin* pin : pins) pin->SetHolding(on);
}

HRESULT FakeHost::ReleaseHeldFrames(REFERENCE_TIME first) {
  for (CMatroskaOutputPin* pin : pins) {
    pin->DropHeldBefore(first);
    const HRESULT hr = pin->FlushPending();
    if (FAILED(hr)) return hr;
  }
  return S_OK;
}

TextLog::TextLog() { SetLogSink(&TextLog::Take, this); }

TextLog::~TextLog() { SetLogSink(nullptr, nullptr); }

void TextLog::Take(void* context, const char* text) {
  auto* log = static_cast<TextLog*>(context);
  const CAutoLock hold(log->m_lock);
  log->m_texts.emplace_back(text);
}

int TextLog::CountOf(std::string_view text) {
  const CAutoLock hold(m_lock);
  return static_cast<int>(std::count(m_texts.begin(), m_texts.end(), text));
}

bool WaitFor(const std::function<bool()>& done) {
  const ULONGLONG end = MonotonicMilliseconds() + 10000;
  while (!done()) {
    if (MonotonicMilliseconds() > end) return false;
    SleepMilliseconds(1);
  }
  return true;
}

TrackPinInfo TrackOf(std::uint32_t number, const GUID& majorType) {
  TrackPinInfo track;
  track.trackNumber = number;
  track.mediaType = TypeOf(majorType, static_cast<BYTE>(number));
  return track;
}

std::string Order(const std::vector<SinkEvent>& events) {
  std::string order;
  for (const SinkEvent& event : events) {
    switch (event.kind) {
      case SinkEvent::Kind::kNewSegment:
        order += 'n';
        break;
      case SinkEvent::Kind::kSample:
        order += 's';
        break;
      case SinkEvent::Kind::kEndOfStream:
        order += 'e';
        break;
      case SinkEvent::Kind::kBeginFlush:
        order += 'b';
        break;
      case SinkEvent::Kind::kEndFlush:
        order += 'f';
        break;
    }
  }
  return order;
}

}  // namespace tarvex::test
