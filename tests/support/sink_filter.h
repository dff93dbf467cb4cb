// A filter with one input pin that stands at the end of a test graph: it takes any media type, writes
// down what reaches it, and can be slow, hold samples, block or refuse. A test owns it through ComPtr
// and reads its record from any thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "framework/base_filter.h"
#include "framework/base_input_pin.h"
#include "framework/event.h"
#include "framework/owned_pin.h"

namespace tarvex::test {

enum class SinkKind {
  kRecording,  ///< takes and writes down every sample
  kCounting,   ///< the same without checksums
  kSlow,       ///< takes a few milliseconds for each
  kHolding,    ///< keeps samples until it is stopped, flushed or told to let go
  kBlocking,   ///< stays in Receive until it is stopped or flushed
  kRefusing    ///< answers VFW_E_SAMPLE_REJECTED
};
inline constexpr SinkKind kAllSinkKinds[] = {SinkKind::kRecording, SinkKind::kSlow, SinkKind::kHolding,
                                             SinkKind::kBlocking};
const char* NameOf(SinkKind kind);

/// One thing that reached a sink, in order.
struct SinkEvent {
  enum class Kind { kNewSegment, kSample, kEndOfStream, kBeginFlush, kEndFlush };
  Kind kind = Kind::kSample;
  REFERENCE_TIME start = 0;  ///< of the sample or segment, 100 ns units
  REFERENCE_TIME stop = 0;
  double rate = 0;
  bool key = false;
  bool discontinuity = false;
  bool preroll = false;
  std::uint32_t size = 0;
  std::string sha1 = {};  ///< empty unless the sink records
};

class SinkPin;

class SinkFilter : public CBaseFilter {
 public:
  static ComPtr<SinkFilter> Create(SinkKind kind);
  ~SinkFilter() override;

  int GetPinCount() override { return 1; }
  CBasePin* GetPin(int index) override;
  HRESULT STDMETHODCALLTYPE Stop() override;

  SinkPin* Pin() const noexcept { return m_pin.Get(); }
  SinkKind Kind() const noexcept { return m_kind; }

  std::vector<SinkEvent> Events();
  std::vector<SinkEvent> Samples();
  std::size_t CountOf(SinkEvent::Kind kind);
  /// What came behind an end of stream without a flush or a new start in between: nothing may.
  int AfterEnd() const noexcept { return m_afterEnd; }
  /// Forgets what was written down.
  void Clear();

  /// Until the end of the stream has reached the pin, without a flush since.
  bool WaitForEnd(DWORD milliseconds) { return m_ended.Wait(milliseconds); }
  /// Until the first sample has reached the pin.
  bool WaitForSample(DWORD milliseconds) { return m_sampled.Wait(milliseconds); }
  /// A holding sink gives all its samples back.
  void LetGo();
  /// Called in Receive, on the thread that delivers, after the sample was written down.
  void OnSample(std::function<void(IMediaSample*)> call) { m_onSample = std::move(call); }
  /// Called in BeginFlush, before the pin begins to flush.
  void BeforeFlush(std::function<void()> call) { m_beforeFlush = std::move(call); }
  /// The same as OnSample; the answer is Receive's.
  void AnswerWith(std::function<HRESULT(IMediaSample*)> call) { m_answer = std::move(call); }

 private:
  friend class SinkPin;
  explicit SinkFilter(SinkKind kind);
  HRESULT Take(IMediaSample* sample);
  void Record(SinkEvent event);
  bool RecordUnlessFlushing(SinkEvent event);
  void End();
  void Begin() { m_isOver = false; }
  void Arrive() { m_afterEnd += m_isOver ? 1 : 0; }
  void Unblock();
  void Block();

  const SinkKind m_kind;
  CCritSec m_filterLock{"SinkFilter", LockRank::kLastFilter};
  CCritSec m_recordLock{"SinkFilter record", LockRank::kVisited};
  std::vector<SinkEvent> m_events;           // under m_recordLock
  bool m_isFlushing = false;                 // under m_recordLock
  std::vector<ComPtr<IMediaSample>> m_held;  // under m_recordLock
  std::function<void(IMediaSample*)> m_onSample;
  std::function<HRESULT(IMediaSample*)> m_answer;
  std::function<void()> m_beforeFlush;
  std::atomic<bool> m_isOver{false};  // since an end of stream
  std::atomic<int> m_afterEnd{0};
  Event m_ended{Event::Mode::kManual};
  Event m_sampled{Event::Mode::kManual};
  Event m_released{Event::Mode::kManual};  // ends Receive of a blocking sink
  OwnedPin<SinkPin> m_pin;
};

class SinkPin : public CBaseInputPin {
 public:
  explicit SinkPin(SinkFilter* filter, CCritSec* lock);

  HRESULT CheckMediaType(const CMediaType* type) override;
  HRESULT Active() override;
  HRESULT Inactive() override;

  HRESULT STDMETHODCALLTYPE Receive(IMediaSample* pSample) override;
  HRESULT STDMETHODCALLTYPE ReceiveCanBlock() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE NotifyAllocator(IMemAllocator* pAllocator, BOOL bReadOnly) override {
    return m_refuseAllocators ? E_ACCESSDENIED : CBaseInputPin::NotifyAllocator(pAllocator, bReadOnly);
  }
  HRESULT STDMETHODCALLTYPE EndOfStream() override;
  HRESULT STDMETHODCALLTYPE BeginFlush() override;
  HRESULT STDMETHODCALLTYPE EndFlush() override;
  HRESULT STDMETHODCALLTYPE NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate) override;

  /// Between a begin-flush and its end-flush.
  bool IsFlushing() const noexcept { return m_bFlushing; }
  /// From now on no media type is good enough.
  void RefuseTypes() { m_refuseTypes = true; }
  /// From now on no allocator is.
  void RefuseAllocators() { m_refuseAllocators = true; }

 private:
  SinkFilter& m_sink;
  std::atomic<bool> m_refuseTypes{false};
  std::atomic<bool> m_refuseAllocators{false};
};

}  // namespace tarvex::test
