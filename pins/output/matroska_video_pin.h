// The output pin of a video track. From every start and seek on it makes all pins hold their frames, and its own
// pictures decide where the segment starts. It also gives H.264 start codes where the connection asks for them.
// Made by pin creation, owned by the filter; threads as in the base.
#pragma once

#include <atomic>
#include <optional>
#include <span>

#include "pins/output/annex_b_converter.h"
#include "pins/output/matroska_output_pin.h"

namespace tarvex {

class CMatroskaVideoPin : public CMatroskaOutputPin {
 public:
  /// See CMatroskaOutputPin.
  CMatroskaVideoPin(const SharedByPins& shared, const WideString& name);

  bool OnData(const FrameInfo& frame) override;
  /// Frames that are rewritten have other sizes.
  void Reserve(std::span<const std::size_t> sizes) override;
  HRESULT Active() override;
  /// Also releases what all pins hold, since no frame will come to choose a start by. A failure of that
  /// is returned, and the end is not sent.
  HRESULT DeliverEndOfStream() override;

 protected:
  /// Frames come in decoding order: only one that starts after the stop is past it, and only when some
  /// frame has reached the stop.
  bool IsPastStop(const FrameInfo& frame) override;
  /// Drops what no decoder can use before the first key frame. Lets all pins go once the start is chosen.
  bool HoldFrame(const FrameInfo& frame) override;
  /// Also makes all pins hold. Nobody holds for a pin without a connection: it gets no frames.
  void ResetForSeek() override;

  /// What comes next may need the pictures that were lost.
  void OnHeldLost() override { WaitForKeyFrame(); }

 private:
  void WaitForKeyFrame();

  // Written under the stream lock.
  std::atomic<bool> m_waitForKeyFrame{true};
  std::atomic<bool> m_stopReached{false};

  std::optional<AnnexBConverter> m_annexB;  // made while there is no worker, then the worker's
};

}  // namespace tarvex
