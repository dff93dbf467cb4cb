// An IAsyncReader over another one. It serves small reads from a window that it reads ahead. While a stream is read
// from front to back, a prefetcher reads the next windows on a thread of its own. Made by the filter for the upstream
// reader and given to the scanner. One thread at a time reads; the flush operations may come from any thread during a
// read.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>

#include "framework/com_ptr.h"
#include "framework/unknown.h"
#include "scanner/source/prefetcher.h"

namespace tarvex {

/// How many calls of SyncRead the reader below may get at a time. Only a reader that is known to allow several gets
/// several.
enum class SourceReads { kOneAtATime, kSeveralAtATime };

/// Gives the same bytes and results as the reader below. Between begin-flush and end-flush every new
/// read fails with VFW_E_WRONG_STATE, since not every reader's own flush ends or refuses reads.
class ReadAheadReader : public UnknownImpl<IAsyncReader> {
 public:
  static constexpr LONG kSmallestWindow = 4 * 1024;
  static constexpr LONG kLargestWindow = 1024 * 1024;
  /// QueryInterface for it gives the object itself, to code of this module.
  static constexpr IID kClass = {0x6C2A7B1E, 0x52D4, 0x4B0E, {0x9C, 0x3A, 0x71, 0xE4, 0x0B, 0x5D, 0x86, 0x2F}};

  /// `beforeRead`, if there is one, is called on the reading thread before each read below, since that may block.
  explicit ReadAheadReader(IAsyncReader* upstream, SourceReads reads = SourceReads::kOneAtATime,
                           std::function<void()> beforeRead = {});

  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) override;

  HRESULT STDMETHODCALLTYPE SyncRead(LONGLONG llPosition, LONG lLength, BYTE* pBuffer) override;
  /// The bytes in the window from `position` on, at least `atLeast` of them. If they have to be read, up to `wanted`
  /// bytes are read, as many as the window holds. Valid while WindowNumber stays the same. Empty when they do not fit
  /// or cannot be read this way. For the reading thread.
  std::span<const BYTE> Borrow(LONGLONG position, LONG atLeast, LONG wanted);
  /// What keeps these bytes, which lie in the window, where they are for as long as it is held. Null where they have to
  /// be copied. They may be written to: who wants them once more gets them read again. For the reading thread.
  ComPtr<IUnknown> Keep(std::span<const BYTE> bytes) noexcept;
  /// Changes whenever the bytes in the window do.
  std::uint64_t WindowNumber() const noexcept { return m_windowNumber; }
  HRESULT STDMETHODCALLTYPE BeginFlush() override;
  HRESULT STDMETHODCALLTYPE EndFlush() override;

  // Passed on to the reader below.
  HRESULT STDMETHODCALLTYPE RequestAllocator(IMemAllocator* pPreferred, ALLOCATOR_PROPERTIES* pProps,
                                             IMemAllocator** ppActual) override;
  HRESULT STDMETHODCALLTYPE Request(IMediaSample* pSample, DWORD_PTR dwUser) override;
  HRESULT STDMETHODCALLTYPE WaitForNext(DWORD dwTimeout, IMediaSample** ppSample, DWORD_PTR* pdwUser) override;
  HRESULT STDMETHODCALLTYPE SyncReadAligned(IMediaSample* pSample) override;
  HRESULT STDMETHODCALLTYPE Length(LONGLONG* pTotal, LONGLONG* pAvailable) override;

 private:
  HRESULT ReadBelow(LONGLONG position, LONG length, BYTE* buffer);
  HRESULT ReadMissing(LONGLONG position, LONG length, BYTE* buffer);
  LONG TakeFromWindow(LONGLONG position, LONG length, BYTE* buffer) const noexcept;
  bool FillWindow(LONGLONG position, LONG atLeast);
  bool ReadIntoWindow(LONG bytes);
  bool Advance(LONGLONG from, LONG tail, LONG atLeast);
  bool TakePrefetched(LONGLONG from, LONG tail);
  void ReadAnother(LONGLONG position);
  void PrefetchOn();
  bool MoveToFront(LONGLONG from, LONG tail, LONG room);
  bool HasInWindow(LONGLONG position, LONG length) const noexcept;
  LONG BytesToAsk(LONGLONG position, LONG wanted);
  LONG BytesAhead(LONGLONG position, LONG atLeast) const noexcept;
  bool IsBroken(LONGLONG position) const noexcept { return position >= m_brokenBegin && position < m_brokenEnd; }
  void AdaptWindow(LONGLONG position) noexcept;
  bool SkipsLittle(LONGLONG position) const noexcept;

  const SourceReads m_sourceReads;
  const ComPtr<IAsyncReader> m_upstream;
  const std::function<void()> m_beforeRead;
  std::atomic<bool> m_flushing{false};

  Prefetcher m_prefetcher;

  // The rest belongs to the reading thread.
  std::unique_ptr<BYTE[]> m_own;
  LONG m_capacity = 0;         // bytes at m_own
  PiecePool::Taken m_piece;    // where the window lies when it does not lie there
  BYTE* m_window = nullptr;    // its first byte
  LONGLONG m_windowStart = 0;  // stream position of the first
  LONG m_windowBytes = 0;      // valid ones, but for those that were kept
  LONGLONG m_keptEnd = 0;      // stream position behind the last of those; 0 when there are none
  std::uint64_t m_windowNumber = 0;
  LONG m_windowSize = kSmallestWindow;
  LONG m_lastLength = 0;  // of the last read past the window, if that was the last of all
  LONGLONG m_next = -1;   // where a sequential read would begin
  bool m_sourceIsSlow = false;
  LONGLONG m_knownEnd = 0;     // reads up to here are whole, as far as the reader said
  LONGLONG m_brokenBegin = 0;  // of the last read ahead that failed
  LONGLONG m_brokenEnd = 0;
};

}  // namespace tarvex
