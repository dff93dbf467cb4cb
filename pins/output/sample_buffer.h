// The allocator of an output pin's connection: samples of exactly the frame's size, one after another in
// a ring. Made by the pin for each connection; the worker takes samples, any thread releases them.
#pragma once

#include <cstddef>
#include <deque>
#include <span>
#include <vector>

#include "framework/com_ptr.h"
#include "framework/condition_variable.h"
#include "framework/mem_allocator.h"
#include "framework/ring_queue.h"
#include "pins/output/ring_regions.h"
#include "pins/output/ring_sample.h"

namespace tarvex {

/// Waits here: GetSample for room, ended by a released sample, by Decommit, by BeginFlush or by
/// CancelWaits. The block gets memory as samples first reach so far into it, none before the first, and keeps it until
/// the allocator is decommitted and the last sample is back. In steady use nothing is allocated.
///
/// Samples come back without a word, and are looked at in the order in which they were taken, as long as there is room.
/// Before anybody waits, and when the ring is decommitted or nobody but samples refers to it, they are awaited.
class CSampleBuffer final : public CMemAllocator {
 public:
  CSampleBuffer();
  ~CSampleBuffer() override;

  /// Stores a sample of `size` bytes, with a reference. Without room: S_FALSE when not to `wait`, else
  /// waits; VFW_E_WRONG_STATE when the wait was cancelled or a flush began. VFW_E_NOT_COMMITTED. Throws
  /// MessageError when the whole block is smaller than `size`, once no sample is out; std::bad_alloc.
  HRESULT GetSample(CMediaSample** sample, std::size_t size, bool wait);

  /// The same for several samples of these sizes, as many of them from the first on as there is room for now. They
  /// are appended to `samples`, which has room for them. Does not wait. Throws std::bad_alloc, with those
  /// that were had in `samples`.
  void GetSamples(std::span<const std::size_t> sizes, std::vector<ComPtr<CMediaSample>>& samples);

  /// A sample over bytes that lie elsewhere, with a reference; `keeper` is held until it is back. It counts as if it
  /// lay in the ring: what downstream holds has one limit. S_FALSE without room; VFW_E_NOT_COMMITTED. Throws
  /// std::bad_alloc.
  HRESULT GetSampleOver(CMediaSample** sample, std::span<BYTE> bytes, ComPtr<IUnknown> keeper);

  /// While on, nobody waits for room: a wait in progress and later ones fail at once. Any thread.
  void CancelWaits(bool on) noexcept;
  // The same for the time of a flush, independently. Any thread.
  void BeginFlush() noexcept;
  void EndFlush() noexcept;

  // IMemAllocator, for a peer that takes samples of ours: of the negotiated size, from the same ring.
  HRESULT STDMETHODCALLTYPE GetBuffer(IMediaSample** ppBuffer, REFERENCE_TIME* pStartTime, REFERENCE_TIME* pEndTime,
                                      DWORD dwFlags) override;
  HRESULT STDMETHODCALLTYPE ReleaseBuffer(IMediaSample* pBuffer) override;

 protected:
  HRESULT Alloc() override;
  void Free() override;
  void OnDecommit() override;
  void OnLastRelease() noexcept override;

 private:
  using Sample = RingSample;
  static constexpr std::size_t kCacheLine = 64;

  Sample* FreeSample();
  bool HasRoomFor(std::size_t size) const noexcept;
  void NoteTaken(Sample& sample, BYTE* bytes, std::size_t size) noexcept;
  Sample* Take(std::size_t size);
  Sample* TakeIfThereIsRoom(std::size_t size);
  Sample* TakeNext(std::size_t size);
  void Collect() noexcept;
  void AwaitAll() noexcept;
  void ForgetReturned() noexcept;
  void TakeBack(Sample& sample) noexcept;
  void Recycle(Sample& sample) noexcept;
  void Lend(Sample& sample) noexcept;
  void Set(bool& flag, bool on) noexcept;

  // All under Lock(), which is a leaf.
  ConditionVariable m_spaceFreed;
  RingRegions m_ring;
  std::deque<Sample> m_samples;  // every sample object, out or not
  CMediaSample* m_free = nullptr;
  // In the order of taking. The foremost is out, as far as was seen; others may be back, and what was awaited among
  // them has given up its region.
  RingQueue<Sample*> m_taken{64};
  std::size_t m_silent = 0;    // so many of the last of those are not awaited
  std::size_t m_bytesOut = 0;  // of samples, wherever they lie
  unsigned m_waiters = 0;
  bool m_cancelled = false;
  bool m_flushing = false;
};

}  // namespace tarvex
