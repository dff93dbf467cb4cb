#include "scanner/source/prefetcher.h"

#include <algorithm>
#include <utility>

#include "framework/com_boundary.h"

namespace tarvex {

Prefetcher::Prefetcher(IAsyncReader* upstream, LONG size)
    : m_upstream(upstream), m_size(size), m_pool(2 * static_cast<std::size_t>(size)) {}

Prefetcher::~Prefetcher() {
  if (!m_thread) return;
  bool isReading = false;
  {
    const CAutoLock hold(m_lock);
    m_ends = true;
    m_changed.WakeAll();
    isReading = m_isReading;
  }
  // The read may be one that only a flush ends.
  if (isReading) m_upstream->BeginFlush();
  m_thread.Join();
  if (isReading) m_upstream->EndFlush();
}

void Prefetcher::Forget() noexcept {
  while (m_count != 0) m_pieces[--m_count] = {};
  m_isOn = false;
  m_isStale = m_isReading;
  m_isClaimed = false;
}

// False while a read that nobody wants any more is still running: the caller reads the piece sooner by itself.
bool Prefetcher::IsComing(LONGLONG position) const noexcept {
  return m_isOn && !m_isStale && m_first == position && m_first < m_end && !IsFirstThere();
}

void Prefetcher::Follow(LONGLONG position, LONGLONG end) noexcept {
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

bool Prefetcher::IsReading(LONGLONG position) const {
  const CAutoLock hold(m_lock);
  return IsComing(position);
}

bool Prefetcher::Take(LONGLONG position, Piece& piece) {
  const CAutoLock hold(m_lock);
  m_changed.WaitUntil(m_lock, INFINITE, [&] { return !IsComing(position); });
  if (!IsFirstThere() || m_first != position) return false;
  piece = std::exchange(m_pieces.front(), {});
  std::rotate(m_pieces.begin(), m_pieces.begin() + 1, m_pieces.end());
  --m_count;
  m_first += piece.bytes;
  m_changed.WakeAll();
  return true;
}

void Prefetcher::SetFlushing(bool on) noexcept {
  const CAutoLock hold(m_lock);
  m_flushing = on;
  if (!on) return;
  Forget();  // after a flush the caller mostly goes on elsewhere, and what blocked may block again
  m_changed.WakeAll();
}

void Prefetcher::Run() {
  const CAutoLock hold(m_lock);
  for (;;) {
    m_changed.WaitUntil(m_lock, INFINITE, [this] { return m_ends || MayRead(); });
    if (m_ends) return;
    ReadOne();
    m_changed.WakeAll();
  }
}

Prefetcher::Piece Prefetcher::Next() noexcept {
  Piece piece{m_pool.Take(), m_next, static_cast<LONG>(std::min<LONGLONG>(m_size, m_end - m_next))};
  m_next += piece.bytes;
  return piece;
}

void Prefetcher::Put(Piece piece) noexcept {
  const auto end = m_pieces.begin() + static_cast<std::ptrdiff_t>(m_count++);
  *end = std::move(piece);
  if (m_count > 1 && end->position < (end - 1)->position) std::swap(*end, *(end - 1));
}

// Called with the lock held, which is given up during the read.
void Prefetcher::ReadOne() {
  Piece piece = Next();
  m_isReading = true;
  m_lock.Unlock();
  const HRESULT result = ComBoundary(
      [&] { return piece.memory ? m_upstream->SyncRead(piece.position, piece.bytes, BytesOf(piece)) : E_OUTOFMEMORY; });
  m_lock.Lock();
  m_isReading = false;
  if (std::exchange(m_isStale, false)) return;
  if (result == S_OK) return Put(std::move(piece));
  Forget();
}

bool Prefetcher::Claim(LONGLONG position, Piece& piece) {
  const CAutoLock hold(m_lock);
  if (!IsComing(position) || Pieces() >= kPieces || m_next >= m_end) return false;
  piece = Next();
  m_isClaimed = true;
  return true;
}

void Prefetcher::Give(Piece piece, bool isRead) noexcept {
  const CAutoLock hold(m_lock);
  if (!std::exchange(m_isClaimed, false)) return;
  if (isRead) return Put(std::move(piece));
  Forget();
}

}  // namespace tarvex
