// Counts what passes through or ends at one of the host's filters. Written on the pin's streaming thread,
// read at any time by the player.
#pragma once

#include <atomic>
#include <cstdint>

#include "host/graph/sample_observer.h"

namespace tarvex::host {

class StreamCounter : public SampleObserver {
 public:
  void OnSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override;
  void OnSample(const SampleView& sample) override;
  void OnEndOfStream() override { m_ended = true; }
  void OnRestart() noexcept override;

  // All that ever came.
  std::uint64_t Samples() const noexcept { return m_samples; }
  std::uint64_t Bytes() const noexcept { return m_bytes; }
  /// Time of the file that it covers, 100 ns units: in each segment from the first sample's start to the
  /// last one's end.
  std::int64_t Span() const noexcept { return m_earlierSpan + m_position - m_first; }

  // Since the last seek or start.
  bool HasSamples() const noexcept { return m_hasSamples; }
  bool HasEnded() const noexcept { return m_ended; }
  /// Time in the file up to which samples have come, 100 ns units; 0 before the first.
  std::int64_t Position() const noexcept { return m_hasSamples ? m_position.load() : 0; }

 private:
  std::atomic<std::uint64_t> m_samples{0};
  std::atomic<std::uint64_t> m_bytes{0};
  std::atomic<std::int64_t> m_segmentStart{0};
  std::atomic<std::int64_t> m_earlierSpan{0};
  std::atomic<std::int64_t> m_first{0};     // of this segment
  std::atomic<std::int64_t> m_position{0};  // of this segment
  std::atomic<bool> m_timed{false};         // this segment had a sample with a time
  std::atomic<bool> m_hasSamples{false};
  std::atomic<bool> m_ended{false};
};

}  // namespace tarvex::host
