// Samples from a ring: taking, waiting for room, giving back.
#include "pins/output/sample_buffer.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#include "framework/com_boundary.h"
#include "framework/compiler.h"
#include "framework/message_error.h"
#include "pins/limits.h"

namespace tarvex {

CSampleBuffer::CSampleBuffer() : CMemAllocator("CSampleBuffer") {
  static_assert(sizeof(Sample) <= 2 * kCacheLine, "a thread that takes over a sample waits for each of them");
}

CSampleBuffer::~CSampleBuffer() = default;

HRESULT CSampleBuffer::Alloc() {
  const bool hadBlock = Block() != nullptr;
  HRESULT hr = ReserveBlock();
  if (BlockSize() > std::numeric_limits<std::uint32_t>::max()) hr = E_OUTOFMEMORY;
  // Samples of an earlier commit may still lie in the block; then the ring goes on with them.
  if (SUCCEEDED(hr) && !hadBlock) m_ring.Reset(static_cast<std::uint32_t>(BlockSize()));
  return hr;
}

void CSampleBuffer::Free() {
  m_free = nullptr;
  m_taken.Clear();
  m_silent = 0;
  m_samples.clear();
  m_ring.Reset(0);
  CMemAllocator::Free();
}

void CSampleBuffer::OnDecommit() {
  CMemAllocator::OnDecommit();
  AwaitAll();
  m_spaceFreed.WakeAll();
}

// Samples that are out keep the ring from now on.
void CSampleBuffer::OnLastRelease() noexcept {
  const CAutoLock hold(Lock());
  AwaitAll();
}

void CSampleBuffer::Set(bool& flag, bool on) noexcept {
  const CAutoLock hold(Lock());
  flag = on;
  if (on && m_waiters != 0) m_spaceFreed.WakeAll();
}

void CSampleBuffer::CancelWaits(bool on) noexcept { Set(m_cancelled, on); }

void CSampleBuffer::BeginFlush() noexcept { Set(m_flushing, true); }

void CSampleBuffer::EndFlush() noexcept { Set(m_flushing, false); }

// With the lock. All that came back up to the first that did not.
void CSampleBuffer::Collect() noexcept {
  constexpr std::size_t kAhead = 8;  // samples whose cache line is on its way from the thread that released them
  while (!m_taken.Empty() && m_taken.Front()->IsBack()) {
    if (m_taken.Size() > kAhead) FetchAhead(m_taken.At(kAhead));
    Recycle(*m_taken.Pop());
  }
  m_silent = std::min(m_silent, m_taken.Size());
}

// With the lock. Afterwards everybody who releases a sample says so, and the regions of all that are back are free.
// That of the last one may take the block and all samples along.
void CSampleBuffer::AwaitAll() noexcept {
  while (m_silent > 0) {
    Sample& sample = *m_taken.At(m_taken.Size() - m_silent);
    --m_silent;
    if (!sample.Await()) TakeBack(sample);
  }
}

// With the lock. A sample that somebody keeps must not keep the objects of those behind it.
void CSampleBuffer::ForgetReturned() noexcept {
  for (std::size_t left = m_taken.Size(); left > 0; --left) {
    Sample* sample = m_taken.Pop();
    if (sample->IsBack()) {
      Recycle(*sample);
    } else {
      m_taken.Push(sample);
    }
  }
}

// A sample without memory has given it back before.
void CSampleBuffer::TakeBack(Sample& sample) noexcept {
  if (sample.Buffer() == nullptr) return;
  m_bytesOut -= static_cast<std::size_t>(sample.Length());
  sample.SetBuffer(nullptr, 0);
  m_ring.Give(sample.region);
  sample.keeper.Reset();
  NoteReturned();
}

void CSampleBuffer::Recycle(Sample& sample) noexcept {
  TakeBack(sample);
  sample.SetNext(m_free);
  m_free = &sample;
}

CSampleBuffer::Sample* CSampleBuffer::FreeSample() {
  if (m_free == nullptr) {
    m_free = &m_samples.emplace_back(this);
  }
  return static_cast<Sample*>(m_free);
}

CSampleBuffer::Sample* CSampleBuffer::Take(std::size_t size) {
  Sample* sample = TakeIfThereIsRoom(size);
  if (sample == nullptr && m_bytesOut == 0 && LentCount() < limits::kSamplesOut) {
    throw MessageError("CSampleBuffer::GetSample size of buffer less than sample");
  }
  return sample;
}

// With the lock. Null when there is no room, also not where samples came back out of turn; the others are awaited then.
CSampleBuffer::Sample* CSampleBuffer::TakeIfThereIsRoom(std::size_t size) {
  Collect();
  Sample* sample = TakeNext(size);
  if (sample != nullptr) return sample;
  AwaitAll();
  Collect();
  if (m_taken.Size() >= 2 * static_cast<std::size_t>(LentCount())) ForgetReturned();
  return TakeNext(size);
}

// Null when there is none. The ring's front is used first, and again whenever all samples are back, so what lies
// behind the farthest that the ring has been used needs no memory.
CSampleBuffer::Sample* CSampleBuffer::TakeNext(std::size_t size) {
  if (!HasRoomFor(size)) return nullptr;
  m_taken.KeepFree(1);
  Sample* sample = FreeSample();
  if (!m_ring.Take(sample->region, size)) return nullptr;
  if (!CommitBlockTo(sample->region.end)) {
    m_ring.Give(sample->region);
    throw std::bad_alloc();
  }
  NoteTaken(*sample, Block() + sample->region.start, size);
  return sample;
}

bool CSampleBuffer::HasRoomFor(std::size_t size) const noexcept {
  return LentCount() < limits::kSamplesOut && size <= BlockSize() - m_bytesOut;
}

// The first of the free ones. There is room to note it.
void CSampleBuffer::NoteTaken(Sample& sample, BYTE* bytes, std::size_t size) noexcept {
  m_free = sample.Next();
  sample.SetBuffer(bytes, static_cast<LONG>(size));
  m_bytesOut += size;
  NoteLent();
  m_taken.Push(&sample);
}

// With the lock. A sample that is taken while others wait is awaited like those that were.
void CSampleBuffer::Lend(Sample& sample) noexcept {
  if (m_waiters != 0) {
    sample.Lend();
  } else {
    ++m_silent;
    sample.LendSilently();
  }
}

HRESULT CSampleBuffer::GetSample(CMediaSample** sample, std::size_t size, bool wait) {
  *sample = nullptr;
  const CAutoLock hold(Lock());
  for (;;) {
    if (!IsCommitted()) return VFW_E_NOT_COMMITTED;
    if (Sample* taken = Take(size); taken != nullptr) {
      Lend(*taken);
      *sample = taken;
      return S_OK;
    }
    if (!wait) return S_FALSE;
    if (m_cancelled || m_flushing) return VFW_E_WRONG_STATE;
    ++m_waiters;
    m_spaceFreed.Wait(Lock());
    --m_waiters;
  }
}

void CSampleBuffer::GetSamples(std::span<const std::size_t> sizes, std::vector<ComPtr<CMediaSample>>& samples) {
  const CAutoLock hold(Lock());
  if (!IsCommitted()) return;
  Collect();
  for (const std::size_t size : sizes) {
    Sample* sample = TakeNext(size);
    if (sample == nullptr) sample = TakeIfThereIsRoom(size);
    if (sample == nullptr) break;
    Lend(*sample);
    samples.push_back(ComPtr<CMediaSample>::Attach(sample));
  }
}

HRESULT CSampleBuffer::GetSampleOver(CMediaSample** sample, std::span<BYTE> bytes, ComPtr<IUnknown> keeper) {
  *sample = nullptr;
  const CAutoLock hold(Lock());
  if (!IsCommitted()) return VFW_E_NOT_COMMITTED;
  Collect();
  if (!HasRoomFor(bytes.size())) return S_FALSE;
  m_taken.KeepFree(1);
  Sample& taken = *FreeSample();
  taken.region = {};
  taken.keeper = std::move(keeper);
  NoteTaken(taken, bytes.data(), bytes.size());
  Lend(taken);
  *sample = &taken;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CSampleBuffer::GetBuffer(IMediaSample** ppBuffer, REFERENCE_TIME* /*pStartTime*/,
                                                   REFERENCE_TIME* /*pEndTime*/, DWORD dwFlags) {
  if (ppBuffer == nullptr) return E_POINTER;
  *ppBuffer = nullptr;
  return ComBoundary([&] {
    ALLOCATOR_PROPERTIES properties{};
    GetProperties(&properties);
    const bool wait = (dwFlags & AM_GBF_NOWAIT) == 0;
    CMediaSample* sample = nullptr;
    const HRESULT hr = GetSample(&sample, static_cast<std::size_t>(properties.cbBuffer), wait);
    *ppBuffer = sample;
    return hr == S_FALSE ? VFW_E_TIMEOUT : hr;
  });
}

// Called for samples that are awaited.
HRESULT STDMETHODCALLTYPE CSampleBuffer::ReleaseBuffer(IMediaSample* pBuffer) {
  if (pBuffer == nullptr) return E_POINTER;
  const CAutoLock hold(Lock());
  auto& sample = *static_cast<Sample*>(pBuffer);
  sample.Settle();
  TakeBack(sample);
  if (m_waiters != 0) m_spaceFreed.WakeAll();
  return S_OK;
}

}  // namespace tarvex
