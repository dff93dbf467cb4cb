// The queue between an output pin and the pin downstream: takes samples, end of stream and new segments in order
// and passes them on, on a thread of its own. Made by the output pin while it is active; the worker feeds it, and
// application threads flush and end it.
#pragma once

#include <memory>
#include <span>

#include "framework/com_ptr.h"
#include "framework/platform/platform.h"
#include "framework/thread.h"

namespace tarvex {

/// Waits here, and what ends each: the queue's thread for something to pass on (a call of this class or
/// destruction); EndFlush for the thread to come back from downstream (downstream's flush; limited);
/// destruction for the same (limited, see the destructor).
///
/// Every method may be called on any thread, the queue's own included: an application may seek or stop
/// from inside its sample callback.
class COutputQueue {
 public:
  /// `input` is the connected pin downstream; it must offer IMemInputPin. `*result` receives a failure
  /// and is untouched otherwise; nothing but destruction may follow one. Throws std::bad_alloc.
  /// batchSize   so many samples are passed on together, and no fewer, unless they are released before
  /// listSize    room made at the start, in entries; the queue grows when it must
  COutputQueue(IPin* input, HRESULT* result, LONG batchSize, LONG listSize);

  /// Drops what waits and ends the thread. A thread inside downstream's Receive is waited for a moment,
  /// then freed by flushing downstream, and as a last resort left behind: it owns all it touches, passes
  /// on nothing more, and keeps the module loaded until it ends. The whole takes less than half a second.
  /// A flush that was begun and not ended is ended for downstream.
  ~COutputQueue();
  /// The same for several queues in the time of one, ahead of their destruction. They pass on nothing more.
  /// Nobody else may end or destroy them meanwhile.
  static void End(std::span<const std::shared_ptr<COutputQueue>> queues) noexcept;
  COutputQueue(const COutputQueue&) = delete;
  COutputQueue& operator=(const COutputQueue&) = delete;

  /// Takes over the caller's reference on the sample, in any case. S_OK when it was queued. S_FALSE while
  /// flushing. After downstream has answered anything but S_OK, that answer: all samples are dropped from
  /// then on, until a flush or Reset. E_POINTER; E_OUTOFMEMORY.
  HRESULT Receive(IMediaSample* sample);

  /// Who wakes a sleeping thread for samples that are sent: the sender at once, or, when that can wait, the sender
  /// no later than much is there; then the caller calls Wake before it waits for anything itself.
  enum class Waking { kNow, kWhenMuch };
  /// Receive and SendAnyway in one, for several samples in order, of which each is null afterwards. All are taken
  /// or none; then what Receive answers.
  HRESULT Send(std::span<ComPtr<IMediaSample>> samples, Waking waking);
  /// Wakes a thread that sleeps although there is something for it.
  void Wake();

  /// Lets what is queued now go without waiting for a full batch. Samples released this way are passed on
  /// one by one, so that each is free again as soon as downstream is done with it.
  void SendAnyway();

  /// Queued behind the samples. End of stream is passed on even after a refusal, so that downstream can
  /// complete, unless the refusal said that downstream has seen it (VFW_E_SAMPLE_REJECTED_EOS).
  void EOS();
  void NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate);

  /// Drops what waits and refuses samples; downstream begins to flush.
  void BeginFlush();
  /// Waits until the thread is back from downstream, ends downstream's flush and takes samples again.
  void EndFlush();
  /// Forgets a refusal, for a new start without a flush. What waits is dropped.
  void Reset();

  /// What a sample would be answered now, as Receive says it.
  HRESULT Refusal() const noexcept;
  /// Nothing waits and nothing is being passed on.
  bool IsIdle() const;

  /// While it lives, a flush does not wait for the calling thread to come back from downstream. For calls
  /// from downstream that wait for somebody who may be flushing. Any thread.
  class CallFromDownstream;

 private:
  class State;
  class Ending;
  std::shared_ptr<State> m_state;
  Thread m_thread;  // shares the state, never this object
};

class [[nodiscard]] COutputQueue::CallFromDownstream {
 public:
  CallFromDownstream();
  ~CallFromDownstream();
  CallFromDownstream(const CallFromDownstream&) = delete;
  CallFromDownstream& operator=(const CallFromDownstream&) = delete;

 private:
  State* const m_state;  // of the queue that passes on by this thread; null for none
};

}  // namespace tarvex
