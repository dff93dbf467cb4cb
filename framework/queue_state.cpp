// The output queue's entries and the way they go downstream.
#include "framework/queue_state.h"

#include <algorithm>
#include <numeric>
#include <thread>
#include <utility>

#include "framework/compiler.h"

namespace tarvex {

namespace {

// How long EndFlush waits for a thread that downstream's flush should have sent back at once.
constexpr DWORD kFlushWait = 500;

// What may lie in the queue without its thread being woken: each wake costs more than many samples do.
constexpr std::size_t kMuchSamples = 2048;
constexpr std::size_t kMuchBytes = 1024 * 1024;

// The thread may be ready and have to wait for a processor. Whenever so many more wait in the queue, the sender offers
// its own: what it sends meanwhile would go through memory that the caches have lost.
constexpr std::size_t kFarBehind = 2 * kMuchSamples;

// As many released samples are taken at once, so that the lock is not needed for each.
constexpr std::size_t kTakenAtOnce = 64;

// The worker has written to samples last: so far ahead they are fetched from its cache.
constexpr std::size_t kFetchedAhead = 4;

std::size_t TotalLength(std::span<const ComPtr<IMediaSample>> samples) {
  return std::accumulate(samples.begin(), samples.end(), std::size_t{0}, [](std::size_t sum, const auto& sample) {
    return sum + static_cast<std::size_t>(sample->GetActualDataLength());
  });
}

}  // namespace

thread_local COutputQueue::State* COutputQueue::State::t_passingOn = nullptr;

COutputQueue::State::State(IPin* pin, IMemInputPin* input, LONG batchSize, LONG listSize)
    : m_pin(pin),
      m_input(input),
      m_batchSize(static_cast<std::size_t>(batchSize)),
      m_entries(static_cast<std::size_t>(std::max<LONG>(listSize, 1)) + kControlPlaces) {
  m_work.samples.reserve(std::max(m_batchSize, kTakenAtOnce));
}

void COutputQueue::State::Work::ReleaseSamples() noexcept {
  for (; done < samples.size(); ++done) samples[done]->Release();
  samples.clear();
  done = 0;
}

// Once for each sleep: until it has the lock, the thread still looks asleep.
void COutputQueue::State::WakeThread() noexcept {
  if (!std::exchange(m_threadSleeps, false)) return;
  m_unannounced = 0;
  m_wake.WakeOne();
}

// Unreleased entries are samples only: whatever else is queued releases itself and all before it.
bool COutputQueue::State::CanTake() const noexcept {
  if (m_entries.Empty() || m_droppers != 0) return false;
  return m_released > 0 || m_entries.Size() >= m_batchSize;
}

void COutputQueue::State::Take() {
  std::size_t count = 1;
  m_work.oneByOne = m_released > 0;
  m_work.isControl = m_entries.Front().kind != Entry::Kind::kSample;
  if (m_work.isControl) {
    m_work.control = m_entries.Pop();
  } else if (m_work.oneByOne) {
    count = TakeReleased();
  } else {
    count = m_batchSize;
    for (std::size_t i = 0; i < count; ++i) m_work.samples.push_back(m_entries.Pop().sample.Detach());
  }
  m_released -= std::min(m_released, count);
}

std::size_t COutputQueue::State::TakeReleased() {
  const std::size_t most = std::min(m_released, kTakenAtOnce);
  std::size_t count = 0;
  for (; count < most && m_entries.Front().kind == Entry::Kind::kSample; ++count) {
    m_work.samples.push_back(m_entries.Pop().sample.Detach());
  }
  return count;
}

// Without the lock. Each is free again as soon as downstream is done with it, and what a flush overtakes
// does not go on.
HRESULT COutputQueue::State::PassOnOneByOne(unsigned generation) {
  HRESULT hr = S_OK;
  while (m_work.done < m_work.samples.size() && hr == S_OK && generation == m_generation) {
    IMediaSample* const sample = m_work.samples[m_work.done];
    if (m_work.done + kFetchedAhead < m_work.samples.size()) {
      FetchAhead(m_work.samples[m_work.done + kFetchedAhead]);
    }
    hr = m_input->Receive(sample);
    ++m_work.done;
    sample->Release();
  }
  return hr;
}

HRESULT COutputQueue::State::PassOnSamples() {
  LONG processed = 0;
  return m_input->ReceiveMultiple(m_work.samples.data(), static_cast<LONG>(m_work.samples.size()), &processed);
}

// Only samples can be refused. What a flush has overtaken since it was taken does not go on.
HRESULT COutputQueue::State::PassOn(unsigned generation) {
  if (generation != m_generation) return S_OK;
  if (!m_work.isControl) return m_work.oneByOne ? PassOnOneByOne(generation) : PassOnSamples();
  const Entry& entry = m_work.control;
  if (entry.kind == Entry::Kind::kEndOfStream) {
    m_pin->EndOfStream();
  } else {
    m_pin->NewSegment(entry.start, entry.stop, entry.rate);
  }
  return S_OK;
}

// Passes on one piece of work. With the lock held once, which is given up meanwhile. False when there
// was nothing.
bool COutputQueue::State::Step() {
  if (m_terminated || m_delivererId != 0 || !CanTake()) return false;
  State* const outer = std::exchange(t_passingOn, this);  // now, as a thread's first access takes its time
  Take();
  const unsigned generation = m_generation;
  m_delivererId = CurrentThreadId();
  m_lock.Unlock();
  const HRESULT hr = PassOn(generation);
  t_passingOn = outer;
  m_work.ReleaseSamples();
  m_lock.Lock();
  if (hr != S_OK && generation == m_generation) Refuse(hr);
  m_delivererId = 0;
  if (m_flushWaiters != 0) m_back.WakeAll();
  return true;
}

// Downstream wants nothing more: only the end of the stream stays queued, and that only when downstream
// does not know it.
void COutputQueue::State::Refuse(HRESULT hr) {
  m_refusal = hr;
  DropEntries(hr != VFW_E_SAMPLE_REJECTED_EOS);
}

// Drops what waits now. The lock, held once, is given up for each release, since a sample's allocator
// has a lock of its own. Nothing is passed on meanwhile, however much still waits.
void COutputQueue::State::DropEntries(bool keepEnd) {
  ++m_droppers;
  DropOneByOne(keepEnd);
  --m_droppers;
  if (CanTake()) WakeThread();
}

void COutputQueue::State::DropOneByOne(bool keepEnd) {
  const unsigned generation = m_generation;
  m_released = 0;
  for (std::size_t left = m_entries.Size(); left > 0 && !m_entries.Empty(); --left) {
    Entry entry = m_entries.Pop();
    m_released = std::min(m_released, m_entries.Size());  // another thread may have released all meanwhile
    if (keepEnd && entry.kind == Entry::Kind::kEndOfStream) {
      m_entries.Push(std::move(entry));
      continue;
    }
    m_lock.Unlock();
    entry = Entry{};
    m_lock.Lock();
    if (generation != m_generation) return;
  }
  if (keepEnd) m_released = m_entries.Size();
}

void COutputQueue::State::Run() {
  const CAutoLock hold(m_lock);
  while (!m_terminated) {
    if (Step()) continue;
    m_threadSleeps = true;
    m_unannounced = 0;
    m_wake.Wait(m_lock);
    m_threadSleeps = false;
  }
}

// With the lock held, which the caller gives up before it releases a sample that was not taken: the
// allocator has its own.
HRESULT COutputQueue::State::Put(std::span<ComPtr<IMediaSample>> samples) {
  if (m_terminated || m_refusal != S_OK) return m_terminated ? S_FALSE : Refusal();
  m_entries.KeepFree(samples.size() + kControlPlaces);  // all or none
  for (ComPtr<IMediaSample>& sample : samples) m_entries.Push(Entry{.sample = std::move(sample)});
  return S_OK;
}

HRESULT COutputQueue::State::PutSample(ComPtr<IMediaSample> sample) {
  const CAutoLock hold(m_lock);
  const HRESULT hr = Put(std::span(&sample, 1));
  if (hr == S_OK && CanTake()) WakeThread();
  return hr;
}

HRESULT COutputQueue::State::PutReleased(std::span<ComPtr<IMediaSample>> samples, bool wakeNow) {
  bool isFarBehind = false;
  {
    const CAutoLock hold(m_lock);
    const std::size_t bytes = m_threadSleeps ? TotalLength(samples) : 0;
    const std::size_t before = m_entries.Size();
    if (const HRESULT hr = Put(samples); hr != S_OK) return hr;
    m_released = m_entries.Size();
    isFarBehind = before / kFarBehind != m_released / kFarBehind;
    if (m_threadSleeps) {
      m_unannounced += bytes;
      if (wakeNow || m_unannounced >= kMuchBytes || m_released >= kMuchSamples) WakeThread();
    }
  }
  if (isFarBehind) std::this_thread::yield();
  return S_OK;
}

void COutputQueue::State::WakeForWaiting() {
  const CAutoLock hold(m_lock);
  if (CanTake()) WakeThread();
}

void COutputQueue::State::PutControl(Entry entry) {
  m_entries.Push(std::move(entry));
  m_released = m_entries.Size();
  WakeThread();
}

void COutputQueue::State::PutEndOfStream() {
  const CAutoLock hold(m_lock);
  if (m_terminated || m_flushing || m_refusal == VFW_E_SAMPLE_REJECTED_EOS) return;
  Entry entry;
  entry.kind = Entry::Kind::kEndOfStream;
  PutControl(std::move(entry));
}

void COutputQueue::State::PutNewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
  const CAutoLock hold(m_lock);
  if (m_terminated || m_refusal != S_OK) return;
  Entry entry;
  entry.kind = Entry::Kind::kNewSegment;
  entry.start = start;
  entry.stop = stop;
  entry.rate = rate;
  PutControl(std::move(entry));
}

