// A source filter that hands the reads on to another reader, counts them, and can be slow. Made for one playback, owned
// through ComPtr; read on the splitter's threads.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

#include "framework/base_filter.h"
#include "framework/base_pin.h"
#include "framework/owned_pin.h"

namespace tarvex::bench {

struct ReadCount {
  std::uint64_t calls = 0;
  std::uint64_t bytes = 0;  ///< asked for
};

class CountingSourcePin;

class CountingSource : public CBaseFilter {
 public:
  /// Each read takes so much longer than the reader's own.
  explicit CountingSource(ComPtr<IAsyncReader> reader, std::chrono::microseconds delay = {});
  ~CountingSource() override;

  int GetPinCount() override { return 1; }
  CBasePin* GetPin(int index) override;
  IPin* Output() const noexcept;

  /// So far. Any thread.
  ReadCount Reads() const noexcept;

 private:
  CCritSec m_filterLock{"CountingSource", LockRank::kUpstreamFilter};
  OwnedPin<CountingSourcePin> m_pin;
};

class CountingSourcePin : public CBasePin, public IAsyncReader {
 public:
  CountingSourcePin(CountingSource* filter, CCritSec* lock, ComPtr<IAsyncReader> reader,
                    std::chrono::microseconds delay);

  ReadCount Reads() const noexcept { return {m_calls, m_bytes}; }

  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) override;
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;

  HRESULT CheckMediaType(const CMediaType* type) override;
  HRESULT GetMediaType(int position, CMediaType* type) override;

  HRESULT STDMETHODCALLTYPE SyncRead(LONGLONG llPosition, LONG lLength, BYTE* pBuffer) override;

  // These are the other reader's.
  HRESULT STDMETHODCALLTYPE RequestAllocator(IMemAllocator* pPreferred, ALLOCATOR_PROPERTIES* pProps,
                                             IMemAllocator** ppActual) override;
  HRESULT STDMETHODCALLTYPE Request(IMediaSample* pSample, DWORD_PTR dwUser) override;
  HRESULT STDMETHODCALLTYPE WaitForNext(DWORD dwTimeout, IMediaSample** ppSample, DWORD_PTR* pdwUser) override;
  HRESULT STDMETHODCALLTYPE SyncReadAligned(IMediaSample* pSample) override;
  HRESULT STDMETHODCALLTYPE Length(LONGLONG* pTotal, LONGLONG* pAvailable) override;
  HRESULT STDMETHODCALLTYPE BeginFlush() override;
  HRESULT STDMETHODCALLTYPE EndFlush() override;

 private:
  const ComPtr<IAsyncReader> m_reader;
  const std::chrono::microseconds m_delay;
  std::atomic<std::uint64_t> m_calls{0};
  std::atomic<std::uint64_t> m_bytes{0};
};

}  // namespace tarvex::bench
