// Holding frames, choosing a segment's start among them, and their release.
#include "pins/output/segment_gate.h"

#include <algorithm>
#include <limits>
#include <queue>
#include <utility>

#include "pins/limits.h"

namespace tarvex {

namespace {

// No frame starts before it.
constexpr REFERENCE_TIME kAllFrames = std::numeric_limits<REFERENCE_TIME>::min();

}  // namespace

/// What is held, on its way to the pins: in order of arrival, but a pin whose ring is full makes no other pin wait.
/// A paused renderer keeps its first sample and so all behind it, and the others still want their first.
class SegmentGate::Release {
 public:
  Release(SegmentGate& gate, Lanes lanes, REFERENCE_TIME first)
      : m_gate(gate), m_lanes(std::move(lanes)), m_next(m_lanes.size(), 0), m_drops(gate.m_drops) {
    for (Lane& lane : m_lanes) lane.frames.DropBefore(first);
  }

  HRESULT Deliver() {
    HRESULT result = InTurn([](Receiver& pin, const FrameInfo& frame) { return pin.TryDeliverHeld(frame); });
    if (SUCCEEDED(result)) {
      result = InTurn([](Receiver& pin, const FrameInfo& frame) { return std::optional(pin.DeliverHeld(frame)); });
    }
    for (std::size_t i = 0; i < m_lanes.size(); ++i) {
      if (!IsDone(i)) m_lanes[i].pin->OnHeldLost();
    }
    if (FAILED(result)) return result;
    for (Lane& lane : m_lanes) lane.pin->OnHeldDelivered();
    return S_OK;
  }

 private:
  /// Lanes by the arrival of their next frames, the earliest on top.
  using Turn = std::pair<std::uint64_t, std::size_t>;
  using Turns = std::priority_queue<Turn, std::vector<Turn>, std::greater<>>;

  bool IsDone(std::size_t lane) const noexcept { return m_next[lane] == m_lanes[lane].frames.Count(); }
  bool IsOver() const noexcept { return m_drops != m_gate.m_drops; }
  void Enter(Turns& turns, std::size_t lane) const {
    if (!IsDone(lane)) turns.emplace(m_lanes[lane].frames.ArrivalOf(m_next[lane]), lane);
  }
  Turns AllLanes() const {
    Turns turns;
    for (std::size_t lane = 0; lane < m_lanes.size(); ++lane) Enter(turns, lane);
    return turns;
  }

  // Frames of all lanes in their order of arrival. Where `deliver` has no room for one, its lane waits from there on.
  template <class Deliver>
  HRESULT InTurn(Deliver deliver) {
    Turns turns = AllLanes();
    while (!turns.empty() && !IsOver()) {
      const std::size_t lane = turns.top().second;
      turns.pop();
      const std::optional<HRESULT> result = deliver(*m_lanes[lane].pin, m_lanes[lane].frames.At(m_next[lane]));
      if (!result) continue;
      if (FAILED(*result)) return *result;
      ++m_next[lane];
      Enter(turns, lane);
    }
    return S_OK;
  }

