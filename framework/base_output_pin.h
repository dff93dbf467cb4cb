// The base of an output pin: the peer's IMemInputPin, the allocator of the connection, and delivery to
// the peer. Connection runs on application threads, delivery on a streaming thread.
#pragma once

#include "framework/base_pin.h"

namespace tarvex {

class CBaseOutputPin : public CBasePin {
 public:
  CBaseOutputPin(const char* objectName, CBaseFilter* filter, CCritSec* lock, const OLECHAR* name);

  /// Also asks the peer for IMemInputPin.
  HRESULT CheckConnect(IPin* peer) override;
  HRESULT BreakConnect() override;
  HRESULT CompleteConnect(IPin* peer) override;

  /// Commits the allocator; VFW_E_NO_ALLOCATOR.
  HRESULT Active() override;
  /// Decommits the allocator; VFW_E_NO_ALLOCATOR.
  HRESULT Inactive() override;

  // An output pin receives nothing: E_UNEXPECTED.
  HRESULT STDMETHODCALLTYPE EndOfStream() override;
  HRESULT STDMETHODCALLTYPE BeginFlush() override;
  HRESULT STDMETHODCALLTYPE EndFlush() override;

  /// Agrees on an allocator with the peer, whose own is tried first, and stores it with a reference in
  /// `allocator` (empty on failure).
  virtual HRESULT DecideAllocator(IMemInputPin* peer, IMemAllocator** allocator);
  /// Sets count and size of the buffers through IMemAllocator::SetProperties. `request` holds what the
  /// peer asked for.
  virtual HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) = 0;
  /// Makes an allocator of our own; stores a reference.
  virtual HRESULT InitAllocator(IMemAllocator** allocator);

  /// A sample from the allocator, with a reference. VFW_E_NO_ALLOCATOR and what GetBuffer answers.
  virtual HRESULT GetDeliveryBuffer(IMediaSample** sample, REFERENCE_TIME* start, REFERENCE_TIME* end, DWORD flags);
  // To the connected peer, on the calling thread; VFW_E_NOT_CONNECTED. The caller keeps its reference
  // on the sample.
  virtual HRESULT Deliver(IMediaSample* sample);
  virtual HRESULT DeliverEndOfStream();
  virtual HRESULT DeliverBeginFlush();
  virtual HRESULT DeliverEndFlush();
  virtual HRESULT DeliverNewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate);

 protected:
  ComPtr<IMemAllocator> m_pAllocator;  // set while connected; under the filter's lock
  ComPtr<IMemInputPin> m_pInputPin;    // the peer's; set while connected

 private:
  HRESULT OfferAllocator(IMemInputPin* peer, IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request);
};

}  // namespace tarvex
