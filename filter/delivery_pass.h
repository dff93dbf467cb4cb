// A delivery pass: the scanner reads from where the range starts, and each frame goes to the pin of its track. Owned by
// the worker, on which it runs.
#pragma once

#include <atomic>
#include <functional>
#include <span>
#include <utility>
#include <vector>

#include "filter/output_pins.h"
#include "filter/source.h"
#include "framework/critical_section.h"
#include "pins/output/play_positions.h"
#include "scanner/matroska_callback.h"

namespace tarvex {

class DeliveryPass final : private CMatroskaCallback {
 public:
  /// `isCommandPending` is asked with every block, and ends the pass.
  DeliveryPass(Source& source, const OutputPins& pins, PlayPositions& positions, std::function<bool()> isCommandPending)
      : m_source(source), m_pins(pins), m_positions(positions), m_isCommandPending(std::move(isCommandPending)) {}

  /// To the end of the file, which every connected pin is told; or until a command is pending or a frame is refused.
  /// S_OK, or a failure of our own, of which nobody else tells the graph.
  HRESULT Run();
  // A pass is in progress from the command for it on, until Finish.
  /// Ahead of the command, on the thread that gives it.
  void Announce() noexcept;
  bool IsInProgress() const noexcept;
  /// Makes the next block the end of the file for the pass in progress, however the pass ends, unless it is for a
  /// command. False when there is none: one that begins later knows nothing of it. Any thread.
  bool EndEarly() noexcept;
  /// Behind Run: tells the pins of an end that EndEarly made.
  void Finish();

 private:
  // CMatroskaCallback
  void OnTrack(std::uint32_t /*heapIndex*/) override {}  // read before
  bool ProcessEvents() override { return m_endsEarly || m_isCommandPending(); }
  bool OnData(const FrameInfo& frame) override;
  bool OnLace(std::span<const FrameInfo> frames) override;
  void OnComing(std::span<const FrameInfo> frames) override;

  HRESULT Deliver();
  CMatroskaOutputPin* PinOf(const FrameInfo& frame) const;
  bool GiveFrame(CMatroskaOutputPin& pin, const FrameInfo& frame);
  bool TakeEnd() noexcept;

  Source& m_source;
  const OutputPins& m_pins;
  PlayPositions& m_positions;
  const std::function<bool()> m_isCommandPending;
  mutable CCritSec m_progressLock{"DeliveryPass", LockRank::kLeaf};
  bool m_inProgress = false;             // under the lock
  std::atomic<bool> m_endsEarly{false};  // written under the lock
  HRESULT m_failure = S_OK;              // what ended the pass, if the graph is to know it
  std::vector<std::size_t> m_coming;     // sizes of one pin's frames; kept for its room
};

}  // namespace tarvex
