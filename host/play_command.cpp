#include "host/play_command.h"

#include <algorithm>

#include "framework/condition_variable.h"
#include "host/console.h"
#include "host/graph_events.h"
#include "host/host_error.h"
#include "host/play_report.h"
#include "host/progress_line.h"
#include "host/result_text.h"
#include "host/stream_renderer.h"
#include "host/time_text.h"

namespace tarvex::host {

namespace {

std::string KindOf(const GUID& majorType) {
  if (majorType == MEDIATYPE_Video) return "video";
  return majorType == MEDIATYPE_Audio ? "audio" : "subtitle";
}

PlayedStream Played(const RenderedStream& stream) {
  return {stream.pin,
          KindOf(stream.majorType),
          stream.mediaType,
          stream.renderer.empty() ? "counted" : stream.renderer,
          stream.counter->Samples(),
          stream.counter->Bytes(),
          stream.counter->Span()};
}

/// One file being played, from Run to the end.
class CPlayer {
 public:
  CPlayer(CGraphSession& session, const PlayOptions& options)
      : m_session(session), m_options(options), m_streams(RenderStreams(session)), m_events(session.Graph()) {}

  GraphEnd Play();
  HRESULT Error() const noexcept { return m_events.Error(); }
  std::string Summary() const;

 private:
  bool IsTimed() const;
  std::int64_t Position() const;
  std::optional<std::int64_t> Duration() const;
  PlayProgress Progress() const;
  DWORD NextWait() const;
  double Seconds() const;

  CGraphSession& m_session;
  const PlayOptions& m_options;
  const std::vector<RenderedStream> m_streams;
  CGraphEvents m_events;
  CProgressLine m_line;
  ULONGLONG m_begin = 0;  // milliseconds
};

double CPlayer::Seconds() const { return static_cast<double>(MonotonicMilliseconds() - m_begin) / 1000; }

// Something in the graph keeps pace with the clock.
bool CPlayer::IsTimed() const {
  return !m_options.withoutClock &&
         std::any_of(m_streams.begin(), m_streams.end(), [](const auto& stream) { return !stream.renderer.empty(); });
}

std::int64_t CPlayer::Position() const {
  LONGLONG position = 0;
  const auto seeking = QueryFor<IMediaSeeking>(m_session.Graph());
  if (IsTimed() && seeking && SUCCEEDED(seeking->GetCurrentPosition(&position))) return position;
  for (const auto& stream : m_streams) position = std::max<LONGLONG>(position, stream.counter->Position());
  return position;
}

std::optional<std::int64_t> CPlayer::Duration() const {
  LONGLONG duration = 0;
  const auto pins = m_session.OutputPins();
  const auto seeking = pins.empty() ? nullptr : pins.front().Query<IMediaSeeking>();
  if (!seeking || FAILED(seeking->GetDuration(&duration)) || duration == kOpenTime) return std::nullopt;
  return duration;
}

PlayProgress CPlayer::Progress() const {
  PlayProgress progress;
  progress.duration = Duration();
  // The clock goes on for a moment after the last sample.
  progress.position = std::min(Position(), progress.duration.value_or(kOpenTime));
  progress.seconds = Seconds();
  for (const auto& stream : m_streams) progress.streams.push_back(Played(stream));
  return progress;
}

// Until the progress line is due, or the time that the user allowed is over.
DWORD CPlayer::NextWait() const {
  const DWORD interval = m_line.Interval();
  if (!m_options.secondsAtMost) return interval;
  const double left = std::max(*m_options.secondsAtMost - Seconds(), 0.0) * 1000;
  return std::min(interval, static_cast<DWORD>(std::min(left, 60000.0)));
}

GraphEnd CPlayer::Play() {
  if (m_streams.empty()) return GraphEnd::kComplete;
  if (m_options.withoutClock) m_session.RunWithoutClock();
  m_begin = MonotonicMilliseconds();
  m_session.Run();
  GraphEnd end = GraphEnd::kNone;
  while (end == GraphEnd::kNone) {
    end = m_events.Wait(NextWait());
    if (m_options.secondsAtMost && Seconds() >= *m_options.secondsAtMost) break;
    if (end == GraphEnd::kNone) m_line.Show(ProgressText(Progress()));
  }
  m_line.Finish(ProgressText(Progress()));
  m_session.Stop();
  return end;
}

std::string CPlayer::Summary() const {
  std::vector<PlayedStream> played;
  for (const auto& stream : m_streams) played.push_back(Played(stream));
  return SummaryText(played);
}

}  // namespace

void RunPlay(const PlayOptions& options) {
  CGraphSession session(options.session);
  CPlayer player(session, options);
  const GraphEnd end = player.Play();
  WriteOutput('\n' + player.Summary());
  if (end == GraphEnd::kAborted) {
    throw HostError(ExitCode::kPlayback, options.session.file + ": ended early: " + ResultText(player.Error()));
  }
}

}  // namespace tarvex::host
