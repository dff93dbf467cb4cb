// The standard allocator: equal samples over one contiguous block.
#include "framework/mem_allocator.h"

#include <cstdint>
#include <limits>
#include <new>

#include "framework/com_boundary.h"

namespace tarvex {

namespace {

/// Bytes from one buffer's prefix to the next one's.
std::int64_t Stride(const ALLOCATOR_PROPERTIES& p) { return std::int64_t{p.cbBuffer} + p.cbPrefix; }

bool IsPowerOfTwo(LONG value) { return value > 0 && (value & (value - 1)) == 0; }

constexpr LONG kPage = 4096;  // the block itself starts at a page

}  // namespace

CMemAllocator::CMemAllocator(const char* name, IUnknown* outer) : UnknownImpl(name, outer) {}

// Nobody is left to wait or to hold a sample: each of them holds a reference by now.
CMemAllocator::~CMemAllocator() = default;

HRESULT STDMETHODCALLTYPE CMemAllocator::NonDelegatingQueryInterface(REFIID iid, void** out) {
  if (iid == IID_IMemAllocator) return GiveInterface(static_cast<IMemAllocator*>(this), out);
  return CUnknown::NonDelegatingQueryInterface(iid, out);
}

HRESULT CMemAllocator::CheckRequest(const ALLOCATOR_PROPERTIES& request) const noexcept {
  if (!IsPowerOfTwo(request.cbAlign) || request.cbAlign > kPage) return VFW_E_BADALIGN;
  if (request.cBuffers < 0 || request.cbBuffer < 0 || request.cbPrefix < 0) return E_INVALIDARG;
  if (m_committed) return VFW_E_ALREADY_COMMITTED;
  if (m_lent != 0) return VFW_E_BUFFERS_OUTSTANDING;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CMemAllocator::SetProperties(ALLOCATOR_PROPERTIES* pRequest, ALLOCATOR_PROPERTIES* pActual) {
  if (pRequest == nullptr || pActual == nullptr) return E_POINTER;
  const CAutoLock hold(m_lock);
  const HRESULT hr = CheckRequest(*pRequest);
  if (FAILED(hr)) return hr;
  ALLOCATOR_PROPERTIES rounded = *pRequest;
  const std::int64_t align = rounded.cbAlign;
  const std::int64_t size = (Stride(rounded) + align - 1) / align * align - rounded.cbPrefix;
  if (size > std::numeric_limits<LONG>::max()) return E_INVALIDARG;
  rounded.cbBuffer = static_cast<LONG>(size);
  m_properties = rounded;
  *pActual = rounded;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CMemAllocator::GetProperties(ALLOCATOR_PROPERTIES* pProps) {
  if (pProps == nullptr) return E_POINTER;
  const CAutoLock hold(m_lock);
  *pProps = m_properties;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE CMemAllocator::Commit() {
  return ComBoundary([&] {
    const CAutoLock hold(m_lock);
    if (m_committed) return S_OK;
    if (m_properties.cBuffers <= 0 || m_properties.cbBuffer <= 0) return VFW_E_SIZENOTSET;
    const HRESULT hr = Alloc();
    if (SUCCEEDED(hr)) m_committed = true;
    return hr;
  });
}

HRESULT STDMETHODCALLTYPE CMemAllocator::Decommit() {
  const CAutoLock hold(m_lock);
  if (!m_committed) return S_OK;
  m_committed = false;
  OnDecommit();
  if (m_lent == 0) Free();
  return S_OK;
}

HRESULT CMemAllocator::Alloc() {
  const HRESULT hr = ReserveBlock();
  if (FAILED(hr) || CommitBlockTo(BlockSize())) return hr;
  m_block.Free();
  return E_OUTOFMEMORY;
}

HRESULT CMemAllocator::ReserveBlock() {
  // After a decommit the block stays while samples are out, and the properties cannot have changed.
  if (m_block.Data() != nullptr) return S_OK;
  const std::int64_t size = Stride(m_properties) * m_properties.cBuffers;
  if (static_cast<std::uint64_t>(size) > std::numeric_limits<std::size_t>::max() / 2) return E_OUTOFMEMORY;
  return m_block.Reserve(static_cast<std::size_t>(size)) ? S_OK : E_OUTOFMEMORY;
}

void CMemAllocator::MakeSamples() {
  m_samples.reserve(static_cast<std::size_t>(m_properties.cBuffers));
  BYTE* region = m_block.Data() + m_properties.cbPrefix;
  while (m_samples.size() < static_cast<std::size_t>(m_properties.cBuffers)) {
    m_samples.push_back(std::make_unique<CMediaSample>(this, region, m_properties.cbBuffer));
    m_samples.back()->SetNext(m_free);
    m_free = m_samples.back().get();
    region += Stride(m_properties);
  }
}

void CMemAllocator::Free() {
  m_free = nullptr;
  m_samples.clear();
  m_block.Free();
}

void CMemAllocator::OnDecommit() {
  if (m_waiters != 0) m_changed.WakeAll();
}

HRESULT STDMETHODCALLTYPE CMemAllocator::GetBuffer(IMediaSample** ppBuffer, REFERENCE_TIME* /*pStartTime*/,
                                                   REFERENCE_TIME* /*pEndTime*/, DWORD dwFlags) {
  if (ppBuffer == nullptr) return E_POINTER;
  *ppBuffer = nullptr;
  return ComBoundary([&] {
    const CAutoLock hold(m_lock);
    if (!m_committed) return VFW_E_NOT_COMMITTED;
    // Made with the first use, so that an allocator that divides its block differently has none.
    if (m_samples.empty()) MakeSamples();
    const auto ready = [this] { return m_free != nullptr || !m_committed; };
    if (!ready() && (dwFlags & AM_GBF_NOWAIT) != 0) return VFW_E_TIMEOUT;
    ++m_waiters;
    m_changed.WaitUntil(m_lock, INFINITE, ready);
    --m_waiters;
    if (!m_committed) return VFW_E_NOT_COMMITTED;
    CMediaSample* sample = m_free;
    m_free = sample->Next();
    NoteLent();
    sample->Lend();
    *ppBuffer = sample;
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE CMemAllocator::ReleaseBuffer(IMediaSample* pBuffer) {
  if (pBuffer == nullptr) return E_POINTER;
  const CAutoLock hold(m_lock);
  auto* sample = static_cast<CMediaSample*>(pBuffer);
  sample->SetNext(m_free);
  m_free = sample;
  if (m_waiters != 0) m_changed.WakeOne();
  NoteReturned();
  return S_OK;
}

void CMemAllocator::NoteReturned() {
  --m_lent;
  if (m_lent == 0 && !m_committed) Free();
}

}  // namespace tarvex
