// Reads the next pieces of a stream while the earlier ones are worked on. Owned by the read-ahead reader, whose reading
// thread calls it. A thread of its own does the reading.
#pragma once

#include <array>
#include <cstddef>

#include "framework/com_ptr.h"
#include "framework/condition_variable.h"
#include "framework/critical_section.h"
#include "framework/platform/platform.h"
#include "framework/thread.h"
#include "scanner/source/piece_pool.h"

namespace tarvex {

/// Keeps a few pieces, so that its thread reads on while finished ones wait to be taken. A caller that would have to
/// wait for a piece may read the next one itself: see Claim. A read that fails or comes up short ends the reading
/// ahead. The caller then reads that piece itself, and sees why.
///
/// Waits here: Take for the piece that is being read, ended by SetFlushing as well; destruction for the same, which
/// makes the reader below flush.
class Prefetcher {
 public:
  /// A piece's bytes lie in the second half of its memory; the first is left to whoever takes it.
  struct Piece {
    PiecePool::Taken memory;
    LONGLONG position = 0;
    LONG bytes = 0;
  };

  /// Pieces have `size` bytes, but for the last.
  Prefetcher(IAsyncReader* upstream, LONG size);
  ~Prefetcher();
  Prefetcher(const Prefetcher&) = delete;
  Prefetcher& operator=(const Prefetcher&) = delete;

  /// Reads the pieces from `position` to `end` ahead. Without memory or a thread nothing happens.
  void Follow(LONGLONG position, LONGLONG end) noexcept;
  /// The next piece begins at `position`, and Take would have to wait for it.
  bool IsReading(LONGLONG position) const;
  /// The next piece, if it begins at `position`. False when there is none.
  bool Take(LONGLONG position, Piece& piece);
  /// For a caller that would have to wait for the piece at `position`: the first piece that nobody reads yet. The
  /// caller reads it and passes it to Give. False when there is none to read.
  bool Claim(LONGLONG position, Piece& piece);
  /// A claimed piece. `isRead` false: it could not be read.
  void Give(Piece piece, bool isRead) noexcept;
  /// Where the bytes of a piece begin.
  BYTE* BytesOf(const Piece& piece) const noexcept { return piece.memory.Bytes() + m_size; }
  /// See PiecePool::Keep. For the reading thread.
  ComPtr<IUnknown> Keep(const PiecePool::Taken& memory) noexcept { return m_pool.Keep(memory); }
  /// Forgets what was read and what was to be read. While on, no read begins and nobody waits. Any thread.
  void SetFlushing(bool on) noexcept;

 private:
  static constexpr std::size_t kAhead = 2;   // pieces that the thread reads ahead
  static constexpr std::size_t kPieces = 3;  // pieces that are there or being read
  static_assert(kPieces + 2 <= PiecePool::kTaken, "with the caller's, and the one that is to take its place");

  void Run();
  void ReadOne();
  void Forget() noexcept;
  std::size_t Pieces() const noexcept { return m_count + (m_isReading ? 1 : 0) + (m_isClaimed ? 1 : 0); }
  bool MayRead() const noexcept { return m_isOn && Pieces() < kAhead && m_next < m_end; }
  bool IsFirstThere() const noexcept { return m_count != 0 && m_pieces.front().position == m_first; }
  bool IsComing(LONGLONG position) const noexcept;
  Piece Next() noexcept;
  void Put(Piece piece) noexcept;

  const ComPtr<IAsyncReader> m_upstream;
  const LONG m_size;
  PiecePool m_pool;

  mutable CCritSec m_lock{"Prefetcher", LockRank::kLeaf};
  ConditionVariable m_changed;
  bool m_isOn = false;  // until a read fails, or a flush
  bool m_isReading = false;
  bool m_isStale = false;  // what the thread is reading
  bool m_flushing = false;
  bool m_ends = false;
  LONGLONG m_first = 0;  // position of the next piece to be taken
  LONGLONG m_next = 0;   // position of the next that nobody reads yet
  LONGLONG m_end = 0;
  std::array<Piece, kPieces> m_pieces;  // in the stream's order
  std::size_t m_count = 0;              // of them, from the front
  bool m_isClaimed = false;             // the caller is reading one that is wanted
  Thread m_thread;
};

}  // namespace tarvex
