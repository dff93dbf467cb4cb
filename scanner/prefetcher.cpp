#include "scanner/prefetcher.h"

#include <algorithm>
#include <new>
#include <utility>

#include "framework/com_boundary.h"

namespace tarvex {

CPrefetcher::CPrefetcher(IAsyncReader* upstream, LONG size) : m_upstream(upstream), m_size(size) {}

CPrefetcher::~CPrefetcher() {
  if (!m_thread) return;
  bool isReading = false;
  {
    const CAutoLock hold(m_lock);
    m_ends = true;
    m_changed.WakeAll();
    isReading = m_isReading;
  }
  // It may be one that only a flush ends.
  if (isReading) m_upstream->BeginFlush();
  m_thread.Join();
  if (isReading) m_upstream->EndFlush();
}

CPrefetcher::Memory CPrefetcher::TakeMemory() noexcept {
  const auto spare = std::ranges::find_if(m_spares, [](const Memory& memory) { return memory != nullptr; });
  if (spare != m_spares.end()) return std::move(*spare);
  return Memory(new (std::nothrow) BYTE[2 * static_cast<std::size_t>(m_size)]);
}

void CPrefetcher::Return(Memory memory) noexcept {
  const CAutoLock hold(m_lock);
  const auto place = std::ranges::find_if(m_spares, [](const Memory& other) { return other == nullptr; });
  if (place != m_spares.end()) *place = std::move(memory);
}

void CPrefetcher::Forget() noexcept {
  while (m_count != 0) Return(std::move(m_pieces[--m_count].memory));
  m_isOn = false;
  m_isStale = m_isReading;
}

// Not while a read of something else takes its time: then who wants a piece is sooner done with it himself.
bool CPrefetcher::IsComing(LONGLONG position) const noexcept {
  return m_isOn && !m_isStale && m_first == position && m_next < m_end;
}

void CPrefetcher::Follow(LONGLONG position, LONGLONG end) noexcept {
  const CAutoLock hold(m_lock);
  if (m_flushing || (!m_thread && FAILED(m_thread.Start([this] { Run(); })))) return;
  if (!m_isOn || m_first != position) {
    Forget();
    m_first = m_next = position;
    m_isOn = true;
  }
  m_end = end;
  if (MayRead()) m_changed.WakeAll();
}

bool CPrefetcher::IsReading(LONGLONG position) const {
  const CAutoLock hold(m_lock);
  return m_count == 0 && IsComing(position);
}

bool CPrefetcher::Take(LONGLONG position, Piece& piece) {
  const CAutoLock hold(m_lock);
  m_changed.WaitUntil(m_lock, INFINITE, [&] { return m_count != 0 || !IsComing(position); });
  if (m_count == 0 || m_first != position) return false;
  piece = std::exchange(m_pieces.front(), {});
  std::rotate(m_pieces.begin(), m_pieces.begin() + 1, m_pieces.end());
  --m_count;
  m_first += piece.bytes;
  m_changed.WakeAll();
  return true;
}

void CPrefetcher::SetFlushing(bool on) noexcept {
  const CAutoLock hold(m_lock);
  m_flushing = on;
  if (!on) return;
  Forget();  // whoever flushes mostly goes on elsewhere, and what blocked may block again
  m_changed.WakeAll();
}

void CPrefetcher::Run() {
  const CAutoLock hold(m_lock);
  for (;;) {
    m_changed.WaitUntil(m_lock, INFINITE, [this] { return m_ends || MayRead(); });
    if (m_ends) return;
    ReadOne();
    m_changed.WakeAll();
  }
}

// With the lock, given up meanwhile.
void CPrefetcher::ReadOne() {
  Piece piece{TakeMemory(), static_cast<LONG>(std::min<LONGLONG>(m_size, m_end - m_next))};
  const LONGLONG position = m_next;
  m_isReading = true;
  m_lock.Unlock();
  const HRESULT result = ComBoundary([&] {
    return piece.memory ? m_upstream->SyncRead(position, piece.bytes, piece.memory.get() + m_size) : E_OUTOFMEMORY;
  });
  m_lock.Lock();
  m_isReading = false;
  if (std::exchange(m_isStale, false)) return Return(std::move(piece.memory));
  m_isOn = result == S_OK;
  if (!m_isOn) return;
  m_next += piece.bytes;
  m_pieces[m_count++] = std::move(piece);
}

}  // namespace tarvex