  SegmentGate& m_gate;
  Lanes m_lanes;
  std::vector<std::size_t> m_next;  // of each lane, the frame that comes next
  const unsigned m_drops;
};

SegmentGate::Lane& SegmentGate::LaneOf(Receiver& pin, bool carriesPictures) {
  const auto found = std::ranges::find(m_lanes, &pin, &Lane::pin);
  if (found != m_lanes.end()) return *found;
  return m_lanes.emplace_back(Lane{.pin = &pin, .carriesPictures = carriesPictures, .frames = {}});
}

const SegmentGate::Lane* SegmentGate::FindLane(const Receiver& pin) const noexcept {
  const auto found = std::ranges::find(m_lanes, &pin, &Lane::pin);
  return found == m_lanes.end() ? nullptr : &*found;
}

// Keeps count of what all lanes hold together while `change` works on one of them.
template <class Change>
void SegmentGate::Counted(PendingFrames& frames, Change&& change) {
  m_bytes -= frames.Bytes();
  try {
    change();
  } catch (...) {
    m_bytes += frames.Bytes();
    throw;
  }
  m_bytes += frames.Bytes();
}

bool SegmentGate::Hold(Receiver& pin, const FrameInfo& frame) {
  if (!m_holding) return false;
  std::optional<Choice> choice;
  {
    const CAutoLock hold(m_lock);
    PendingFrames& frames = LaneOf(pin, false).frames;
    Counted(frames, [&] { frames.Add(frame, m_arrivals++); });
    if (m_bytes > limits::kHeldBytes) choice = ChoiceAtBound();
  }
  if (choice) GoOnFrom(*choice);
  return true;
}

bool SegmentGate::HoldPicture(Receiver& pin, const FrameInfo& frame) {
  if (!m_holding) return false;
  std::optional<Choice> choice;
  {
    const CAutoLock hold(m_lock);
    PendingFrames& pictures = LaneOf(pin, true).frames;
    Counted(pictures, [&] {
      pictures.Add(frame, m_arrivals++);
      pictures.TrimToKeyFrameBefore(m_positions.Start());
    });
    choice = ChooseFrom(pictures);
    if (!choice && m_bytes > limits::kHeldBytes) choice = ChoiceAtBound();
  }
  if (choice) GoOnFrom(*choice);
  return true;
}

HRESULT SegmentGate::EndHolding(Receiver& pin) {
  Choice choice{};
  {
    const CAutoLock hold(m_lock);
    choice = LastChoice(FindLane(pin));
  }
  const HRESULT result = FlushPending(choice);
  if (SUCCEEDED(result)) m_holding = false;
  return result;
}

// A pin that could not deliver refuses its next frame as well, and that ends the pass.
void SegmentGate::GoOnFrom(const Choice& choice) {
  static_cast<void>(FlushPending(choice));
  m_holding = false;
}

// Two key frames show that the group of pictures before the wanted time is whole. A later frame might be
// nearer to that time as long as none is beyond it; a start at zero needs no such care.
std::optional<SegmentGate::Choice> SegmentGate::ChooseFrom(const PendingFrames& pictures) const {
  const REFERENCE_TIME wanted = m_positions.Start();
  if (!pictures.HasTwoKeyFrames()) return std::nullopt;
  REFERENCE_TIME start = 0;
  if (!pictures.PickStart(wanted, false, start) && wanted != 0) return std::nullopt;
  return Choice{start, pictures.FirstStart()};
}

// Without a picture to start with the other pins still deliver all they have.
SegmentGate::Choice SegmentGate::LastChoice(const Lane* pictures) const {
  const REFERENCE_TIME wanted = m_positions.Start();
  if (pictures == nullptr || pictures->frames.IsEmpty()) {
    return {wanted, kAllFrames};
  }
  REFERENCE_TIME start = std::min(wanted, pictures->frames.LatestStart());
  static_cast<void>(pictures->frames.PickStart(start, true, start));  // nothing found: it stays
  return {start, pictures->frames.FirstStart()};
}

// More pictures may come that are nearer to the wanted time, so that itself is the start. What comes before it is
// for decoders only. Where no picture is held yet one may still come, and needs no choice.
SegmentGate::Choice SegmentGate::ChoiceAtBound() const {
  const REFERENCE_TIME wanted = m_positions.Start();
  for (const Lane& lane : m_lanes) {
    if (!lane.carriesPictures || lane.frames.IsEmpty()) continue;
    return {std::max(wanted, lane.frames.EarliestStart()), lane.frames.FirstStart()};
  }
  return {wanted, kAllFrames};
}

// What a failed delivery leaves is gone: frames that come next go past it, and it must not follow later.
HRESULT SegmentGate::FlushPending(const Choice& choice) {
  m_positions.SetStart(choice.start);
  Lanes lanes;
  {
    const CAutoLock hold(m_lock);
    lanes.swap(m_lanes);
    m_bytes = 0;
  }
  return Release(*this, std::move(lanes), choice.firstFrame).Deliver();
}

bool SegmentGate::Holds(const Receiver& pin) const {
  const CAutoLock hold(m_lock);
  const Lane* lane = FindLane(pin);
  return lane != nullptr && !lane->frames.IsEmpty();
}

void SegmentGate::Drop(const Receiver& pin) noexcept {
  const CAutoLock hold(m_lock);
  ++m_drops;
  const auto found = std::ranges::find(m_lanes, &pin, &Lane::pin);
  if (found != m_lanes.end()) Counted(found->frames, [&] { found->frames.Clear(); });
}

void SegmentGate::Clear() noexcept {
  const CAutoLock hold(m_lock);
  m_lanes.clear();
  m_bytes = 0;
  m_holding = false;
}

}  // namespace tarvex
