// Plays one file to its end, and obeys the options and the keys on the way. Owned by the play command, main thread.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "host/commands/play_options.h"
#include "host/graph/graph_events.h"
#include "host/graph/graph_positions.h"
#include "host/graph/stream_renderer.h"
#include "host/graph/stream_switcher.h"
#include "host/report/play_report.h"
#include "host/report/progress_line.h"
#include "host/system/keyboard.h"

namespace tarvex::host {

class Player {
 public:
  /// Chooses streams, renders them and goes to the start. The arguments outlive it. Throws HostError.
  Player(GraphSession& session, const PlayOptions& options);

  /// Once. Throws HostError.
  GraphEnd Play();
  /// After Play: the table of what came.
  std::string Summary() const;
  /// After Play ended with GraphEnd::kAborted: what happened.
  std::string Failure() const;

 private:
  std::vector<RenderedStream> ChooseAndRender() const;
  std::int64_t StartTime() const;
  void GoToStart();

  GraphEnd Step();
  bool IsLimitReached() const;
  DWORD NextWait() const;

  bool IsSeekDue() const;
  void SeekNext();
  void Seek(std::int64_t time);

  GraphEnd Obey(PlayerKey key);
  void TogglePause();
  void StepStream(std::uint32_t group);
  void NextChapter();
  void RestoreState();

  bool HasEnded() const;
  std::int64_t Position() const;
  std::optional<std::int64_t> Duration() const;
  double Seconds() const;
  PlayProgress Progress() const;

  GraphSession& m_session;
  const PlayOptions& m_options;
  Keyboard m_keyboard;
  const SinkSeeking m_sinkSeeking;
  std::vector<RenderedStream> m_streams;
  StreamSwitcher m_switcher;
  GraphPositions m_positions;
  GraphEvents m_events;
  ProgressLine m_line;

  std::size_t m_seeksDone = 0;
  std::int64_t m_target = 0;  // of the last seek
  ULONGLONG m_lastSeek = 0;   // milliseconds
  // A short file is over before the clock of milliseconds has moved.
  std::chrono::steady_clock::time_point m_begin;
  double m_seconds = 0;  // from beginning to end
  bool m_paused = false;
};

}  // namespace tarvex::host
