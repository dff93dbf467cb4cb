// Reads a stream on while what came before is worked on. Owned by the read-ahead reader, whose reading thread calls
// it; a thread of its own does the reading.
#pragma once

#include <array>
#include <cstddef>
#include <memory>

#include "framework/com_ptr.h"
#include "framework/condition_variable.h"
#include "framework/critical_section.h"
#include "framework/platform/platform.h"
#include "framework/thread.h"

namespace tarvex {

/// Two pieces, so that the thread goes on reading while one waits to be taken. A read that fails or comes short ends
/// it: whoever wants the piece then reads it, and sees why.
///
/// Waits here: Take for the piece that is being read, ended by SetFlushing as well; destruction for the same, which
/// makes the reader below flush.
class CPrefetcher {
 public:
  /// A piece's bytes lie in the second half of its memory; the first is left to whoever takes it.
  using Memory = std::unique_ptr<BYTE[]>;
  struct Piece {
    Memory memory;
    LONG bytes = 0;
  };

  /// Pieces have `size` bytes, but for the last.
  CPrefetcher(IAsyncReader* upstream, LONG size);
  ~CPrefetcher();
  CPrefetcher(const CPrefetcher&) = delete;
  CPrefetcher& operator=(const CPrefetcher&) = delete;

  /// Pieces from `position` on will be wanted, as far as `end`. Without memory or a thread nothing happens.
  void Follow(LONGLONG position, LONGLONG end) noexcept;
  /// The next piece begins at `position`, and Take would have to wait for it.
  bool IsReading(LONGLONG position) const;
  /// The next piece, if it begins at `position`. False when there is none.
  bool Take(LONGLONG position, Piece& piece);
  /// Memory of a piece, for others.
  void Return(Memory memory) noexcept;
  /// Forgets what was read and what is to be; while on, nothing new is read, and nobody waits. Any thread.
  void SetFlushing(bool on) noexcept;

 private:
  static constexpr std::size_t kPieces = 2;

  void Run();
  void ReadOne();
  void Forget() noexcept;
  bool MayRead() const noexcept { return m_isOn && m_count < kPieces && m_next < m_end; }
  bool IsComing(LONGLONG position) const noexcept;
  Memory TakeMemory() noexcept;

  const ComPtr<IAsyncReader> m_upstream;
  const LONG m_size;

  mutable CCritSec m_lock{"CPrefetcher", LockRank::kLeaf};
  CConditionVariable m_changed;
  bool m_isOn = false;  // until a read fails, or a flush
  bool m_isReading = false;
  bool m_isStale = false;  // what is being read
  bool m_flushing = false;
  bool m_ends = false;
  LONGLONG m_first = 0;  // position of the next piece to be taken
  LONGLONG m_next = 0;   // position of the next to be read
  LONGLONG m_end = 0;
  std::array<Piece, kPieces> m_pieces;
  std::size_t m_count = 0;  // of them, from the front
  std::array<Memory, kPieces + 1> m_spares;
  CThread m_thread;
};

}  // namespace tarvex
