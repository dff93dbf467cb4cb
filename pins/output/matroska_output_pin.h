// The output pin that carries one track: negotiates its one media type, turns frames into samples on the
// worker, and passes them on through a queue with a thread of its own. Made by pin creation, owned by the
// filter; also held by applications, which seek through it.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "framework/base_output_pin.h"
#include "framework/critical_section.h"
#include "framework/output_queue.h"
#include "pins/formats/track_pin_info.h"
#include "pins/output/pin_host.h"
#include "pins/output/sample_buffer.h"
#include "pins/output/segment_gate.h"
#include "scanner/frames/frame_info.h"

namespace tarvex {

/// The pin was never activated, or has been deactivated.
inline constexpr HRESULT kNoQueue = E_UNEXPECTED;

/// Waits here: the worker in OnData and where held frames are delivered, for room in the sample buffer (see there).
///
/// The host is asked only while the filter that is the host is sure to live: by the worker and other
/// calls of the filter, and by applications' calls after HoldFilter. Once the pin has left its filter,
/// those answer VFW_E_NOT_CONNECTED.
class CMatroskaOutputPin : public CBaseOutputPin, public IMediaSeeking, protected SegmentGate::Receiver {
 public:
  ~CMatroskaOutputPin() override;

  // IUnknown of both interfaces.
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    return Owner()->QueryInterface(iid, out);
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return Owner()->AddRef(); }
  ULONG STDMETHODCALLTYPE Release() override { return Owner()->Release(); }

  /// Takes one frame of this pin's track, with a time of the file. True: delivered, held back or dropped
  /// on purpose. False: refused, the reason is in the log. Worker only. Throws MessageError for a frame
  /// that is larger than the sample buffer, std::bad_alloc.
  virtual bool OnData(const FrameInfo& frame);
  /// These frames come next: samples for them are taken in one go, as far as there is room. Worker only.
  /// Throws std::bad_alloc.
  void Reserve(std::span<const FrameInfo> frames);

 protected:
  /// Drops, holds or delivers the frame. Throws as OnData does.
  virtual HRESULT ProcessFrame(const FrameInfo& frame);
  /// The frame comes after the end; sends the end of stream if it is the first that does.
  virtual bool IsPastStop(const FrameInfo& frame);
  /// The frame needs no delivery now: it was held back or dropped.
  virtual bool HoldFrame(const FrameInfo& frame);
  /// Makes the queue for the connected peer. Filter lock held.
  virtual HRESULT CreateOutputQueue();
  /// What comes next is the first of a new segment, and no end of stream was sent.
  virtual void ResetForSeek();
  /// A sample of exactly `size` bytes, with a reference; waits for room. VFW_E_NO_ALLOCATOR and what
  /// CSampleBuffer::GetSample answers and throws.
  virtual HRESULT GetDeliveryBuffer(IMediaSample** sample, std::size_t size);
  using CBaseOutputPin::GetDeliveryBuffer;

