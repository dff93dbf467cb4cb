// A file source for test graphs: one output pin that offers IAsyncReader over bytes in memory, and can
// be told to be slow, to fail, or to block until it is flushed. Being no source of the platform's, it takes one read
// at a time: two end the process. Owned through
// ComPtr; the reader side runs on the reader's threads, the settings may change at any time.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "framework/base_filter.h"
#include "framework/base_pin.h"
#include "framework/event.h"
#include "framework/owned_pin.h"

namespace tarvex::test {

/// All bytes of a file; throws std::runtime_error when it cannot be read.
std::vector<std::uint8_t> ReadWholeFile(const std::string& path);

class SourcePin;

class SourceFilter : public CBaseFilter {
 public:
  static ComPtr<SourceFilter> FromFile(const std::string& path);
  static ComPtr<SourceFilter> FromBytes(std::vector<std::uint8_t> bytes);
  /// So many bytes, zero but for these, which do not overlap, by their positions.
  using Parts = std::map<LONGLONG, std::vector<std::uint8_t>>;
  static ComPtr<SourceFilter> FromParts(Parts parts, LONGLONG size);
  ~SourceFilter() override;

  int GetPinCount() override { return 1; }
  CBasePin* GetPin(int index) override;
  SourcePin* Pin() const noexcept { return m_pin.Get(); }

  /// The read with this number (from 0, counted from now) and all after it fail with `result`.
  void FailFrom(int read, HRESULT result);
  /// The read with this number (from 0, counted from now) and all after it wait for a flush, for
  /// Unblock, or, when asked to ignore flushes as the platform's reader does, for Unblock alone.
  void BlockFrom(int read, bool ignoreFlush = false);
  void Unblock() { m_unblocked.Set(); }
  /// A read waits since BlockFrom.
  bool WaitUntilBlocked(DWORD milliseconds) { return m_blocked.Wait(milliseconds); }
  /// Asked ahead of every read and every question for the length. A failure is the answer; S_FALSE makes
  /// a read give half of its bytes. To be set before anybody reads.
  void BeforeEachCall(std::function<HRESULT()> fault) { m_fault = std::move(fault); }
  /// From now on there are only so many bytes.
  void Shrink(std::size_t size) { m_size = static_cast<LONGLONG>(size); }
  std::size_t Size() const noexcept { return static_cast<std::size_t>(m_size.load()); }
  /// So many bytes have come. A read of others waits for them or for a flush, as that of a file on its way does, and
  /// the length is called an estimate.
  void Arrive(LONGLONG size) { m_arrived = size; }
  /// What is given as the length until all bytes have come.
  void Estimate(LONGLONG size) { m_estimate = size; }
  /// A read waits for bytes to come.
  bool IsWaitingForBytes() const noexcept { return m_isWaiting; }
  /// What a read is answered that goes beyond the last byte: S_FALSE with what there is, or an error with nothing.
  void AnswerAtTheEnd(HRESULT answer) { m_answerAtTheEnd = answer; }
  /// For BeforeEachCall.
  bool WaitForFlush(DWORD milliseconds) { return m_flushing.Wait(milliseconds); }
  int Reads() const noexcept { return m_reads; }
  int Flushes() const noexcept { return m_flushes; }

 private:
  friend class SourcePin;
  class ReadInProgress;
  static constexpr int kNever = 0x7FFFFFFF;
  SourceFilter(Parts parts, LONGLONG size);
  HRESULT Read(LONGLONG position, LONG length, BYTE* buffer);
  HRESULT Gate(int number);
  bool WaitFor(LONGLONG end);
  HRESULT Copy(LONGLONG position, LONG length, BYTE* buffer) const;
  void BeginFlush();
  void EndFlush();

  CCritSec m_filterLock{"SourceFilter", LockRank::kUpstreamFilter};
  const Parts m_parts;
  std::atomic<LONGLONG> m_size;  // what there is to read
  std::atomic<LONGLONG> m_arrived{std::numeric_limits<LONGLONG>::max()};
  std::atomic<LONGLONG> m_estimate{0};
  std::atomic<bool> m_isWaiting{false};
  std::atomic<HRESULT> m_answerAtTheEnd{S_FALSE};
  std::function<HRESULT()> m_fault;
  std::atomic<bool> m_isReading{false};
  std::atomic<int> m_reads{0};
  std::atomic<int> m_flushes{0};
  std::atomic<int> m_failFrom{kNever};
  std::atomic<HRESULT> m_failure{E_FAIL};
  std::atomic<int> m_blockFrom{kNever};
  std::atomic<bool> m_ignoreFlush{false};
  Event m_flushing{Event::Mode::kManual};
  Event m_unblocked{Event::Mode::kManual};
  Event m_blocked{Event::Mode::kManual};
  OwnedPin<SourcePin> m_pin;
};

class SourcePin : public CBasePin, public IAsyncReader {
 public:
  SourcePin(SourceFilter* filter, CCritSec* lock);

  /// From now on the pin answers no question for IAsyncReader.
  void HideReader() { m_hidden = true; }
  /// From now on the pin offers no media type.
  void HideTypes() { m_typeless = true; }

  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) override;
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;

  HRESULT CheckMediaType(const CMediaType* type) override;
  HRESULT GetMediaType(int position, CMediaType* type) override;

  // What the splitter never asks.
  HRESULT STDMETHODCALLTYPE RequestAllocator(IMemAllocator*, ALLOCATOR_PROPERTIES*, IMemAllocator**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Request(IMediaSample*, DWORD_PTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE WaitForNext(DWORD, IMediaSample**, DWORD_PTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SyncReadAligned(IMediaSample*) override { return E_NOTIMPL; }

  HRESULT STDMETHODCALLTYPE SyncRead(LONGLONG llPosition, LONG lLength, BYTE* pBuffer) override;
  HRESULT STDMETHODCALLTYPE Length(LONGLONG* pTotal, LONGLONG* pAvailable) override;
  HRESULT STDMETHODCALLTYPE BeginFlush() override;
  HRESULT STDMETHODCALLTYPE EndFlush() override;

 private:
  SourceFilter& m_source;
  std::atomic<bool> m_hidden{false};
  std::atomic<bool> m_typeless{false};
};

}  // namespace tarvex::test
