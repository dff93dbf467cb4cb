// The open file: the reader that it comes through, and the scanner over it. A part of the filter; opened and closed on
// application threads, read by the worker in between.
#pragma once

#include <cstdint>
#include <map>

#include "framework/com_ptr.h"
#include "pins/creator/out_pins_creator.h"
#include "pins/output/frame_memory.h"
#include "pins/output/pass_control.h"
#include "pins/output/play_positions.h"
#include "scanner/ebml_scanner.h"
#include "scanner/source/read_ahead_reader.h"

namespace tarvex {

class Source final : public FrameMemory {
 public:
  /// `tracks` gets the record of each track, `positions` what the file says of times. `pass` is told before a read
  /// that waits.
  Source(COutPinsCreator& tracks, PlayPositions& positions, PassControl& pass)
      : m_tracks(tracks), m_positions(positions), m_pass(pass) {}

  // No worker, filter stopped, filter lock held.
  /// While closed. Throws MessageError for what cannot be played, std::bad_alloc; Close is to follow then.
  void Open(IAsyncReader* upstream, SourceReads reads);
  void Close();
  bool IsOpen() const noexcept { return static_cast<bool>(m_reader); }

  /// For application threads with the filter lock held what the headers say, and for the worker everything.
  CEbmlScanner& Scanner() noexcept { return m_scanner; }

  /// Worker only.
  ComPtr<IUnknown> Keep(std::span<const std::uint8_t> frame) noexcept override {
    return m_reader ? m_reader->Keep(frame) : nullptr;
  }

  /// Makes a read return that the worker waits in, and those that follow, until EndFlush. Any thread, while there is a
  /// worker.
  void BeginFlush() noexcept;
  void EndFlush() noexcept;

 private:
  std::map<std::uint32_t, REFERENCE_TIME> FrameDurations() const;

  COutPinsCreator& m_tracks;
  PlayPositions& m_positions;
  PassControl& m_pass;
  ComPtr<ReadAheadReader> m_reader;  // what the scanner reads from; null while nothing is open
  CEbmlScanner m_scanner;
};

}  // namespace tarvex
