// One media sample over memory that its allocator owns. Made and kept by an allocator; used by one
// thread at a time, as samples are handed on.
#pragma once

#include <atomic>

#include "framework/media_type.h"
#include "framework/platform/platform.h"

namespace tarvex {

/// The life of a sample object: an allocator makes it (or takes it from its list of free ones and calls
/// SetBuffer), then lends it, which forgets what the sample was before and gives the borrower the first reference.
///
/// An awaited sample holds a reference on the allocator while it is out. When the borrowers' last reference goes, the
/// allocator's ReleaseBuffer gets the object back to keep or delete, and after that the reference on the allocator is
/// given up. A sample that is not awaited comes back without a word: whoever releases it touches nothing but the
/// sample, and the allocator looks at IsBack when it wants another. It must await its samples before it waits for one
/// or ends.
class alignas(64) CMediaSample : public IMediaSample2 {
 public:
  /// `allocator` is not counted until the sample is awaited. `buffer`, of `length` bytes, belongs to the allocator.
  CMediaSample(IMemAllocator* allocator, BYTE* buffer, LONG length) noexcept;
  virtual ~CMediaSample() = default;
  CMediaSample(const CMediaSample&) = delete;
  CMediaSample& operator=(const CMediaSample&) = delete;

  /// Allocator only, while nobody borrows the sample: gives it another region of memory.
  void SetBuffer(BYTE* buffer, LONG length) noexcept {
    m_buffer = buffer;
    m_length = length;
  }

  // Allocator only, under its lock.
  /// Hands the sample out, awaited, with one reference, which the caller owns.
  void Lend() noexcept {
    m_allocator->AddRef();
    LendWith(kAwaited | 1);
  }
  /// The same, but not awaited.
  void LendSilently() noexcept { LendWith(1); }
  /// The sample is awaited from now on. False when it is back, or was awaited and Settle was called.
  bool Await() noexcept;
  /// ReleaseBuffer has got the awaited sample.
  void Settle() noexcept { m_references.store(0, std::memory_order_relaxed); }
  /// Nobody has the sample, nor will the allocator be told so any more.
  bool IsBack() const noexcept { return m_references.load(std::memory_order_acquire) == 0; }

  /// The region, of so many bytes.
  BYTE* Buffer() const noexcept { return m_buffer; }
  LONG Length() const noexcept { return m_length; }

  /// What is known of a sample that was just lent, in one go: its times, and what it is of AM_SAMPLE_*. Its data fill
  /// the region. By its only borrower.
  void Describe(REFERENCE_TIME start, REFERENCE_TIME stop, DWORD flags) noexcept {
    m_start = start;
    m_stop = stop;
    m_flags = flags | AM_SAMPLE_TIMEVALID | AM_SAMPLE_STOPVALID;
  }

  /// The allocator's list of free samples.
  CMediaSample* Next() const noexcept { return m_next; }
  void SetNext(CMediaSample* next) noexcept { m_next = next; }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;

  HRESULT STDMETHODCALLTYPE GetPointer(BYTE** ppBuffer) override;
  LONG STDMETHODCALLTYPE GetSize() override;
  /// VFW_E_SAMPLE_TIME_NOT_SET without times; VFW_S_NO_STOP_TIME and start plus one with a start alone.
  HRESULT STDMETHODCALLTYPE GetTime(REFERENCE_TIME* pTimeStart, REFERENCE_TIME* pTimeEnd) override;
  /// A null start forgets both times, a null end the end.
  HRESULT STDMETHODCALLTYPE SetTime(REFERENCE_TIME* pTimeStart, REFERENCE_TIME* pTimeEnd) override;
  HRESULT STDMETHODCALLTYPE IsSyncPoint() override;
  HRESULT STDMETHODCALLTYPE SetSyncPoint(BOOL bIsSyncPoint) override;
  HRESULT STDMETHODCALLTYPE IsPreroll() override;
  HRESULT STDMETHODCALLTYPE SetPreroll(BOOL bIsPreroll) override;
  LONG STDMETHODCALLTYPE GetActualDataLength() override;
  /// VFW_E_BUFFER_OVERFLOW when the region is shorter.
  HRESULT STDMETHODCALLTYPE SetActualDataLength(LONG length) override;
  /// S_FALSE and null when the type has not changed.
  HRESULT STDMETHODCALLTYPE GetMediaType(AM_MEDIA_TYPE** ppMediaType) override;
  HRESULT STDMETHODCALLTYPE SetMediaType(AM_MEDIA_TYPE* pMediaType) override;
  HRESULT STDMETHODCALLTYPE IsDiscontinuity() override;
  HRESULT STDMETHODCALLTYPE SetDiscontinuity(BOOL bDiscontinuity) override;
  HRESULT STDMETHODCALLTYPE GetMediaTime(LONGLONG* pTimeStart, LONGLONG* pTimeEnd) override;
  HRESULT STDMETHODCALLTYPE SetMediaTime(LONGLONG* pTimeStart, LONGLONG* pTimeEnd) override;
  HRESULT STDMETHODCALLTYPE GetProperties(DWORD cbProperties, BYTE* pbProperties) override;
  HRESULT STDMETHODCALLTYPE SetProperties(DWORD cbProperties, const BYTE* pbProperties) override;

 private:
  static constexpr ULONG kAwaited = 0x80000000;  // beside the count of references

  void LendWith(ULONG references) noexcept {
    m_next = nullptr;
    m_actual = m_length;
    m_flags = 0;
    m_typeSpecificFlags = 0;
    m_streamId = 0;
    m_mediaType.reset();
    m_references.store(references, std::memory_order_relaxed);  // nobody else has it
  }
  HRESULT Flag(DWORD flag) const noexcept { return (m_flags & flag) != 0 ? S_OK : S_FALSE; }
  HRESULT SetFlag(DWORD flag, BOOL on) noexcept;
  HRESULT CheckProperties(const AM_SAMPLE2_PROPERTIES& properties, DWORD size) const noexcept;

  // First what every borrower uses, on one cache line: samples go from one thread to the next.
  CMediaSample* m_next = nullptr;
  IMemAllocator* const m_allocator;  // a reference is held while the sample is out and awaited
  BYTE* m_buffer;
  MediaTypePtr m_mediaType;
  std::atomic<ULONG> m_references{0};  // and kAwaited
  LONG m_length;
  LONG m_actual;
  DWORD m_flags = 0;  // AM_SAMPLE_*, and one of our own
  DWORD m_typeSpecificFlags = 0;
  DWORD m_streamId = 0;
  REFERENCE_TIME m_start = 0;  // 100 ns units
  REFERENCE_TIME m_stop = 0;
  LONGLONG m_mediaStart = 0;
  LONGLONG m_mediaStop = 0;
};

}  // namespace tarvex
