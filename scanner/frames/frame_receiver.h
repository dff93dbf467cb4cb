// Takes frames as they are found. Implemented by the scanner; called on the worker thread.
#pragma once

#include <span>

#include "scanner/frames/frame_info.h"

namespace tarvex {

class FrameReceiver {
 public:
  /// True: stop.
  virtual bool EventsPending() const = 0;
  /// These frames of any tracks come next, in this order, unless delivery stops.
  virtual void OnComing(std::span<const FrameInfo> frames) = 0;
  /// The frames of a block. The bytes are valid during the call only. False: stop.
  virtual bool OnFrames(std::span<const FrameInfo> frames) = 0;

 protected:
  FrameReceiver() = default;
  FrameReceiver(const FrameReceiver&) = default;
  FrameReceiver& operator=(const FrameReceiver&) = default;
  ~FrameReceiver() = default;  // never owned through this interface
};

}  // namespace tarvex
