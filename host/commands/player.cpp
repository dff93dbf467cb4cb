#include "host/commands/player.h"

#include <fmt/format.h>

#include <algorithm>

#include "framework/condition_variable.h"
#include "host/graph/chapter_list.h"
#include "host/graph/stream_list.h"
#include "host/report/stream_choice.h"
#include "host/report/time_text.h"
#include "host/system/console.h"
#include "host/system/host_error.h"
#include "host/system/result_text.h"

namespace tarvex::host {

namespace {

constexpr ULONGLONG kSeekPatience = 1000;  // milliseconds that a seek waits for samples of the one before
constexpr DWORD kSeekPoll = 10;            // milliseconds

PlayedStream Played(const RenderedStream& stream) {
  return {stream.pin,
          GroupName(GroupOf(stream.majorType)),
          stream.name,
          stream.mediaType,
          stream.renderer,
          stream.reason,
          stream.counter->Samples(),
          stream.counter->Bytes(),
          stream.counter->Span()};
}

std::vector<PlayedStream> Played(const std::vector<RenderedStream>& streams) {
  std::vector<PlayedStream> played;
  for (const auto& stream : streams) played.push_back(Played(stream));
  return played;
}

}  // namespace

Player::Player(GraphSession& session, const PlayOptions& options)
    : m_session(session),
      m_options(options),
      m_sinkSeeking(options.Seeks() || m_keyboard.IsThere() ? SinkSeeking::kOffered : SinkSeeking::kNone),
      m_streams(ChooseAndRender()),
      m_switcher(session, m_streams, m_sinkSeeking),
      m_positions(session.Graph(), session.File()),
      m_events(session.Graph()) {
  GoToStart();
}

std::vector<RenderedStream> Player::ChooseAndRender() const {
  if (m_options.audio) ChooseStream(m_session, kAudioGroup, *m_options.audio);
  if (m_options.subtitle) ChooseStream(m_session, kSubtitleGroup, *m_options.subtitle);
  return RenderStreams(m_session, m_sinkSeeking);
}

std::int64_t Player::StartTime() const {
  if (!m_options.chapter) return m_options.start.value_or(0);
  const auto markers = MarkersOf(m_session.Splitter());
  const std::uint32_t number = *m_options.chapter;
  if (number >= 1 && number <= markers.size()) return TimeOf(markers[number - 1]);
  throw HostError(ExitCode::kUsage,
                  fmt::format("{}: no chapter {} (the file has {})", m_session.File(), number, markers.size()));
}

void Player::GoToStart() {
  m_target = StartTime();
  if (m_options.stop && *m_options.stop <= m_target) {
    throw HostError(ExitCode::kUsage, "--stop: " + TimeText(*m_options.stop) + " is not after the start");
  }
  if (m_options.stop) m_positions.SetStop(*m_options.stop);
  if (m_target != 0 || m_options.stop) m_positions.Seek(m_target);
}

GraphEnd Player::Play() {
  if (m_streams.empty()) return GraphEnd::kComplete;
  if (m_options.withoutClock) m_session.RunWithoutClock();
  if (m_keyboard.IsThere()) m_line.Tell(kKeyHelp);
  m_begin = std::chrono::steady_clock::now();
  m_lastSeek = MonotonicMilliseconds();
  m_session.Run();
  GraphEnd end = GraphEnd::kNone;
  while (end == GraphEnd::kNone && !IsLimitReached()) {
    end = Step();
    if (end == GraphEnd::kNone) m_line.Show(ProgressText(Progress()));
  }
  m_seconds = Seconds();
  m_line.Finish(ProgressText(Progress()));
  m_session.Stop();
  return end;
}

GraphEnd Player::Step() {
  const GraphEnd end = m_events.Wait(NextWait(), m_keyboard.Event());
  const bool isComplete = end == GraphEnd::kComplete;
  if (end != GraphEnd::kNone && !isComplete) return end;
  for (const PlayerKey key : m_keyboard.Take()) {
    if (Obey(key) != GraphEnd::kNone) return GraphEnd::kQuit;
  }
  if (m_seeksDone < m_options.seeks.size()) {
    if (isComplete || IsSeekDue()) SeekNext();
    return GraphEnd::kNone;
  }
  // An end that was reported before a seek is over.
  return isComplete && HasEnded() ? end : GraphEnd::kNone;
}

bool Player::IsLimitReached() const {
  return m_options.limit && Seconds() * 1e7 >= static_cast<double>(*m_options.limit);
}

// Until the progress line is due, a seek may be, or the time that the user allowed is over.
DWORD Player::NextWait() const {
  const DWORD interval = m_seeksDone < m_options.seeks.size() ? kSeekPoll : m_line.Interval();
  if (!m_options.limit) return interval;
  const double left = std::max(static_cast<double>(*m_options.limit) / 1e4 - Seconds() * 1000, 0.0);
  return std::min(interval, static_cast<DWORD>(std::min(left + 1, 60000.0)));
}

bool Player::IsSeekDue() const {
  const auto hasSamples = [](const RenderedStream& stream) { return stream.counter->HasSamples(); };
  return std::any_of(m_streams.begin(), m_streams.end(), hasSamples) ||
         MonotonicMilliseconds() - m_lastSeek >= kSeekPatience;
}

void Player::SeekNext() { Seek(m_options.seeks[m_seeksDone++]); }

void Player::Seek(std::int64_t time) {
  m_target = std::clamp<std::int64_t>(time, 0, std::max<std::int64_t>(Duration().value_or(kOpenTime), 0));
  m_positions.Seek(m_target);
  m_lastSeek = MonotonicMilliseconds();
}

GraphEnd Player::Obey(PlayerKey key) {
  constexpr std::int64_t kStep = 100'000'000;  // 10 s
  switch (key) {
    case PlayerKey::kPause:
      TogglePause();
      break;
    case PlayerKey::kBack:
      Seek(Position() - kStep);
      break;
    case PlayerKey::kForward:
      Seek(Position() + kStep);
      break;
    case PlayerKey::kAudio:
      StepStream(kAudioGroup);
      break;
    case PlayerKey::kSubtitle:
      StepStream(kSubtitleGroup);
      break;
    case PlayerKey::kChapter:
      NextChapter();
      break;
    case PlayerKey::kQuit:
      return GraphEnd::kQuit;
  }
  return GraphEnd::kNone;
}

void Player::TogglePause() {
  m_paused = !m_paused;
  RestoreState();
}

void Player::RestoreState() { m_paused ? m_session.Pause() : m_session.Run(); }

void Player::StepStream(std::uint32_t group) {
  const auto streams = StreamsOf(m_session.Splitter());
  const auto next = NextStream(streams, group);
  if (!next) return m_line.Tell("no other " + GroupName(group) + " stream");
  const std::int64_t position = Position();
  if (m_switcher.Switch(*next) == StreamSwitcher::Outcome::kStopped) {
    Seek(position);
    RestoreState();
  }
  m_line.Tell(ChoiceText(GroupName(group), NumberInGroup(streams, *next), streams[*next].name));
}

void Player::NextChapter() {
  const auto markers = MarkersOf(m_session.Splitter());
  const auto next = NextMarker(markers, Position());
  if (!next) return m_line.Tell("no further chapter");
  Seek(TimeOf(markers[*next]));
  m_line.Tell(ChoiceText("chapter", *next + 1, markers[*next].name));
}

bool Player::HasEnded() const {
  return std::all_of(m_streams.begin(), m_streams.end(),
                     [](const RenderedStream& stream) { return stream.counter->HasEnded(); });
}

// By the clock where something in the graph keeps pace with it, otherwise by the samples that came. Those
// may begin before the time that was asked for.
std::int64_t Player::Position() const {
  const auto isRendered = [](const RenderedStream& stream) { return !stream.renderer.empty(); };
  const bool isTimed = !m_options.withoutClock && std::any_of(m_streams.begin(), m_streams.end(), isRendered);
  const auto current = isTimed ? m_positions.Current() : std::nullopt;
  std::int64_t position = current.value_or(m_target);
  for (const auto& stream : m_streams) {
    if (!current) position = std::max(position, stream.counter->Position());
  }
  return position;
}

std::optional<std::int64_t> Player::Duration() const {
  LONGLONG duration = 0;
  const auto seeking = m_streams.front().output.Query<IMediaSeeking>();
  if (!seeking || FAILED(seeking->GetDuration(&duration)) || duration == kOpenTime) return std::nullopt;
  return duration;
}

double Player::Seconds() const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_begin).count();
}

PlayProgress Player::Progress() const {
  PlayProgress progress;
  progress.duration = Duration();
  // The clock goes on for a moment after the last sample.
  progress.position = std::min(Position(), progress.duration.value_or(kOpenTime));
  progress.seconds = Seconds();
  progress.paused = m_paused;
  progress.streams = Played(m_streams);
  return progress;
}

std::string Player::Summary() const { return SummaryText(Played(m_streams), m_seconds); }

std::string Player::Failure() const {
  return "ended early, at " + TimeText(Position()) + ": " + FailureText(m_events.Error());
}

}  // namespace tarvex::host
