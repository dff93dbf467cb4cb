// A filter with one input pin that stands at the end of a test graph: it takes any media type, writes
// down what reaches it, and can be slow, hold samples, block or refuse. A test owns it through ComPtr
// and reads its record from any thread.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "framework/event.h"
#include "tests/support/plain_filter.h"

namespace tarvex::test {

enum class SinkKind {
  kRecording,  ///< takes and writes down every sample
  kCounting,   ///< the same without checksums
  kForgetful,  ///< only counts, and so needs no memory for what it gets
  kSlow,       ///< takes a few milliseconds for each
  kHolding,    ///< keeps samples until it is stopped, flushed or told to let go
  kBlocking    ///< stays in Receive until it is stopped or flushed
};
const char* NameOf(SinkKind kind);

/// What each frame of a film that is made for a test begins with.
struct FrameOrigin {
  std::uint64_t track = 0;
  REFERENCE_TIME time = 0;  ///< in the file
};

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
  FrameOrigin origin = {};  ///< of a sample that is large enough for it
  std::string sha1 = {};    ///< empty unless the sink records
};

/// What a sink can be told to refuse.
enum class SinkCall { kConnection, kAllocator, kSample, kNewSegment, kEndOfStream, kBeginFlush, kEndFlush };

class SinkFilter;

class SinkPin : public PlainPin, public IMemInputPin {
 public:
  explicit SinkPin(SinkFilter& sink);

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
  ULONG STDMETHODCALLTYPE AddRef() override { return PlainPin::AddRef(); }
  ULONG STDMETHODCALLTYPE Release() override { return PlainPin::Release(); }

  HRESULT STDMETHODCALLTYPE Connect(IPin* /*pReceivePin*/, const AM_MEDIA_TYPE* /*pmt*/) override {
    return E_UNEXPECTED;
  }
  HRESULT STDMETHODCALLTYPE ReceiveConnection(IPin* pConnector, const AM_MEDIA_TYPE* pmt) override;
  HRESULT STDMETHODCALLTYPE EndOfStream() override;
  HRESULT STDMETHODCALLTYPE BeginFlush() override;
  HRESULT STDMETHODCALLTYPE EndFlush() override;
  HRESULT STDMETHODCALLTYPE NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate) override;

  /// What it was notified of; VFW_E_NO_ALLOCATOR before.
  HRESULT STDMETHODCALLTYPE GetAllocator(IMemAllocator** ppAllocator) override;
  HRESULT STDMETHODCALLTYPE NotifyAllocator(IMemAllocator* pAllocator, BOOL bReadOnly) override;
  HRESULT STDMETHODCALLTYPE GetAllocatorRequirements(ALLOCATOR_PROPERTIES* /*pProps*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Receive(IMediaSample* pSample) override;
  HRESULT STDMETHODCALLTYPE ReceiveMultiple(IMediaSample** pSamples, LONG nSamples, LONG* nSamplesProcessed) override;
  HRESULT STDMETHODCALLTYPE ReceiveCanBlock() override { return S_OK; }

  bool IsFlushing() const noexcept { return m_isFlushing; }
  bool IsReadOnly() const noexcept { return m_isReadOnly; }

 protected:
  void Begin() override;
  void End() override;

 private:
  friend class SinkFilter;
  SinkFilter& m_sink;
  ComPtr<IMemAllocator> m_allocator;
  std::atomic<bool> m_isReadOnly{false};
  std::atomic<bool> m_isFlushing{false};
};

class SinkFilter : public PlainFilter {
 public:
  static ComPtr<SinkFilter> Create(SinkKind kind) { return ComPtr<SinkFilter>(new SinkFilter(kind)); }

  SinkPin* Pin() noexcept { return &m_pin; }

  std::vector<SinkEvent> Events();
  std::vector<SinkEvent> Samples();
  std::size_t CountOf(SinkEvent::Kind kind);
  /// What came behind an end of stream without a flush or a new start in between: nothing may.
  int AfterEnd() const noexcept { return m_afterEnd; }
  /// The last that came is an end of stream, and no flush or new start since.
  bool IsOver() const noexcept { return m_isOver; }
  /// Forgets what was written down.
  void Clear();

  /// Until the end of the stream has reached the pin, without a flush since.
  bool WaitForEnd(DWORD milliseconds) { return m_ended.Wait(milliseconds); }
  /// Until the first sample has reached the pin.
  bool WaitForSample(DWORD milliseconds) { return m_sampled.Wait(milliseconds); }
  /// A holding sink gives all its samples back.
  void LetGo();
  /// Asked ahead of every call, on the caller's thread; a failure is the answer, and of a sample S_FALSE as well. To be
  /// set before anybody calls.
  void BeforeEachCall(std::function<HRESULT(SinkCall)> call) { m_fault = std::move(call); }
  /// Called in Receive, on the thread that delivers, after the sample was written down.
  void OnSample(std::function<void(IMediaSample*)> call) { m_onSample = std::move(call); }
  /// The same as OnSample; the answer is Receive's.
  void AnswerWith(std::function<HRESULT(IMediaSample*)> call) { m_answer = std::move(call); }

 private:
  friend class SinkPin;
  explicit SinkFilter(SinkKind kind) : PlainFilter(LockRank::kLastFilter), m_kind(kind) {}
  PlainPin& OnlyPin() noexcept override { return m_pin; }
  void BeforeStop() override { Unblock(); }
  HRESULT Ask(SinkCall call) { return m_fault ? m_fault(call) : S_OK; }
  HRESULT Take(IMediaSample* sample);
  bool Record(SinkEvent event, bool passesFlush = true);
  void Unblock();

  const SinkKind m_kind;
  CCritSec m_recordLock{"SinkFilter record", LockRank::kVisited};
  std::vector<SinkEvent> m_events;           // under m_recordLock
  std::array<std::size_t, 5> m_counts{};     // under m_recordLock
  std::vector<ComPtr<IMediaSample>> m_held;  // under m_recordLock
  std::function<HRESULT(SinkCall)> m_fault;
  std::function<void(IMediaSample*)> m_onSample;
  std::function<HRESULT(IMediaSample*)> m_answer;
  std::atomic<bool> m_isOver{false};  // since an end of stream
  std::atomic<int> m_afterEnd{0};
  Event m_ended{Event::Mode::kManual};
  Event m_sampled{Event::Mode::kManual};
  Event m_released{Event::Mode::kManual};  // ends Receive of a blocking sink
  SinkPin m_pin{*this};
};

}  // namespace tarvex::test
