// What an output queue and its thread share: the waiting entries, the refusal, and the way downstream.
// Kept alive by both, so that a thread that was left behind never touches what is gone. Internal to
// COutputQueue.
#pragma once

#include <atomic>
#include <cstddef>
#include <vector>

#include "framework/com_ptr.h"
#include "framework/condition_variable.h"
#include "framework/critical_section.h"
#include "framework/output_queue.h"
#include "framework/ring_queue.h"

namespace tarvex {

/// All members are guarded by the lock, which is never held across a call downstream or the release of
/// a sample.
class COutputQueue::State {
 public:
  /// See COutputQueue; both pointers are held.
  State(IPin* pin, IMemInputPin* input, LONG batchSize, LONG listSize);

  /// The thread's procedure: passes entries on until Terminate.
  void Run();

  /// S_OK: queued. Otherwise the refusal, and the sample is released.
  HRESULT PutSample(ComPtr<IMediaSample> sample);
  /// The same for several and ReleaseBatch in one; those that were not taken are left to the caller. Unless
  /// `wakeNow`, the thread may go on sleeping for a while.
  HRESULT PutReleased(std::span<ComPtr<IMediaSample>> samples, bool wakeNow);
  /// Wakes the thread if it sleeps although it could take something.
  void WakeForWaiting();
  void PutEndOfStream();
  void PutNewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate);
  void ReleaseBatch();

  void BeginFlush();
  void EndFlush();
  void Reset();
  /// Drops everything; the thread ends as soon as it is back.
  void Terminate();

  /// Downstream was told to flush and not that it is over; that is the caller's now. At the end only.
  bool TakeOverFlush();

  /// The state whose work the calling thread is passing on, or null.
  static State* PassingOnHere() noexcept { return t_passingOn; }
  /// The thread that is passing on has called back, and waits.
  void SetCalledBack(bool on);

  bool IsIdle() const;
  bool IsDelivering() const;
  HRESULT Refusal() const noexcept { return m_refusal.load(std::memory_order_relaxed); }
  IPin* Pin() const noexcept { return m_pin.Get(); }

 private:
  struct Entry {
    enum class Kind { kSample, kEndOfStream, kNewSegment };
    Kind kind = Kind::kSample;
    ComPtr<IMediaSample> sample;
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    double rate = 1.0;
  };
  using Entries = RingQueue<Entry>;

  /// What is being passed on: samples, or one other entry. Used by the thread that is doing it only.
  struct Work {
    Entry control;
    bool isControl = false;
    bool oneByOne = false;
    std::vector<IMediaSample*> samples;  // a reference of each is held
    std::size_t done = 0;                // so many of them are passed on and released
    void ReleaseSamples() noexcept;
  };

  // A new segment and the end of the stream always have a place, even without memory.
  static constexpr std::size_t kControlPlaces = 2;

  bool CanTake() const noexcept;
  HRESULT Put(std::span<ComPtr<IMediaSample>> samples);
  void Take();
  std::size_t TakeReleased();
  bool Step();
  HRESULT PassOn(unsigned generation);
  HRESULT PassOnSamples();
  HRESULT PassOnOneByOne(unsigned generation);
  void PutControl(Entry entry);
  bool KeepFlushPassedOn();
  void Refuse(HRESULT hr);
  void DropEntries(bool keepEnd);
  void DropOneByOne(bool keepEnd);
  void WakeThread() noexcept;

  static thread_local State* t_passingOn;

  const ComPtr<IPin> m_pin;
  const ComPtr<IMemInputPin> m_input;
  const std::size_t m_batchSize;

  mutable CCritSec m_lock{"COutputQueue", LockRank::kLeaf};
  ConditionVariable m_wake;  // the thread: there is something to take, or the end
  ConditionVariable m_back;  // EndFlush: nothing is being passed on, or who does it waits for us
  Entries m_entries;
  Work m_work;
  std::size_t m_released = 0;     // entries at the front that do not wait for a full batch
  std::size_t m_unannounced = 0;  // bytes that came since the thread fell asleep
  // Written under the lock, and read without it as well: by those who send ...
  std::atomic<HRESULT> m_refusal{S_OK};
  // ... and by the thread that is passing on. Of flushes: a result from before one says nothing after it.
  std::atomic<unsigned> m_generation{0};
  DWORD m_delivererId = 0;  // the thread that is passing on, 0 for none
  bool m_calledBack = false;
  unsigned m_flushWaiters = 0;
  unsigned m_droppers = 0;  // threads in DropEntries
  bool m_threadSleeps = false;
  bool m_flushing = false;
  bool m_flushPassedOn = false;  // downstream knows of the flush, and not yet of its end
  bool m_terminated = false;
};

}  // namespace tarvex