void COutputQueue::State::ReleaseBatch() {
  const CAutoLock hold(m_lock);
  m_released = m_entries.Size();
  if (m_released != 0) WakeThread();
}

void COutputQueue::State::BeginFlush() {
  bool passOn = false;
  {
    const CAutoLock hold(m_lock);
    m_flushing = true;
    m_refusal = S_FALSE;
    ++m_generation;
    // Of a queue that has ended nobody may be left to end it for downstream.
    passOn = !m_terminated;
    DropEntries(false);
  }
  if (!passOn) return;
  m_pin->BeginFlush();
  if (!KeepFlushPassedOn()) m_pin->EndFlush();
}

// False when the queue was ended while downstream was told: then its end did not know of this flush.
bool COutputQueue::State::KeepFlushPassedOn() {
  const CAutoLock hold(m_lock);
  m_flushPassedOn = !m_terminated;
  return m_flushPassedOn;
}

void COutputQueue::State::EndFlush() {
  bool passOn = false;
  {
    const CAutoLock hold(m_lock);
    // On the thread that is passing on, waiting for its return would be waiting for ourselves.
    if (m_delivererId != CurrentThreadId()) {
      ++m_flushWaiters;
      m_back.WaitUntil(m_lock, kFlushWait, [this] { return m_delivererId == 0 || m_calledBack; });
      --m_flushWaiters;
    }
    // Last, since a queue that is being ended takes the flush over, and downstream may be told once only.
    passOn = std::exchange(m_flushPassedOn, false);
  }
  if (passOn) m_pin->EndFlush();
  const CAutoLock hold(m_lock);
  m_flushing = false;
  m_refusal = S_OK;
}

void COutputQueue::State::SetCalledBack(bool on) {
  const CAutoLock hold(m_lock);
  m_calledBack = on;
  if (m_flushWaiters != 0) m_back.WakeAll();
}

void COutputQueue::State::Reset() {
  const CAutoLock hold(m_lock);
  ++m_generation;
  DropEntries(false);
  if (!m_flushing) m_refusal = S_OK;
}

void COutputQueue::State::Terminate() {
  const CAutoLock hold(m_lock);
  m_terminated = true;
  ++m_generation;
  WakeThread();
  DropEntries(false);
}

bool COutputQueue::State::TakeOverFlush() {
  const CAutoLock hold(m_lock);
  return std::exchange(m_flushPassedOn, false);
}

bool COutputQueue::State::IsIdle() const {
  const CAutoLock hold(m_lock);
  return m_entries.Empty() && m_delivererId == 0;
}

bool COutputQueue::State::IsDelivering() const {
  const CAutoLock hold(m_lock);
  return m_delivererId != 0;
}

}  // namespace tarvex
