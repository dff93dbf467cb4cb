// The scanner's frames, handed to their pins.
#include "filter/delivery_pass.h"

#include <algorithm>

#include "framework/com_boundary.h"
#include "framework/log.h"
#include "pins/limits.h"

namespace tarvex {

HRESULT DeliveryPass::Run() {
  if (!m_pins.AnyConnected()) return S_OK;
  const HRESULT result = ComBoundary([this] { return Deliver(); });
  m_pins.BeforeWait();
  return result;
}

HRESULT DeliveryPass::Deliver() {
  CEbmlScanner& scanner = m_source.Scanner();
  m_failure = S_OK;
  scanner.SetStartTime(static_cast<std::uint64_t>(m_positions.BeginRun()));
  scanner.SetCallback(this);
  // A pass that was interrupted, or that downstream refused, ends without end of stream.
  if (!scanner.Process()) m_pins.EndOfStream();
  return m_failure;
}

void DeliveryPass::Announce() noexcept {
  const CAutoLock lock(m_progressLock);
  m_inProgress = true;
}

bool DeliveryPass::IsInProgress() const noexcept {
  const CAutoLock lock(m_progressLock);
  return m_inProgress;
}

bool DeliveryPass::EndEarly() noexcept {
  const CAutoLock lock(m_progressLock);
  if (m_inProgress) m_endsEarly = true;
  return m_inProgress;
}

// An end that comes while the pins are told of one is looked for once more. With none left the pass is over.
bool DeliveryPass::TakeEnd() noexcept {
  const CAutoLock lock(m_progressLock);
  m_inProgress = m_endsEarly.exchange(false);
  return m_inProgress;
}

// A command makes it the end of what is no longer played.
void DeliveryPass::Finish() {
  while (TakeEnd()) {
    if (m_isCommandPending()) continue;
    static_cast<void>(ComBoundary([this] {
      m_pins.DropHeld();
      m_pins.EndOfStream();
      return S_OK;
    }));
    m_pins.BeforeWait();
  }
}

// Null when nobody wants the frame.
CMatroskaOutputPin* DeliveryPass::PinOf(const FrameInfo& frame) const {
  CMatroskaOutputPin* pin = m_pins.FindByTrack(frame.trackNumber);
  return pin != nullptr && pin->IsConnected() ? pin : nullptr;
}

// Each pin gets its own once, with the first of them. Large ones mostly need no place.
void DeliveryPass::OnComing(std::span<const FrameInfo> frames) {
  for (std::size_t index = 0; index < frames.size(); ++index) {
    const auto isSame = [&](const FrameInfo& other) {
      return other.trackNumber == frames[index].trackNumber && other.size < limits::kLargeFrame;
    };
    if (!isSame(frames[index]) || std::ranges::any_of(frames.first(index), isSame)) continue;
    CMatroskaOutputPin* pin = PinOf(frames[index]);
    const bool isKnown = pin != nullptr && !m_source.Scanner().IsCompressed(frames[index].trackNumber);
    if (!isKnown) continue;
    m_coming.clear();
    for (const FrameInfo& frame : frames.subspan(index)) {
      if (isSame(frame)) m_coming.push_back(frame.size);
    }
    if (m_coming.size() > 1) pin->Reserve(m_coming);
  }
}

bool DeliveryPass::OnData(const FrameInfo& frame) {
  CMatroskaOutputPin* pin = PinOf(frame);
  if (pin == nullptr) return true;
  if (!m_source.Scanner().IsCompressed(frame.trackNumber)) return GiveFrame(*pin, frame);
  FrameInfo decoded = frame;
  m_source.Scanner().Decode(decoded);
  return GiveFrame(*pin, decoded);
}

bool DeliveryPass::OnLace(std::span<const FrameInfo> frames) {
  if (frames.empty()) return true;
  CMatroskaOutputPin* pin = PinOf(frames.front());
  if (pin == nullptr) return true;
  if (m_source.Scanner().IsCompressed(frames.front().trackNumber)) return CMatroskaCallback::OnLace(frames);
  return std::ranges::all_of(frames, [&](const FrameInfo& frame) { return GiveFrame(*pin, frame); });
}

bool DeliveryPass::GiveFrame(CMatroskaOutputPin& pin, const FrameInfo& frame) {
  if (pin.OnData(frame)) return true;
  m_failure = pin.OwnFailure();
  LogText("CMatroskaSplitter::OnData failed");
  return false;
}

}  // namespace tarvex
