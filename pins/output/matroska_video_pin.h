// The output pin of a video track. It decides where a segment starts: from every start and seek on all pins
// hold their frames until it has a key frame to start with. It also gives H.264 start codes where the
// connection asks for them. Made by pin creation.
#pragma once

#include <atomic>
#include <optional>

#include "pins/output/annex_b_converter.h"
#include "pins/output/matroska_output_pin.h"

namespace tarvex {

class CMatroskaVideoPin : public CMatroskaOutputPin {
 public:
  /// See CMatroskaOutputPin.
  CMatroskaVideoPin(CBaseFilter* filter, CCritSec* lock, PinHost* host, HRESULT* result, const WideString& name);

  bool OnData(const FrameInfo& frame) override;
  HRESULT Active() override;
  void EndHolding() override;
  /// Also releases what all pins hold, since no frame will come to choose a start by. A failure of that
  /// is returned, and the end is not sent.
  HRESULT DeliverEndOfStream() override;

 protected:
  /// Frames come in decoding order: only one that starts after the stop is past it, and only when some
  /// frame has reached the stop.
  bool IsPastStop(const FrameInfo& frame) override;
  /// Drops what no decoder can use before the first key frame. Releases all pins once the start is chosen.
  bool HoldFrame(const FrameInfo& frame) override;
  /// Also makes all pins hold. Nobody holds for a pin without a connection: it gets no frames.
  void ResetForSeek() override;

 private:
  /// Where the new segment starts and which held frame is its first; times of the file.
  struct SegmentChoice {
    REFERENCE_TIME start;
    REFERENCE_TIME firstFrame;
  };
  std::optional<SegmentChoice> AddHeld(const FrameInfo& frame, REFERENCE_TIME wanted);
  std::optional<SegmentChoice> LastChoice(REFERENCE_TIME wanted) const;
  HRESULT ReleaseWithLastChoice();

  // Written under the stream lock.
  std::atomic<bool> m_waitForKeyFrame{true};
  std::atomic<bool> m_stopReached{false};

  std::optional<CAnnexBConverter> m_annexB;  // made while there is no worker, then the worker's
};

}  // namespace tarvex
