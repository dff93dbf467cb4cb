// An IAsyncReader over bytes in memory, with the manners of a real one: short reads at the end, reads that fail or
// that wait for bytes to come or for a flush, a stream that grows or shrinks. Made by a test, on its
// stack and not counted, or part of a SourcePin. Any threads read; settings may change meanwhile where they are
// atomic.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <vector>

#include "framework/event.h"
#include "framework/platform/platform.h"

namespace tarvex::test {

class MemoryReader : public IAsyncReader {
 public:
  /// So many bytes, zero but for these, which do not overlap, by their positions.
  using Parts = std::map<LONGLONG, std::vector<std::uint8_t>>;
  explicit MemoryReader(std::vector<std::uint8_t> content);
  MemoryReader(Parts parts, LONGLONG size);
  virtual ~MemoryReader() = default;
  MemoryReader(const MemoryReader&) = delete;
  MemoryReader& operator=(const MemoryReader&) = delete;

 private:
  Parts m_parts;

 public:
  std::vector<std::uint8_t>& bytes = m_parts[0];  ///< of a reader of bytes: all, and more may be added
  std::atomic<LONGLONG> size;                     ///< of what there is to read, where it is more than `bytes`
  std::atomic<LONGLONG> reportedLength;           ///< what Length says, which does not follow `bytes`
  std::atomic<LONGLONG> arrived{std::numeric_limits<LONGLONG>::max()};  ///< reads behind it wait
  std::atomic<HRESULT> answerAtTheEnd{S_FALSE};  ///< of a read beyond the last byte; a failure gives nothing
  std::atomic<LONGLONG> brokenFrom{-1};          ///< reads that touch this position or one behind it fail
  std::function<void()> onRead;                  ///< called inside every SyncRead
  std::function<HRESULT()> fault;  ///< asked ahead of every read and Length: a failure is the answer, S_FALSE halves it
  Event flushing{Event::Mode::kManual};
  std::atomic<bool> isWaiting{false};     ///< for bytes to arrive
  std::atomic<int> brokenReads{0};        ///< reads that failed since they touch `brokenFrom`
  std::atomic<std::int64_t> reads{0};     ///< calls of SyncRead
  std::atomic<LONG> largestRead{0};       ///< bytes asked for in one call
  std::atomic<bool> hadTwoAtOnce{false};  ///< a read began during another
  std::atomic<int> beginFlushes{0};
  std::atomic<int> endFlushes{0};

  HRESULT STDMETHODCALLTYPE SyncRead(LONGLONG llPosition, LONG lLength, BYTE* pBuffer) override;
  HRESULT STDMETHODCALLTYPE Length(LONGLONG* pTotal, LONGLONG* pAvailable) override;
  HRESULT STDMETHODCALLTYPE BeginFlush() override;
  HRESULT STDMETHODCALLTYPE EndFlush() override;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppvObject) override;
  ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  // What the splitter never asks.
  HRESULT STDMETHODCALLTYPE RequestAllocator(IMemAllocator*, ALLOCATOR_PROPERTIES*, IMemAllocator**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Request(IMediaSample*, DWORD_PTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE WaitForNext(DWORD, IMediaSample**, DWORD_PTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SyncReadAligned(IMediaSample*) override { return E_NOTIMPL; }

 private:
  HRESULT Read(LONGLONG position, LONG length, BYTE* buffer);
  HRESULT Copy(LONGLONG position, LONG length, BYTE* buffer) const;
  LONGLONG Size() const;

  std::atomic<int> m_inside{0};
};

}  // namespace tarvex::test
