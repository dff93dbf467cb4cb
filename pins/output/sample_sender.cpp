// Samples from the ring, and their way into the queue some at a time.
#include "pins/output/sample_sender.h"

#include <utility>

namespace tarvex {

namespace {

// So many samples go into the queue together: few enough to come soon, many enough to share the lock's cost.
constexpr std::size_t kMostUnsent = 32;

}  // namespace

// The former queue ends without the lock, since its end may take a moment and call downstream.
void SampleSender::SetQueue(std::shared_ptr<COutputQueue> queue) {
  {
    const CAutoLock hold(m_lock);
    m_pOutputQ.swap(queue);
    m_routeChanged = true;
  }
  // A call in progress on another thread may keep it for a moment longer; what waits must not go on.
  if (queue) queue->Reset();
}

std::shared_ptr<COutputQueue> SampleSender::Queue() const {
  const CAutoLock hold(m_lock);
  return m_pOutputQ;
}

// The former one is released without the lock.
void SampleSender::SetBuffer(ComPtr<CSampleBuffer> buffer) {
  const CAutoLock hold(m_lock);
  m_sampleBuffer.Swap(buffer);
  m_routeChanged = true;
}

ComPtr<CSampleBuffer> SampleSender::Buffer() const {
  const CAutoLock hold(m_lock);
  return m_sampleBuffer;
}

// Looked up once for many frames. The worker keeps it until it has to wait, or until it is another one; then what
// was meant for the former is dropped, as that queue drops what it has.
void SampleSender::LookUpRoute() {
  m_unsent.clear();
  DropReserved();
  Route route;
  {
    const CAutoLock hold(m_lock);
    m_routeChanged.store(false, std::memory_order_relaxed);
    route = {m_pOutputQ, m_sampleBuffer};
  }
  std::swap(m_route, route);
}

void SampleSender::Reserve(std::span<const std::size_t> sizes) {
  DropReserved();
  const auto& buffer = CurrentRoute().buffer;
  if (!buffer) return;
  m_reserved.reserve(sizes.size());
  buffer->GetSamples(sizes, m_reserved);
}

void SampleSender::DropReserved() noexcept {
  m_reserved.clear();
  m_nextReserved = 0;
}

// Without a ring GetSample fails at once.
bool SampleSender::HasRoomFor(std::size_t size) {
  Reserve(std::span(&size, 1));
  return !m_reserved.empty() || !m_route.buffer;
}

// A frame may have been dropped, or have become larger; then the others' samples are for nobody.
bool SampleSender::TakeReserved(CMediaSample** sample, std::size_t size) {
  if (m_nextReserved == m_reserved.size()) return false;
  const bool fits = static_cast<std::size_t>(m_reserved[m_nextReserved]->Length()) == size;
  if (fits) {
    *sample = m_reserved[m_nextReserved++].Detach();
  } else {
    DropReserved();
  }
  return fits;
}

HRESULT SampleSender::GetSample(CMediaSample** sample, std::size_t size) {
  const Route& route = CurrentRoute();
  if (TakeReserved(sample, size)) return S_OK;
  if (!route.buffer) return VFW_E_NO_ALLOCATOR;
  const HRESULT hr = route.buffer->GetSample(sample, size, false);
  if (hr != S_FALSE) return hr;
  const auto buffer = route.buffer;  // the route goes before the wait
  m_pass.BeforeWait();
  return buffer->GetSample(sample, size, true);
}

HRESULT SampleSender::GetSampleOver(CMediaSample** sample, const std::uint8_t* data, std::size_t size) {
  *sample = nullptr;
  const auto& buffer = CurrentRoute().buffer;
  if (!buffer) return S_OK;
  ComPtr<IUnknown> keeper = m_memory.Keep(std::span(data, size));
  if (!keeper) return S_OK;
  return buffer->GetSampleOver(sample, std::span(const_cast<BYTE*>(data), size), std::move(keeper));
}

// The queue's thread is woken when much is there or when the worker has to wait.
HRESULT SampleSender::Send(ComPtr<IMediaSample> sample) {
  const Route& route = CurrentRoute();
  if (!route.queue) return VFW_E_WRONG_STATE;
  m_unsent.push_back(std::move(sample));
  return m_unsent.size() < kMostUnsent ? route.queue->Refusal() : SendUnsent();
}

HRESULT SampleSender::SendNow(ComPtr<IMediaSample> sample) {
  const Route& route = CurrentRoute();
  if (!route.queue) return VFW_E_WRONG_STATE;
  return route.queue->Send(std::span(&sample, 1), COutputQueue::Waking::kNow);
}

HRESULT SampleSender::SendUnsent() {
  if (m_unsent.empty()) return S_OK;
  HRESULT hr = S_OK;
  if (const Route& route = CurrentRoute(); route.queue && !m_unsent.empty()) {
    hr = route.queue->Send(m_unsent, COutputQueue::Waking::kWhenMuch);
  }
  m_unsent.clear();
  return hr;
}

void SampleSender::SendAll() {
  static_cast<void>(SendUnsent());
  DropReserved();
  m_route = {};
  if (const auto queue = Queue(); queue) queue->Wake();
}

}  // namespace tarvex
