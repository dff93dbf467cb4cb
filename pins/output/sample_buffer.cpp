// Samples from a ring: taking, waiting for room, giving back.
#include "pins/output/sample_buffer.h"

#include <new>
#include <utility>

#include "framework/com_boundary.h"
#include "framework/message_error.h"
#include "scanner/limits.h"

namespace tarvex {

class CSampleBuffer::Sample final : public CMediaSample {
 public:
  explicit Sample(IMemAllocator* allocator) noexcept : CMediaSample(allocator, nullptr, 0) {}

  RingRegions::Region region;
};

/// The references that samples hold, taken together, also when there is no memory for all of them.
class CSampleBuffer::References {
 public:
  explicit References(CSampleBuffer& buffer) noexcept : m_buffer(buffer) {}
  ~References() { m_buffer.AddReferences(m_count); }
  References(const References&) = delete;
  References& operator=(const References&) = delete;

  void Add() noexcept { ++m_count; }

 private:
  CSampleBuffer& m_buffer;
  ULONG m_count = 0;
};

CSampleBuffer::CSampleBuffer() : CMemAllocator("CSampleBuffer") {
  static_assert(sizeof(Sample) <= 2 * kCacheLine, "a thread that takes over a sample waits for each of them");
}

CSampleBuffer::~CSampleBuffer() = default;

HRESULT CSampleBuffer::Alloc() {
  const bool hadBlock = Block() != nullptr;
  const HRESULT hr = ReserveBlock();
  // Samples of an earlier commit may still lie in the block; then the ring goes on with them.
  if (SUCCEEDED(hr) && !hadBlock) m_ring.Reset(BlockSize());
  if (SUCCEEDED(hr)) m_isExpected = false;
  return hr;
}

void CSampleBuffer::Free() {
  m_free = nullptr;
  m_samples.clear();
  m_ring.Reset(0);
  CMemAllocator::Free();
}

void CSampleBuffer::OnDecommit() {
  CMemAllocator::OnDecommit();
  m_isExpected = true;
  Collect();
  m_spaceFreed.WakeAll();
}

void CSampleBuffer::Set(bool& flag, bool on) noexcept {
  const CAutoLock hold(Lock());
  flag = on;
  if (on && m_waiters != 0) m_spaceFreed.WakeAll();
}

void CSampleBuffer::CancelWaits(bool on) noexcept { Set(m_cancelled, on); }

void CSampleBuffer::BeginFlush() noexcept { Set(m_flushing, true); }

void CSampleBuffer::EndFlush() noexcept { Set(m_flushing, false); }

// With the lock. True when there was any.
bool CSampleBuffer::Collect() {
  if (m_returned == nullptr) return false;
  CMediaSample* first = m_returned.exchange(nullptr);
  for (CMediaSample* next = first; next != nullptr;) {
    auto* sample = static_cast<Sample*>(std::exchange(next, next->Next()));
    m_ring.Give(sample->region);
    sample->SetNext(m_free);
    m_free = sample;
    NoteReturned();  // the last one may take the block and all samples along
  }
  return true;
}

CSampleBuffer::Sample* CSampleBuffer::FreeSample() {
  if (m_free == nullptr) {
    m_samples.push_back(std::make_unique<Sample>(this));
    m_free = m_samples.back().get();
  }
  return static_cast<Sample*>(m_free);
}

CSampleBuffer::Sample* CSampleBuffer::Take(std::size_t size) {
  Collect();
  Sample* sample = TakeIfThereIsRoom(size);
  if (sample == nullptr && m_ring.IsEmpty() && LentCount() < limits::kSamplesOut) {
    throw MessageError("CSampleBuffer::GetSample size of buffer less than sample");
  }
  return sample;
}

// Null when there is none. The ring's front is used first, and again whenever all samples are back, so what lies
// behind the farthest that the ring has been used needs no memory.
CSampleBuffer::Sample* CSampleBuffer::TakeIfThereIsRoom(std::size_t size) {
  if (LentCount() >= limits::kSamplesOut) return nullptr;
  Sample* sample = FreeSample();
  if (!m_ring.Take(sample->region, size)) return nullptr;
  if (!CommitBlockTo(sample->region.end)) {
    m_ring.Give(sample->region);
    throw std::bad_alloc();
  }
  m_free = sample->Next();
  sample->SetBuffer(Block() + sample->region.start, static_cast<LONG>(size));
  NoteLent();
  return sample;
}

// With the lock, given up meanwhile.
void CSampleBuffer::WaitForRoom() {
  ++m_waiters;
  m_isExpected = true;
  if (!Collect()) m_spaceFreed.Wait(Lock());
  --m_waiters;
  m_isExpected = m_waiters != 0 || !IsCommitted();
}

HRESULT CSampleBuffer::GetSample(IMediaSample** sample, std::size_t size, bool wait) {
  *sample = nullptr;
  const CAutoLock hold(Lock());
  for (;;) {
    if (!IsCommitted()) return VFW_E_NOT_COMMITTED;
    if (Sample* taken = Take(size); taken != nullptr) {
      *sample = taken->Lend();
      return S_OK;
    }
    if (!wait) return S_FALSE;
    if (m_cancelled || m_flushing) return VFW_E_WRONG_STATE;
    WaitForRoom();
  }
}

void CSampleBuffer::GetSamples(std::span<const std::size_t> sizes, std::vector<ComPtr<IMediaSample>>& samples) {
  const CAutoLock hold(Lock());
  if (!IsCommitted()) return;
  Collect();
  References references(*this);
  for (const std::size_t size : sizes) {
    Sample* sample = TakeIfThereIsRoom(size);
    if (sample == nullptr) break;
    samples.push_back(ComPtr<IMediaSample>::Attach(sample->LendCounted()));
    references.Add();
  }
}

HRESULT STDMETHODCALLTYPE CSampleBuffer::GetBuffer(IMediaSample** ppBuffer, REFERENCE_TIME* /*pStartTime*/,
                                                   REFERENCE_TIME* /*pEndTime*/, DWORD dwFlags) {
  if (ppBuffer == nullptr) return E_POINTER;
  *ppBuffer = nullptr;
  return ComBoundary([&] {
    ALLOCATOR_PROPERTIES properties{};
    GetProperties(&properties);
    const bool wait = (dwFlags & AM_GBF_NOWAIT) == 0;
    const HRESULT hr = GetSample(ppBuffer, static_cast<std::size_t>(properties.cbBuffer), wait);
    return hr == S_FALSE ? VFW_E_TIMEOUT : hr;
  });
}

HRESULT STDMETHODCALLTYPE CSampleBuffer::ReleaseBuffer(IMediaSample* pBuffer) {
  if (pBuffer == nullptr) return E_POINTER;
  auto* sample = static_cast<Sample*>(pBuffer);
  CMediaSample* first = m_returned.load(std::memory_order_relaxed);
  do {
    sample->SetNext(first);
  } while (!m_returned.compare_exchange_weak(first, sample));
  if (!m_isExpected) return S_OK;
  const CAutoLock hold(Lock());
  Collect();
  if (m_waiters != 0) m_spaceFreed.WakeAll();
  return S_OK;
}

}  // namespace tarvex
