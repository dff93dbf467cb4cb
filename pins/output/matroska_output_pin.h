// The output pin that carries one track: negotiates its one media type, turns frames into samples on the
// worker, and passes them on through a queue with a thread of its own. Made by pin creation, owned by the
// filter; also held by applications, which seek through it.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <span>

#include "framework/base_output_pin.h"
#include "framework/critical_section.h"
#include "pins/output/pin_seeking.h"
#include "pins/output/sample_sender.h"
#include "pins/output/segment_gate.h"
#include "pins/output/shared_by_pins.h"
#include "pins/output/track_record.h"
#include "scanner/frames/frame_info.h"

namespace tarvex {

/// The pin was never activated, or has been deactivated.
inline constexpr HRESULT kNoQueue = E_UNEXPECTED;

/// The shell: what the platform and the filter call, passed on to the parts. Its own is the state of the stream:
/// whether a segment is to begin, and whether it has ended.
///
/// Waits here: the worker in OnData and where held frames are delivered, for room in the sample buffer (see there).
class CMatroskaOutputPin : public CBaseOutputPin, protected SegmentGate::Receiver {
 public:
  ~CMatroskaOutputPin() override;

  /// Takes one frame of this pin's track, with a time of the file. True: delivered, held back or dropped
  /// on purpose. False: refused, the reason is in the log. Worker only. Throws MessageError for a frame
  /// that is larger than the sample buffer, std::bad_alloc.
  virtual bool OnData(const FrameInfo& frame);

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
  /// A sample of exactly `size` bytes, with a reference; waits for room. See SampleSender::GetSample.
  virtual HRESULT GetDeliveryBuffer(CMediaSample** sample, std::size_t size);
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
  /// At most once until ResetForSeek; behind the frames that are held back. Worker, or while there is none.
  HRESULT DeliverEndOfStream() override;
  /// Ends a wait for room as well. Any thread.
  HRESULT DeliverBeginFlush() override;
  /// Also drops the held frames. Any thread.
  HRESULT DeliverEndFlush() override;
  /// Behind the queued samples, which belong to the segment before.
  HRESULT DeliverNewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override;

  // For the filter.
  /// Gives the pin its stream, or another. VFW_E_ALREADY_CONNECTED while connected; E_OUTOFMEMORY.
  HRESULT SetTrack(const TrackPinInfo& track);
  /// The form that an H.264 pin offers from its next connection on; nothing on other pins.
  void SetH264Form(bool byteStream);
  /// The stream's record. Any thread.
  const TrackRecord& Track() const noexcept { return m_track; }
  /// Null while inactive or unconnected. Any thread.
  std::shared_ptr<COutputQueue> Queue() const { return m_sender.Queue(); }
  /// Frames of these sizes come next: samples for them are taken in one go, as far as there is room. Worker only.
  /// Throws std::bad_alloc.
  virtual void Reserve(std::span<const std::size_t> sizes);
  /// Why OnData answered false, if nobody but us can tell the graph: kNoQueue, or what kept us from making a sample.
  /// S_OK where downstream refused, which tells the graph itself, and where it stops. Worker only.
  HRESULT OwnFailure() const noexcept { return m_ownFailure; }
  /// The queue passes on all there is, since the worker is about to wait, or done. Worker only.
  void BeforeWait() { m_sender.SendAll(); }
  /// While on, the worker fails where it would wait for room, a wait in progress included. Any thread.
  void CancelWaits(bool on);
  /// Drops all held frames. An end of stream that waited behind them was not sent. Any thread.
  void DropHeld();

 protected:
  CMatroskaOutputPin(const char* objectName, const SharedByPins& shared, const WideString& name);

  PlayPositions& Positions() const noexcept { return m_shared.positions; }
  SegmentGate& Gate() const noexcept { return m_shared.gate; }
  CCritSec& StreamLock() const noexcept { return m_streamLock; }
  bool IsEndOfStreamSent() const noexcept { return m_endOfStream != EndOfStreamState::kOpen; }

  // SegmentGate::Receiver
  HRESULT DeliverHeld(const FrameInfo& frame) override;
  std::optional<HRESULT> TryDeliverHeld(const FrameInfo& frame) override;
  void OnHeldDelivered() override;
  void OnHeldLost() override {}

 private:
  enum class EndOfStreamState { kOpen, kBehindHeld, kSent };

  // Worker.
  HRESULT DeliverFrameSample(const std::uint8_t* data, std::size_t size, REFERENCE_TIME start, REFERENCE_TIME duration,
                             bool splice);
  HRESULT DeliverRelative(const FrameInfo& frame);
  bool IsDroppedAsEarly(REFERENCE_TIME start, REFERENCE_TIME stop) const;
  HRESULT SampleFor(const std::uint8_t* data, std::size_t size, ComPtr<CMediaSample>& sample);
  void StartSegment();

  const SharedByPins m_shared;
  TrackRecord m_track;
  SampleSender m_sender;
  PinSeeking m_seeking;
  HRESULT m_ownFailure = S_OK;  // the worker's

  // Guards the state of the stream, which the worker shares with those that activate and flush. Taken after the
  // filter's locks; never held across a wait or a call downstream.
  mutable CCritSec m_streamLock{"CMatroskaOutputPin stream", LockRank::kPinStream};
  std::atomic<bool> m_discontinuityPending{true};
  std::atomic<EndOfStreamState> m_endOfStream{EndOfStreamState::kOpen};
};

}  // namespace tarvex
