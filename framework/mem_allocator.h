// The standard allocator: a number of equal samples over one contiguous block. Also the base of
// allocators that divide the block in their own way. Shared by the two pins of a connection; any
// thread may take and release samples.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "framework/condition_variable.h"
#include "framework/critical_section.h"
#include "framework/media_sample.h"
#include "framework/platform/memory_block.h"
#include "framework/unknown.h"

namespace tarvex {

/// Waits here: GetBuffer for a free sample, ended by a released sample or by Decommit.
///
/// A derived class that divides the block itself overrides Alloc (with ReserveBlock, and CommitBlockTo before it
/// touches a part for the first time), Free, ReleaseBuffer and OnDecommit. For every sample it lends it calls NoteLent,
/// for every one that comes back NoteReturned; the block goes when the allocator is decommitted and the last sample is
/// back. All these calls and hooks happen with Lock() held.
class CMemAllocator : public UnknownImpl<IMemAllocator> {
 public:
  explicit CMemAllocator(const char* name = "CMemAllocator", IUnknown* outer = nullptr);
  ~CMemAllocator() override;

  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) override;

  /// VFW_E_BADALIGN unless the alignment is a power of two; VFW_E_ALREADY_COMMITTED while committed;
  /// VFW_E_BUFFERS_OUTSTANDING while samples are out. Sizes are rounded up so that each buffer with its
  /// prefix is a multiple of the alignment.
  HRESULT STDMETHODCALLTYPE SetProperties(ALLOCATOR_PROPERTIES* pRequest, ALLOCATOR_PROPERTIES* pActual) override;
  HRESULT STDMETHODCALLTYPE GetProperties(ALLOCATOR_PROPERTIES* pProps) override;
  /// VFW_E_SIZENOTSET before SetProperties; E_OUTOFMEMORY.
  HRESULT STDMETHODCALLTYPE Commit() override;
  HRESULT STDMETHODCALLTYPE Decommit() override;
  /// VFW_E_NOT_COMMITTED, at once or when decommitted during the wait; VFW_E_TIMEOUT with AM_GBF_NOWAIT.
  HRESULT STDMETHODCALLTYPE GetBuffer(IMediaSample** ppBuffer, REFERENCE_TIME* pStartTime, REFERENCE_TIME* pEndTime,
                                      DWORD dwFlags) override;
  HRESULT STDMETHODCALLTYPE ReleaseBuffer(IMediaSample* pBuffer) override;

 protected:
  /// Makes the block with all its memory; S_OK when there is one already.
  virtual HRESULT Alloc();
  /// Makes the block as addresses only, without memory.
  HRESULT ReserveBlock();
  /// Gives the first `size` bytes of the block memory. False when there is none.
  bool CommitBlockTo(std::size_t size) noexcept { return m_block.CommitTo(size); }
  /// Forgets all samples and gives the block back. No sample is out.
  virtual void Free();
  /// Called when the allocator has just been decommitted: wakes what waits. The base wakes GetBuffer.
  virtual void OnDecommit();

  CCritSec& Lock() noexcept { return m_lock; }
  bool IsCommitted() const noexcept { return m_committed; }
  /// Start of the block, aligned as asked for; null while there is none.
  BYTE* Block() const noexcept { return m_block.Data(); }
  /// Bytes of the block: count times size with prefix, all rounded.
  std::size_t BlockSize() const noexcept { return m_block.Size(); }
  void NoteLent() noexcept { ++m_lent; }
  void NoteReturned();
  LONG LentCount() const noexcept { return m_lent; }

 private:
  HRESULT CheckRequest(const ALLOCATOR_PROPERTIES& request) const noexcept;
  void MakeSamples();

  // Not on the cache line of the reference count, which every sample that comes back changes.
  alignas(64) CCritSec m_lock{"CMemAllocator", LockRank::kLeaf};
  ConditionVariable m_changed;  // a sample came back, or decommit
  ALLOCATOR_PROPERTIES m_properties{};
  MemoryBlock m_block;
  std::vector<std::unique_ptr<CMediaSample>> m_samples;
  CMediaSample* m_free = nullptr;
  LONG m_lent = 0;
  LONG m_waiters = 0;
  bool m_committed = false;
};

}  // namespace tarvex
