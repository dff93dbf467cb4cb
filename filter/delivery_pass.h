// A delivery pass: the scanner reads from where the range starts, and each frame goes to the pin of its track. Owned by
// the worker, on which it runs.
#pragma once

#include <atomic>
#include <functional>
#include <span>
#include <utility>

#include "filter/output_pins.h"
#include "filter/source.h"
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
  /// Makes the next block the end of the file for the pass in progress. One that begins later knows nothing of it. Any
  /// thread.
  void EndEarly() noexcept { m_endsEarly = true; }

 private:
  // CMatroskaCallback
  void OnTrack(std::uint32_t /*heapIndex*/) override {}  // read before
  bool ProcessEvents() override { return m_endsEarly || m_isCommandPending(); }
  bool OnData(const FrameInfo& frame) override;
  bool OnLace(std::span<const FrameInfo> frames) override;

  HRESULT Deliver();
  CMatroskaOutputPin* PinOf(const FrameInfo& frame) const;
  bool GiveFrame(CMatroskaOutputPin& pin, const FrameInfo& frame);

  Source& m_source;
  const OutputPins& m_pins;
  PlayPositions& m_positions;
  const std::function<bool()> m_isCommandPending;
  std::atomic<bool> m_endsEarly{false};
  HRESULT m_failure = S_OK;  // what ended the pass, if the graph is to know it
};

}  // namespace tarvex
