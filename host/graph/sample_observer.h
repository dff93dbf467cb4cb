// Gets told of the stream that passes through the host's own filters. Implemented by the commands; called on the
// streaming thread of one pin, one call at a time.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "framework/platform/platform.h"

namespace tarvex::host {

/// One sample as it is received. A view: valid during the call.
struct SampleView {
  std::optional<REFERENCE_TIME> start;  ///< 100 ns units; absent when the sample has no times
  std::optional<REFERENCE_TIME> stop;
  bool sync = false;
  bool discontinuity = false;
  bool preroll = false;
  bool typeChange = false;
  std::span<const std::uint8_t> data;
};

class SampleObserver {
 public:
  SampleObserver() = default;
  virtual ~SampleObserver() = default;
  SampleObserver(const SampleObserver&) = delete;
  SampleObserver& operator=(const SampleObserver&) = delete;

  // What an implementation throws fails the delivery of that sample.
  virtual void OnSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) = 0;
  virtual void OnSample(const SampleView& sample) = 0;
  virtual void OnEndOfStream() = 0;
  /// After a flush or a stop. What comes next does not continue what came before, and an end of stream that came no
  /// longer counts. On any thread.
  virtual void OnRestart() noexcept {}
};

/// Reads the properties of a sample. The view is valid as long as the sample.
SampleView ViewSample(IMediaSample* sample);

}  // namespace tarvex::host