 public:
  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) override;
  /// Also lets another pin become the one that seeks.
  HRESULT STDMETHODCALLTYPE Disconnect() override;

  // Connection; filter lock held.
  /// S_OK for the track's own type, S_FALSE for every other.
  HRESULT CheckMediaType(const CMediaType* type) override;
  HRESULT GetMediaType(int position, CMediaType* type) override;
  /// Always a sample buffer of our own, read-only for the peer, whatever the peer offers or asks for.
  HRESULT DecideAllocator(IMemInputPin* peer, IMemAllocator** allocator) override;
  HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override;
  HRESULT BreakConnect() override;
  HRESULT Active() override;
  HRESULT Inactive() override;

  // Delivery, all through the queue. Without one nothing happens, and Deliver answers VFW_E_WRONG_STATE.
  /// Unlike the base's takes over the caller's reference on the sample, in any case, as the queue does.
  HRESULT Deliver(IMediaSample* sample) override;
  /// At most once until ResetForSeek; behind the frames that are held back.
  HRESULT DeliverEndOfStream() override;
  /// Ends a wait for room as well.
  HRESULT DeliverBeginFlush() override;
  /// Also drops the held frames. The worker must not be in OnData.
  HRESULT DeliverEndFlush() override;
  /// Behind the queued samples, which belong to the segment before.
  HRESULT DeliverNewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override;

  // For the filter.
  /// Gives the pin its stream, or another. VFW_E_ALREADY_CONNECTED while connected; E_OUTOFMEMORY.
  HRESULT SetTrack(const TrackPinInfo& track);
  /// The form that an H.264 pin offers from its next connection on; nothing on other pins.
  void SetH264Form(bool byteStream);
  /// A copy of the stream's record. Any thread.
  TrackPinInfo Track() const;
  // From the record, without a copy: for every frame. Any thread.
  std::uint32_t TrackNumber() const noexcept { return m_trackNumber; }
  std::uint32_t TrackType() const noexcept { return m_trackType; }
  /// Why OnData answered false, if nobody but us can tell the graph: kNoQueue, or what kept us from making a sample.
  /// S_OK where downstream refused, which tells the graph itself, and where it stops. Worker only.
  HRESULT OwnFailure() const noexcept { return m_ownFailure; }
  /// Null while inactive or unconnected. Any thread.
  std::shared_ptr<COutputQueue> Queue() const;
  /// The queue passes on all there is, since the worker is about to wait, or done. Worker only.
  void BeforeWait();
  /// While on, the worker fails where it would wait for room, a wait in progress included.
  void CancelWaits(bool on);
  /// Drops all held frames. An end of stream that waited behind them was not sent.
  void DropHeld();
  void StoreTimeFormat(const GUID& format);

  // IMediaSeeking. The positions are the filter's. Any thread. E_POINTER for a null argument where the
  // table of the interface does not allow it; VFW_E_NOT_CONNECTED after leaving the filter.
  HRESULT STDMETHODCALLTYPE GetCapabilities(DWORD* pCapabilities) override;
  HRESULT STDMETHODCALLTYPE CheckCapabilities(DWORD* pCapabilities) override;
  HRESULT STDMETHODCALLTYPE IsFormatSupported(const GUID* pFormat) override;
  HRESULT STDMETHODCALLTYPE QueryPreferredFormat(GUID* pFormat) override;
  HRESULT STDMETHODCALLTYPE GetTimeFormat(GUID* pFormat) override;
  HRESULT STDMETHODCALLTYPE IsUsingTimeFormat(const GUID* pFormat) override;
  /// For all pins of the filter. E_FAIL for a format that is not supported.
  HRESULT STDMETHODCALLTYPE SetTimeFormat(const GUID* pFormat) override;
  HRESULT STDMETHODCALLTYPE GetDuration(LONGLONG* pDuration) override;
  HRESULT STDMETHODCALLTYPE GetStopPosition(LONGLONG* pStop) override;
  /// E_NOTIMPL: only renderers know.
  HRESULT STDMETHODCALLTYPE GetCurrentPosition(LONGLONG* pCurrent) override;
  HRESULT STDMETHODCALLTYPE ConvertTimeFormat(LONGLONG* pTarget, const GUID* pTargetFormat, LONGLONG Source,
                                              const GUID* pSourceFormat) override;
  /// Only the first connected pin that asks moves the positions; every other answers S_OK and does
  /// nothing. The mode of the current position governs the stop position too. A null position is left as
  /// it is.
  HRESULT STDMETHODCALLTYPE SetPositions(LONGLONG* pCurrent, DWORD dwCurrentFlags, LONGLONG* pStop,
                                         DWORD dwStopFlags) override;
  HRESULT STDMETHODCALLTYPE GetPositions(LONGLONG* pCurrent, LONGLONG* pStop) override;
  HRESULT STDMETHODCALLTYPE GetAvailable(LONGLONG* pEarliest, LONGLONG* pLatest) override;
  HRESULT STDMETHODCALLTYPE SetRate(double dRate) override;
  HRESULT STDMETHODCALLTYPE GetRate(double* pdRate) override;
  HRESULT STDMETHODCALLTYPE GetPreroll(LONGLONG* pllPreroll) override;

 protected:
  enum class Kind { kVideo, kOther };

  /// `filter`, `lock` (the filter's) and `host` are not counted. `*result` receives a failure.
  CMatroskaOutputPin(const char* objectName, Kind kind, CBaseFilter* filter, CCritSec* lock, PinHost* host,
                     HRESULT* result, const WideString& name);

 private:
  enum class EndOfStreamState { kOpen, kBehindHeld, kSent };

  /// Where a sample comes from and goes to.
  struct Route {
    std::shared_ptr<COutputQueue> queue;
    ComPtr<CSampleBuffer> buffer;
  };

  // Delivery, on the worker.
  const Route& CurrentRoute() {
    if (!m_route.queue || m_routeChanged.load(std::memory_order_acquire)) LookUpRoute();
    return m_route;
  }
  void LookUpRoute();
  HRESULT DeliverFrameSample(const std::uint8_t* data, std::size_t size, REFERENCE_TIME start, REFERENCE_TIME duration,
                             bool splice);
  HRESULT DeliverRelative(const FrameInfo& frame);
  bool IsDroppedAsEarly(REFERENCE_TIME start, REFERENCE_TIME stop) const;
  static HRESULT FillSample(IMediaSample& sample, const std::uint8_t* data, std::size_t size);
  void ReserveFrom(CSampleBuffer& buffer, std::span<const FrameInfo> frames);
  bool HasRoomFor(const FrameInfo& frame);
  bool TakeReserved(IMediaSample** sample, std::size_t size);
  void DropReserved();
  bool StartSegment(IMediaSample& sample);
  HRESULT Send(ComPtr<IMediaSample> sample, bool isFirst);
  HRESULT SendUnsent();
  ComPtr<CSampleBuffer> Buffer() const;
  void ExchangeQueue(std::shared_ptr<COutputQueue> queue);

  // Seeking.
  GUID TimeFormat() const;
  HRESULT FromMediaTime(LONGLONG& target, REFERENCE_TIME time);
  HRESULT ToMediaTime(REFERENCE_TIME& time, LONGLONG source);
  void ClampToDuration(REFERENCE_TIME& time, LONGLONG& callers);

  PinHost* const m_host;
  const Kind m_kind;

  // Guards what streaming threads share with those that activate, flush and connect. Taken after the
  // filter's locks; never held across a wait or a call downstream.
  mutable CCritSec m_streamLock{"CMatroskaOutputPin stream", LockRank::kPinStream};
  // Null while inactive or unconnected. Shared with calls in progress; a queue that is let go passes on
  // nothing more.
  std::shared_ptr<COutputQueue> m_pOutputQ;
  ComPtr<CSampleBuffer> m_sampleBuffer;  // null while unconnected

 protected:
  PinHost& Host() const noexcept { return *m_host; }
  CCritSec& StreamLock() const noexcept { return m_streamLock; }
  bool IsEndOfStreamSent() const noexcept { return m_endOfStream != EndOfStreamState::kOpen; }

  // SegmentGate::Receiver
  HRESULT DeliverHeld(const FrameInfo& frame) override;
  std::optional<HRESULT> TryDeliverHeld(const FrameInfo& frame) override;
  void OnHeldDelivered() override;
  void OnHeldLost() override {}

 private:
  HRESULT m_ownFailure = S_OK;  // the worker's
  // The worker's, until it has to wait.
  Route m_route;
  std::vector<ComPtr<IMediaSample>> m_unsent;    // on the way to the route's queue
  std::vector<ComPtr<IMediaSample>> m_reserved;  // for the next frames, from m_nextReserved on
  std::size_t m_nextReserved = 0;
  std::vector<std::size_t> m_sizes;  // of those; kept for its room
  // Written under the stream lock.
  std::atomic<bool> m_routeChanged{true};
  std::atomic<bool> m_discontinuityPending{true};
  std::atomic<EndOfStreamState> m_endOfStream{EndOfStreamState::kOpen};

  // A leaf. The record changes while the pin is unconnected, the format at any time.
  mutable CCritSec m_recordLock{"CMatroskaOutputPin record", LockRank::kLeaf};
  TrackPinInfo m_track;
  GUID m_timeFormat;
  std::atomic<std::uint32_t> m_trackNumber{0};  // as in the record
  std::atomic<std::uint32_t> m_trackType{0};
};

}  // namespace tarvex
