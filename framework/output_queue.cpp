// The output queue: construction, the thread's life, and the public operations.
#include "framework/output_queue.h"

#include <array>
#include <utility>
#include <vector>

#include "framework/com_boundary.h"
#include "framework/condition_variable.h"
#include "framework/queue_state.h"

namespace tarvex {

namespace {

// The destructor's patience, in milliseconds: for a thread that is about to come back by itself, for one
// that downstream's flush sends back, and for one that only has to end.
constexpr DWORD kGrace = 50;
constexpr DWORD kAfterFlush = 250;
constexpr DWORD kLast = 100;

}  // namespace

COutputQueue::COutputQueue(IPin* input, HRESULT* result, LONG batchSize, LONG listSize) {
  if (input == nullptr || batchSize <= 0) {
    *result = input == nullptr ? E_POINTER : E_INVALIDARG;
    return;
  }
  const auto memInput = QueryFor<IMemInputPin>(input);
  if (!memInput) {
    *result = E_NOINTERFACE;
    return;
  }
  m_state = std::make_shared<State>(input, memInput.Get(), batchSize, listSize);
  const HRESULT hr = m_thread.Start([state = m_state] { state->Run(); });
  if (FAILED(hr)) *result = hr;
}

/// One queue on its way to its end, step by step, so that several can go together.
class COutputQueue::Ending {
 public:
  explicit Ending(COutputQueue& queue) : m_queue(queue) {
    m_queue.m_state->Terminate();
    m_flushing = m_queue.m_state->TakeOverFlush();
    if (m_queue.m_thread && m_queue.m_thread.IsCurrent()) m_queue.m_thread.Abandon();
  }

  void WaitUntil(ULONGLONG deadline) {
    const ULONGLONG now = MonotonicMilliseconds();
    if (m_queue.m_thread) m_queue.m_thread.JoinFor(deadline > now ? static_cast<DWORD>(deadline - now) : 0);
  }
  void FreeFromDownstream() {
    if (!m_queue.m_thread || m_flushing || !m_queue.m_state->IsDelivering()) return;
    m_flushing = true;
    m_queue.m_state->Pin()->BeginFlush();
  }
  void EndFlush() {
    if (m_flushing) m_queue.m_state->Pin()->EndFlush();
  }
  void Abandon() {
    if (m_queue.m_thread) m_queue.m_thread.Abandon();
  }

  template <class Endings>
  static void Finish(Endings& endings) {
    ULONGLONG deadline = MonotonicMilliseconds() + kGrace;
    for (Ending& each : endings) each.WaitUntil(deadline);
    for (Ending& each : endings) each.FreeFromDownstream();
    deadline = MonotonicMilliseconds() + kAfterFlush;
    for (Ending& each : endings) each.WaitUntil(deadline);
    for (Ending& each : endings) each.EndFlush();
    deadline = MonotonicMilliseconds() + kLast;
    for (Ending& each : endings) each.WaitUntil(deadline);
    for (Ending& each : endings) each.Abandon();
  }

 private:
  COutputQueue& m_queue;
  bool m_flushing = false;  // downstream is
};

COutputQueue::~COutputQueue() {
  if (!m_state) return;
  std::array<Ending, 1> endings{Ending(*this)};
  Ending::Finish(endings);
}

void COutputQueue::End(std::span<const std::shared_ptr<COutputQueue>> queues) noexcept {
  // Without memory for the list each queue ends by itself.
  static_cast<void>(ComBoundary([&] {
    std::vector<Ending> endings;
    endings.reserve(queues.size());
    for (const auto& queue : queues) {
      if (queue->m_state) endings.emplace_back(*queue);
    }
    Ending::Finish(endings);
    return S_OK;
  }));
}

HRESULT COutputQueue::Receive(IMediaSample* sample) {
  auto owner = ComPtr<IMediaSample>::Attach(sample);
  if (sample == nullptr) return E_POINTER;
  if (!m_state) return E_UNEXPECTED;
  return ComBoundary([&] { return m_state->PutSample(std::move(owner)); });
}

HRESULT COutputQueue::Send(std::span<ComPtr<IMediaSample>> samples, Waking waking) {
  HRESULT hr = E_UNEXPECTED;
  if (m_state) hr = ComBoundary([&] { return m_state->PutReleased(samples, waking == Waking::kNow); });
  for (ComPtr<IMediaSample>& sample : samples) sample.Reset();
  return hr;
}

void COutputQueue::Wake() {
  if (m_state) m_state->WakeForWaiting();
}

void COutputQueue::SendAnyway() {
  if (m_state) m_state->ReleaseBatch();
}

void COutputQueue::EOS() {
  if (!m_state) return;
  static_cast<void>(ComBoundary([&] {
    m_state->PutEndOfStream();
    return S_OK;
  }));
}

void COutputQueue::NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
  if (!m_state) return;
  static_cast<void>(ComBoundary([&] {
    m_state->PutNewSegment(start, stop, rate);
    return S_OK;
  }));
}

void COutputQueue::BeginFlush() {
  if (m_state) m_state->BeginFlush();
}

void COutputQueue::EndFlush() {
  if (m_state) m_state->EndFlush();
}

void COutputQueue::Reset() {
  if (m_state) m_state->Reset();
}

COutputQueue::CallFromDownstream::CallFromDownstream() : m_state(State::PassingOnHere()) {
  if (m_state != nullptr) m_state->SetCalledBack(true);
}

COutputQueue::CallFromDownstream::~CallFromDownstream() {
  if (m_state != nullptr) m_state->SetCalledBack(false);
}

HRESULT COutputQueue::Refusal() const noexcept { return m_state ? m_state->Refusal() : E_UNEXPECTED; }

bool COutputQueue::IsIdle() const { return !m_state || m_state->IsIdle(); }

}  // namespace tarvex
