// The worker's way from a frame's bytes to the queue of its pin: takes a sample from the ring, fills it, and collects
// samples that go into the queue together. A part of the output pin. The worker sends; application threads make and
// take away the ring and the queue.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "framework/com_ptr.h"
#include "framework/critical_section.h"
#include "framework/output_queue.h"
#include "pins/output/frame_memory.h"
#include "pins/output/pass_control.h"
#include "pins/output/sample_buffer.h"
#include "scanner/frames/frame_info.h"

namespace tarvex {

/// Waits here: the worker in GetSample, for room in the ring (see CSampleBuffer).
class SampleSender {
 public:
  /// `pass` is told before a wait. Both live as long as the worker calls.
  SampleSender(PassControl& pass, FrameMemory& memory) : m_pass(pass), m_memory(memory) {}

  // Any thread.
  /// Null takes it away. The former one passes on nothing more.
  void SetQueue(std::shared_ptr<COutputQueue> queue);
  std::shared_ptr<COutputQueue> Queue() const;
  /// Null takes it away.
  void SetBuffer(ComPtr<CSampleBuffer> buffer);
  ComPtr<CSampleBuffer> Buffer() const;

  // The worker, or another thread while there is none.
  bool HasQueue() { return CurrentRoute().queue != nullptr; }
  /// Frames of these sizes come next: samples for them are taken in one go, as far as there is room. Throws
  /// std::bad_alloc.
  void Reserve(std::span<const std::size_t> sizes);
  void DropReserved() noexcept;
  /// A sample of exactly `size` bytes, with a reference; waits for room. VFW_E_NO_ALLOCATOR and what
  /// CSampleBuffer::GetSample answers and throws.
  HRESULT GetSample(CMediaSample** sample, std::size_t size);
  /// A sample over a frame's bytes where they lie, which is not to be filled; null where they have to be copied. Fails
  /// with VFW_E_NOT_COMMITTED.
  HRESULT GetSampleOver(CMediaSample** sample, const std::uint8_t* data, std::size_t size);
  /// The next GetSample of this size does not wait. Throws std::bad_alloc.
  bool HasRoomFor(std::size_t size);
  /// Behind what was sent before. What COutputQueue::Receive answers; VFW_E_WRONG_STATE without a queue.
  HRESULT Send(ComPtr<IMediaSample> sample);
  /// The same behind SendUnsent, for a sample that somebody waits for: its queue's thread is woken at once.
  HRESULT SendNow(ComPtr<IMediaSample> sample);
  /// What was sent is in the queue. What COutputQueue::Receive answers.
  HRESULT SendUnsent();
  /// The same, and the queue passes on all there is. What is reserved goes back.
  void SendAll();

 private:
  /// Where a sample comes from and goes to.
  struct Route {
    std::shared_ptr<COutputQueue> queue;
    ComPtr<CSampleBuffer> buffer;
  };

  const Route& CurrentRoute() {
    if (!m_route.queue || m_routeChanged.load(std::memory_order_acquire)) LookUpRoute();
    return m_route;
  }
  void LookUpRoute();
  bool TakeReserved(CMediaSample** sample, std::size_t size);

  PassControl& m_pass;
  FrameMemory& m_memory;

  mutable CCritSec m_lock{"SampleSender", LockRank::kPinStream};
  // Null while the pin is inactive or unconnected. Shared with calls in progress.
  std::shared_ptr<COutputQueue> m_pOutputQ;
  ComPtr<CSampleBuffer> m_sampleBuffer;    // null while the pin is unconnected
  std::atomic<bool> m_routeChanged{true};  // written under the lock

  // The worker's. It keeps the route until it has to wait.
  Route m_route;
  std::vector<ComPtr<IMediaSample>> m_unsent;    // on the way to the route's queue
  std::vector<ComPtr<CMediaSample>> m_reserved;  // for the next frames, from m_nextReserved on
  std::size_t m_nextReserved = 0;
};

}  // namespace tarvex
