// The list of output pins, and calls of each in turn.
#include "filter/output_pins.h"

#include <algorithm>
#include <memory>

#include "framework/com_boundary.h"
#include "framework/log.h"

namespace tarvex {

OutputPins::Locks::Locks(const SharedByPins& shared)
    : m_filterLock(shared.filter.FilterLock()), m_positionLock(shared.positions.PositionLock()) {}

OutputPins::List OutputPins::Exchange(const Locks& /*proof*/, List pins) {
  m_pins.swap(pins);
  m_shared.filter.IncrementPinVersion();
  return pins;
}

void OutputPins::Create(COutPinsCreator& creator, bool onePerTrack) {
  RemoveAll();
  const COutPinsCreator::Pins created =
      onePerTrack ? creator.CreatePinsForAllTracks(m_shared) : creator.CreatePinsByType(m_shared);
  List pins(created.begin(), created.end());
  Exchange(Locks(m_shared), std::move(pins));
}

void OutputPins::DisconnectBothEnds(CMatroskaOutputPin& pin) {
  const ComPtr<IPin> peer(pin.GetConnected());
  if (!peer) return;
  peer->Disconnect();
  pin.Disconnect();
}

// Peers take locks of their own, so they are called, and the pins leave the filter, without the position lock.
void OutputPins::RemoveAll() {
  if (m_pins.empty()) return;
  for (const auto& pin : m_pins) DisconnectBothEnds(*pin);
  List leaving;
  const Locks locks(m_shared);
  leaving = Exchange(locks, {});
  m_shared.positions.ClearSeekingOwner();
  m_shared.positions.SetTimeFormat(TIME_FORMAT_MEDIA_TIME);
  m_shared.gate.Clear();
}

CMatroskaOutputPin* OutputPins::FindByTrack(std::uint32_t trackNumber) const {
  for (const auto& pin : m_pins) {
    if (pin->Track().Number() == trackNumber) return pin.Get();
  }
  return nullptr;
}

CMatroskaOutputPin* OutputPins::FindByType(std::uint32_t trackType) const {
  for (const auto& pin : m_pins) {
    if (pin->Track().Type() == trackType) return pin.Get();
  }
  return nullptr;
}

bool OutputPins::AnyConnected() const {
  return std::ranges::any_of(m_pins, [](const auto& pin) { return pin->IsConnected(); });
}

void OutputPins::BeginFlush() const {
  LogText("BeginFlush");
  for (const auto& pin : m_pins) {
    if (pin->IsConnected()) pin->DeliverBeginFlush();
  }
}

void OutputPins::EndFlush() const {
  LogText("EndFlush");
  for (const auto& pin : m_pins) {
    if (pin->IsConnected()) pin->DeliverEndFlush();
  }
}

void OutputPins::EndOfStream() const {
  LogText("EndOfStream");
  // When one pin fails to deliver what it held, no pin holds anything afterwards. Then the end reaches
  // those that it did not reach before.
  if (!EndEveryPin()) EndEveryPin();
}

bool OutputPins::EndEveryPin() const {
  bool all = true;
  for (const auto& pin : m_pins) {
    if (pin->IsConnected() && FAILED(pin->DeliverEndOfStream())) all = false;
  }
  return all;
}

void OutputPins::BeforeWait() const {
  for (const auto& pin : m_pins) pin->BeforeWait();
}

void OutputPins::CancelWaits(bool on) const {
  for (const auto& pin : m_pins) pin->CancelWaits(on);
}

void OutputPins::DropHeld() const {
  for (const auto& pin : m_pins) pin->DropHeld();
}

void OutputPins::SetH264Form(bool byteStream) const {
  for (const auto& pin : m_pins) pin->SetH264Form(byteStream);
}

void OutputPins::EndQueues() const noexcept {
  // Without memory for the list each ends with its pin.
  static_cast<void>(ComBoundary([this] {
    std::vector<std::shared_ptr<COutputQueue>> queues;
    for (const auto& pin : m_pins) {
      if (auto queue = pin->Queue()) queues.push_back(std::move(queue));
    }
    COutputQueue::End(queues);
    return S_OK;
  }));
}

}  // namespace tarvex
