// The base of an input pin: allocator agreement, the tests before a sample is taken, and flushing.
// The stream calls run on the upstream filter's threads.
#pragma once

#include <atomic>

#include "framework/base_pin.h"

namespace tarvex {

class CBaseInputPin : public CBasePin, public IMemInputPin {
 public:
  CBaseInputPin(const char* objectName, CBaseFilter* filter, CCritSec* lock, const OLECHAR* name);

  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) override;
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;

  // IMemInputPin
  /// The allocator of the connection. Makes a standard one when there is none yet.
  HRESULT STDMETHODCALLTYPE GetAllocator(IMemAllocator** ppAllocator) override;
  HRESULT STDMETHODCALLTYPE NotifyAllocator(IMemAllocator* pAllocator, BOOL bReadOnly) override;
  HRESULT STDMETHODCALLTYPE GetAllocatorRequirements(ALLOCATOR_PROPERTIES* pProps) override;
  /// The base tests whether a sample can be taken now (CheckStreaming) and, when the sample brings a
  /// new media type, whether CheckMediaType accepts it; derived classes call it first.
  HRESULT STDMETHODCALLTYPE Receive(IMediaSample* pSample) override;
  HRESULT STDMETHODCALLTYPE ReceiveMultiple(IMediaSample** pSamples, LONG nSamples, LONG* nSamplesProcessed) override;
  /// S_FALSE for a filter without output pins that could block, otherwise S_OK.
  HRESULT STDMETHODCALLTYPE ReceiveCanBlock() override;

  HRESULT STDMETHODCALLTYPE BeginFlush() override;
  HRESULT STDMETHODCALLTYPE EndFlush() override;

  HRESULT BreakConnect() override;
  HRESULT Inactive() override;

  bool IsReadOnly() const noexcept { return m_bReadOnly; }

 protected:
  /// VFW_E_NOT_CONNECTED, VFW_E_WRONG_STATE while stopped, S_FALSE while flushing, S_OK.
  virtual HRESULT CheckStreaming();

  ComPtr<IMemAllocator> m_pAllocator;  // under the filter's lock
  std::atomic<bool> m_bReadOnly{false};
  std::atomic<bool> m_bFlushing{false};
};

}  // namespace tarvex
