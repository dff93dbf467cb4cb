// The output queue: construction, the thread's life, and the public operations.
#include "framework/output_queue.h"

#include <utility>

#include "framework/com_boundary.h"
#include "framework/queue_state.h"

namespace tarvex {

namespace {

// The destructor's patience, in milliseconds: for a thread that is about to come back by itself, for one
// that downstream's flush sends back, and for one that only has to end.
constexpr DWORD kGrace = 50;
constexpr DWORD kAfterFlush = 250;
constexpr DWORD kLast = 100;

}  // namespace

COutputQueue::COutputQueue(IPin* input, HRESULT* result, bool autoMode, bool queue, LONG batchSize, bool batchExact,
                           LONG listSize, int priority, bool flushingOpt) {
  if (input == nullptr || batchSize <= 0) {
    *result = input == nullptr ? E_POINTER : E_INVALIDARG;
    return;
  }
  const auto memInput = QueryFor<IMemInputPin>(input);
  if (!memInput) {
    *result = E_NOINTERFACE;
    return;
  }
  const bool queued = autoMode ? memInput->ReceiveCanBlock() == S_OK : queue;
  m_state = std::make_shared<State>(input, memInput.Get(),
                                    State::Settings{queued, batchExact, flushingOpt, batchSize, listSize});
  if (!queued) return;
  const HRESULT hr = m_thread.Start([state = m_state] { state->Run(); }, priority);
  if (FAILED(hr)) *result = hr;
}

COutputQueue::~COutputQueue() {
  if (!m_state) return;
  m_state->Terminate();
  if (!m_thread) return;
  if (m_thread.IsCurrent()) {
    m_thread.Abandon();
    return;
  }
  if (m_thread.JoinFor(kGrace)) return;
  if (m_state->IsDelivering()) {
    m_state->Pin()->BeginFlush();
    const bool ended = m_thread.JoinFor(kAfterFlush);
    m_state->Pin()->EndFlush();
    if (ended) return;
  }
  if (!m_thread.JoinFor(kLast)) m_thread.Abandon();
}

HRESULT COutputQueue::Receive(IMediaSample* sample) {
  auto owner = ComPtr<IMediaSample>::Attach(sample);
  if (sample == nullptr) return E_POINTER;
  if (!m_state) return E_UNEXPECTED;
  HRESULT hr = ComBoundary([&] { return m_state->PutSample(std::move(owner)); });
  if (hr == S_OK && !m_state->IsQueued()) {
    m_state->PassOnHere();
    hr = m_state->Refusal();
  }
  return hr;
}

HRESULT COutputQueue::ReceiveMultiple(IMediaSample** samples, LONG count, LONG* processed) {
  HRESULT hr = S_OK;
  LONG taken = 0;
  for (LONG i = 0; i < count; ++i) {
    const HRESULT one = Receive(samples[i]);
    if (hr == S_OK) hr = one;
    if (hr == S_OK) ++taken;
  }
  if (processed != nullptr) *processed = taken;
  return hr;
}

void COutputQueue::SendAnyway() {
  if (!m_state) return;
  m_state->ReleaseBatch();
  if (!m_state->IsQueued()) m_state->PassOnHere();
}

void COutputQueue::EOS() {
  if (!m_state) return;
  static_cast<void>(ComBoundary([&] {
    m_state->PutEndOfStream();
    return S_OK;
  }));
  if (!m_state->IsQueued()) m_state->PassOnHere();
}

void COutputQueue::NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
  if (!m_state) return;
  static_cast<void>(ComBoundary([&] {
    m_state->PutNewSegment(start, stop, rate);
    return S_OK;
  }));
  if (!m_state->IsQueued()) m_state->PassOnHere();
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

bool COutputQueue::IsIdle() const { return !m_state || m_state->IsIdle(); }

bool COutputQueue::IsQueued() const noexcept { return m_state && m_state->IsQueued(); }

}  // namespace tarvex
