// Counts what passes through or ends at one of the host's filters. Written on the pin's streaming thread,
// read at any time by the play command.
#pragma once

#include <atomic>
#include <cstdint>

#include "host/sample_observer.h"

namespace tarvex::host {

class CStreamCounter : public SampleObserver {
 public:
  void OnSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override;
  void OnSample(const SampleView& sample) override;
  void OnEndOfStream() override {}

  std::uint64_t Samples() const noexcept { return m_samples; }
  std::uint64_t Bytes() const noexcept { return m_bytes; }
  /// Time in the file up to which samples have come, 100 ns units.
  std::int64_t Position() const noexcept { return m_position; }
  /// From the start of the earliest sample to that position.
  std::int64_t Span() const noexcept;

 private:
  std::atomic<std::uint64_t> m_samples{0};
  std::atomic<std::uint64_t> m_bytes{0};
  std::atomic<std::int64_t> m_segmentStart{0};
  std::atomic<std::int64_t> m_first{0};
  std::atomic<std::int64_t> m_position{0};
  std::atomic<bool> m_timed{false};
};

}  // namespace tarvex::host
