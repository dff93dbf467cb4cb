// The end of a stream in a measurement: a filter with one input pin that takes every media type, touches
// two bytes of each sample, counts it and lets it go. Owned through ComPtr by the playback.
#pragma once

#include <cstdint>

#include "benchmarks/play/play_monitor.h"
#include "framework/base_filter.h"
#include "framework/base_input_pin.h"
#include "framework/event.h"
#include "framework/owned_pin.h"

namespace tarvex::bench {

/// What a sink does with its first sample after a start or a flush: takes it like all others, or keeps
/// it as a paused renderer does, until it is flushed or stopped.
enum class SinkManner { kFlowing, kHolding };

/// What one pin received. The streaming thread's until the end of the stream or a stop.
struct SinkCount {
  std::uint64_t samples = 0;
  std::uint64_t bytes = 0;
  // The memory that the samples lay in.
  const BYTE* lowest = nullptr;
  const BYTE* behindHighest = nullptr;
};

class CountingSinkPin;

class CountingSink : public CBaseFilter {
 public:
  /// The monitor must outlive this.
  CountingSink(PlayMonitor& monitor, SinkManner manner);
  ~CountingSink() override;

  int GetPinCount() override { return 1; }
  CBasePin* GetPin(int index) override;
  HRESULT STDMETHODCALLTYPE Stop() override;

  IPin* Input() const noexcept;
  const SinkCount& Count() const noexcept;

 private:
  CCritSec m_filterLock{"CountingSink", LockRank::kLastFilter};
  OwnedPin<CountingSinkPin> m_pin;
};

class CountingSinkPin : public CBaseInputPin {
 public:
  CountingSinkPin(CountingSink* filter, CCritSec* lock, PlayMonitor& monitor, SinkManner manner);

  const SinkCount& Count() const noexcept { return m_count; }
  /// A held sample is let go.
  void LetGo() { m_released.Set(); }

  HRESULT CheckMediaType(const CMediaType* type) override;
  HRESULT Active() override;

  HRESULT STDMETHODCALLTYPE Receive(IMediaSample* pSample) override;
  /// So that the splitter's queue has a thread, as with every renderer.
  HRESULT STDMETHODCALLTYPE ReceiveCanBlock() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE EndOfStream() override;
  HRESULT STDMETHODCALLTYPE BeginFlush() override;
  HRESULT STDMETHODCALLTYPE EndFlush() override;

 private:
  void Take(IMediaSample* sample);
  void Begin();

  PlayMonitor& m_monitor;
  const SinkManner m_manner;
  SinkCount m_count;
  unsigned m_touched = 0;  // so that the bytes are really read
  std::atomic<bool> m_isFirst{true};
  Event m_released{Event::Mode::kManual};
};

}  // namespace tarvex::bench
