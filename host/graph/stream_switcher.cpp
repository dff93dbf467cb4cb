#include "host/graph/stream_switcher.h"

#include <fmt/format.h>

#include <algorithm>

#include "framework/filter_pins.h"
#include "host/graph/pin_queries.h"
#include "host/graph/stream_list.h"
#include "host/graph/tap_filter.h"
#include "host/graph/tap_input_pin.h"
#include "host/report/stream_choice.h"
#include "host/system/host_error.h"
#include "host/system/result_text.h"

namespace tarvex::host {

namespace {

HRESULT Enable(IBaseFilter* splitter, std::uint32_t index) {
  const auto select = QueryFor<IAMStreamSelect>(splitter);
  return select ? select->Enable(static_cast<LONG>(index), AMSTREAMSELECTENABLE_ENABLE) : E_NOINTERFACE;
}

void RequireEnabled(GraphSession& session, std::uint32_t index) {
  const HRESULT result = Enable(session.Splitter(), index);
  if (SUCCEEDED(result)) return;
  throw HostError(ExitCode::kPlayback,
                  fmt::format("{}: stream {} cannot be selected: {}", session.File(), index, ResultText(result)));
}

[[noreturn]] void RefuseWish(const GraphSession& session, const std::string& group, const std::string& wish) {
  throw HostError(ExitCode::kUsage,
                  fmt::format("{}: no {} stream {} (mkvhost info lists the streams)", session.File(), group, wish));
}

}  // namespace

void ChooseStream(GraphSession& session, std::uint32_t group, const std::string& wish) {
  const auto streams = StreamsOf(session.Splitter());
  const auto isOfGroup = [group](const StreamReport& stream) { return stream.group == group; };
  if (group == kSubtitleGroup && wish == "off" && std::none_of(streams.begin(), streams.end(), isOfGroup)) return;
  const auto index = FindStream(streams, group, wish);
  if (!index) RefuseWish(session, GroupName(group), wish);
  RequireEnabled(session, *index);
}

// There is something to choose only where each kind has one pin.
RenderedStream& StreamSwitcher::CarrierOf(std::uint32_t group) const {
  const auto carrier = std::find_if(m_streams.begin(), m_streams.end(),
                                    [group](const auto& stream) { return GroupOf(stream.majorType) == group; });
  if (carrier == m_streams.end()) throw HostError(ExitCode::kInternal, "no pin for the stream");
  return *carrier;
}

// The splitter has the graph render the pin again, and a graph tries the filters that it holds before all
// others: so the new stream passes a tap as well.
void StreamSwitcher::EnableConnected(RenderedStream& stream, std::uint32_t index) {
  const auto tap = MakeCom<TapFilter>(stream.counter);
  m_session.Add(tap.Get(), kTapName);
  static_cast<void>(Enable(m_session.Splitter(), index));  // the stream's flags show whether it worked
  if (!IsConnected(tap->InputPin())) m_session.Remove(tap.Get());
}

// The graph does not connect a stream that the platform cannot render. Then it is connected here.
void StreamSwitcher::RenderAnew(RenderedStream& stream, std::uint32_t index) {
  m_session.Stop();
  for (const auto& filter : ChainBehind(stream.output.Get())) m_session.Remove(filter.Get());
  RequireEnabled(m_session, index);
  RenderStream(m_session, stream, m_seeking);
}

bool StreamSwitcher::IsCarried(const RenderedStream& stream, std::uint32_t index) const {
  return IsConnected(stream.output.Get()) && StreamsOf(m_session.Splitter()).at(index).enabled;
}

StreamSwitcher::Outcome StreamSwitcher::Switch(std::uint32_t index) {
  RenderedStream& stream = CarrierOf(StreamsOf(m_session.Splitter()).at(index).group);
  if (!stream.renderer.empty()) EnableConnected(stream, index);
  const Outcome outcome = IsCarried(stream, index) ? Outcome::kDone : Outcome::kStopped;
  if (outcome == Outcome::kDone) {
    DescribeStream(m_session, stream);
  } else {
    RenderAnew(stream, index);
  }
  m_session.ShareClock();
  return outcome;
}

}  // namespace tarvex::host
