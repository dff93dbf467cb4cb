// What the scanner asks of its owner. The filter implements it: OnTrack runs on the connecting thread while a file is
// opened, the others on the worker thread during delivery.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

#include "scanner/frames/frame_info.h"

namespace tarvex {

class CMatroskaCallback {
 public:
  /// One track entry was read; `heapIndex` counts from 0 in file order. May throw MessageError to
  /// refuse the file.
  virtual void OnTrack(std::uint32_t heapIndex) = 0;

  /// True: a command is pending, stop delivering now.
  virtual bool ProcessEvents() = 0;

  /// Takes one frame. The bytes are valid during the call only. False stops delivery.
  virtual bool OnData(const FrameInfo& frame) = 0;

  /// Takes the frames of one block, as OnData takes each. False: one was refused, and those behind it were not
  /// looked at.
  virtual bool OnLace(std::span<const FrameInfo> frames) {
    return std::ranges::all_of(frames, [this](const FrameInfo& frame) { return OnData(frame); });
  }

  /// These frames of any tracks come next, in this order, unless delivery stops.
  virtual void OnComing(std::span<const FrameInfo> /*frames*/) {}

 protected:
  CMatroskaCallback() = default;
  CMatroskaCallback(const CMatroskaCallback&) = default;
  CMatroskaCallback& operator=(const CMatroskaCallback&) = default;
  ~CMatroskaCallback() = default;  // never owned through this interface
};

}  // namespace tarvex
