// Lets several threads read from an IAsyncReader that takes one read at a time. Made by the read-ahead reader, which
// shares it with its prefetcher. Any thread.
#pragma once

#include "framework/com_ptr.h"
#include "framework/condition_variable.h"
#include "framework/critical_section.h"
#include "framework/unknown.h"

namespace tarvex {

/// Gives the same bytes and results as the reader below, whose SyncRead is never called while a call of it is in
/// progress. Its other methods may be, as the interface says of its flush and its length.
///
/// Waits here: SyncRead for another one to end, ended by begin-flush as well; then VFW_E_WRONG_STATE is the answer.
class SerialReader : public UnknownImpl<IAsyncReader> {
 public:
  explicit SerialReader(IAsyncReader* upstream);

  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) override;

  HRESULT STDMETHODCALLTYPE SyncRead(LONGLONG llPosition, LONG lLength, BYTE* pBuffer) override;
  HRESULT STDMETHODCALLTYPE BeginFlush() override;
  /// Waits a moment for the read that the flush ends. A reader that only looks for a flush now and then would miss a
  /// short one, and the next read would wait behind the old one.
  HRESULT STDMETHODCALLTYPE EndFlush() override;
  HRESULT STDMETHODCALLTYPE Length(LONGLONG* pTotal, LONGLONG* pAvailable) override {
    return m_upstream->Length(pTotal, pAvailable);
  }

  // Nobody here asks for samples.
  HRESULT STDMETHODCALLTYPE RequestAllocator(IMemAllocator* pPreferred, ALLOCATOR_PROPERTIES* pProps,
                                             IMemAllocator** ppActual) override {
    return m_upstream->RequestAllocator(pPreferred, pProps, ppActual);
  }
  HRESULT STDMETHODCALLTYPE Request(IMediaSample* pSample, DWORD_PTR dwUser) override {
    return m_upstream->Request(pSample, dwUser);
  }
  HRESULT STDMETHODCALLTYPE WaitForNext(DWORD dwTimeout, IMediaSample** ppSample, DWORD_PTR* pdwUser) override {
    return m_upstream->WaitForNext(dwTimeout, ppSample, pdwUser);
  }
  HRESULT STDMETHODCALLTYPE SyncReadAligned(IMediaSample* pSample) override {
    return m_upstream->SyncReadAligned(pSample);
  }

 private:
  class Turn;

  const ComPtr<IAsyncReader> m_upstream;
  CCritSec m_lock{"SerialReader", LockRank::kLeaf};
  ConditionVariable m_changed;
  bool m_isReading = false;  // under m_lock
  unsigned m_flushes = 0;    // under m_lock; begun so far
};

}  // namespace tarvex
