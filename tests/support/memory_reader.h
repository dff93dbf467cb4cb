// An IAsyncReader over bytes in memory, with the manners of a real one: short reads at the end, reads
// that fail, a stream that grows. Made by a test, on its stack; not counted. Any threads read; what is set beforehand
// stays while they do.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <functional>
#include <utility>
#include <vector>

#include "framework/platform/platform.h"

namespace tarvex::test {

class MemoryReader final : public IAsyncReader {
 public:
  explicit MemoryReader(std::vector<std::uint8_t> content) : bytes(std::move(content)) {
    reportedLength = static_cast<LONGLONG>(bytes.size());
  }
  MemoryReader(const MemoryReader&) = delete;
  MemoryReader& operator=(const MemoryReader&) = delete;

  std::vector<std::uint8_t> bytes;
  LONGLONG reportedLength = 0;            ///< what Length says, which does not follow `bytes`
  std::int64_t failingRead = -1;          ///< this read (counted from 0) and all after it fail
  std::atomic<LONGLONG> brokenFrom{-1};   ///< reads that touch this position or one behind it fail
  std::function<void()> onRead;           ///< called inside every SyncRead
  std::atomic<int> brokenReads{0};        ///< reads that failed since they touch `brokenFrom`
  std::atomic<std::int64_t> reads{0};     ///< calls of SyncRead
  std::atomic<LONG> largestRead{0};       ///< bytes asked for in one call
  std::atomic<bool> hadTwoAtOnce{false};  ///< a read began during another
  std::atomic<int> beginFlushes{0};
  std::atomic<int> endFlushes{0};

  HRESULT STDMETHODCALLTYPE SyncRead(LONGLONG llPosition, LONG lLength, BYTE* pBuffer) override {
    const std::int64_t number = reads++;
    if (m_inside++ != 0) hadTwoAtOnce = true;
    const HRESULT result = Read(number, llPosition, lLength, pBuffer);
    --m_inside;
    return result;
  }
  HRESULT STDMETHODCALLTYPE Length(LONGLONG* pTotal, LONGLONG* pAvailable) override {
    *pTotal = reportedLength;
    *pAvailable = reportedLength;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE BeginFlush() override {
    ++beginFlushes;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE EndFlush() override {
    ++endFlushes;
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    *out = nullptr;
    if (iid != IID_IUnknown && iid != IID_IAsyncReader) return E_NOINTERFACE;
    *out = static_cast<IAsyncReader*>(this);
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE RequestAllocator(IMemAllocator*, ALLOCATOR_PROPERTIES*, IMemAllocator**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Request(IMediaSample*, DWORD_PTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE WaitForNext(DWORD, IMediaSample**, DWORD_PTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SyncReadAligned(IMediaSample*) override { return E_NOTIMPL; }

 private:
  HRESULT Read(std::int64_t number, LONGLONG llPosition, LONG lLength, BYTE* pBuffer) {
    LONG largest = largestRead;
    while (lLength > largest && !largestRead.compare_exchange_weak(largest, lLength)) {
    }
    if (onRead) onRead();
    if (llPosition < 0 || lLength < 0) return E_INVALIDARG;
    if (failingRead >= 0 && number >= failingRead) return E_FAIL;
    if (brokenFrom >= 0 && llPosition + lLength > brokenFrom) {
      ++brokenReads;
      return E_FAIL;
    }
    const auto size = static_cast<LONGLONG>(bytes.size());
    const LONGLONG there = std::clamp<LONGLONG>(size - llPosition, 0, lLength);
    if (there > 0) std::memcpy(pBuffer, bytes.data() + llPosition, static_cast<std::size_t>(there));
    return there == lLength ? S_OK : S_FALSE;
  }

  std::atomic<int> m_inside{0};
};

}  // namespace tarvex::test
