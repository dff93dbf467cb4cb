#include "host/graph/stream_renderer.h"

#include <algorithm>

#include "framework/filter_pins.h"
#include "framework/text_conversion.h"
#include "host/graph/pin_queries.h"
#include "host/graph/stream_list.h"
#include "host/graph/tap_filter.h"
#include "host/graph/tap_input_pin.h"
#include "host/graph/tap_output_pin.h"
#include "host/report/media_type_text.h"
#include "host/system/input_file.h"
#include "host/system/result_text.h"

namespace tarvex::host {

namespace {

std::vector<ComPtr<IBaseFilter>> FiltersOf(IFilterGraph* graph) {
  std::vector<ComPtr<IBaseFilter>> filters;
  ComPtr<IEnumFilters> list;
  if (FAILED(graph->EnumFilters(list.Put()))) return filters;
  ComPtr<IBaseFilter> filter;
  while (list->Next(1, filter.Put(), nullptr) == S_OK) filters.push_back(filter);
  return filters;
}

// An attempt to render may leave decoders behind that lead nowhere.
void RemoveAllBut(GraphSession& session, const std::vector<ComPtr<IBaseFilter>>& kept) {
  for (const auto& filter : FiltersOf(session.Graph())) {
    if (std::find(kept.begin(), kept.end(), filter) == kept.end()) session.Remove(filter.Get());
  }
}

bool OffersVideo(IPin* pin) {
  const auto types = OfferedTypes(pin);
  return !types.empty() && types.front().majortype == MEDIATYPE_Video;
}

// The enhanced video renderer, by its published number.
// {FA10746C-9B63-4B6C-BC49-FC300EA5F256}
constexpr CLSID kEnhancedRenderer = {0xFA10746C, 0x9B63, 0x4B6C, {0xBC, 0x49, 0xFC, 0x30, 0x0E, 0xA5, 0xF2, 0x56}};

bool AddRenderer(GraphSession& session, REFCLSID clsid, const OLECHAR* name, ComPtr<IBaseFilter>& renderer) {
  if (FAILED(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter, renderer.PutVoid()))) return false;
  session.Add(renderer.Get(), name);
  return true;
}

// Adds a video renderer, since a graph prefers one that is present before rendering begins. The enhanced one is the
// best that Windows has. Under Wine neither that one nor the mixing one, which a graph takes by itself, works with
// every decoder, so there it is the plain one.
ComPtr<IBaseFilter> AddVideoRenderer(GraphSession& session) {
  ComPtr<IBaseFilter> renderer;
  if (!RunsUnderWine() && AddRenderer(session, kEnhancedRenderer, L"Enhanced Video Renderer", renderer)) {
    return renderer;
  }
  if (AddRenderer(session, CLSID_VideoRenderer, L"Video Renderer", renderer)) return renderer;
  return nullptr;
}

bool HasConnectedInput(IBaseFilter* filter) {
  const auto pins = PinsOf(filter, PINDIR_INPUT);
  return std::any_of(pins.begin(), pins.end(), [](const auto& pin) { return IsConnected(pin.Get()); });
}

// A type that does not say what it is has no decoder, and the platform's filters may read the format block
// that it lacks. Empty when there is no such reason not to try.
std::string ReasonNotToTry(const std::vector<CMediaType>& types) {
  if (types.empty()) return "the pin offers no media type";
  if (types.front().subtype == GUID_NULL) return "its codec has no media subtype";
  return types.front().pbFormat == nullptr ? "its media type has no format block" : "";
}

// The platform's answer, and the reason behind it where that is known.
std::string ReasonOf(HRESULT result, const CMediaType& type) {
  std::string reason =
      SUCCEEDED(result) ? "a part of what it leads to is not rendered" : "no decoder or renderer takes it";
  reason += ", " + ResultText(result);
  const auto* format = type.formattype == FORMAT_WaveFormatEx ? type.FormatAs<WAVEFORMATEX>() : nullptr;
  if (format != nullptr && (format->wFormatTag == WAVE_FORMAT_PCM || format->wFormatTag == WAVE_FORMAT_IEEE_FLOAT) &&
      format->nAvgBytesPerSec == 0) {
    reason += "; its average rate is 0, which sound renderers may refuse";
  }
  return reason;
}

// Why the platform cannot render the pin, the graph being as it was then; empty when it can.
std::string TryPlatform(GraphSession& session, const RenderedStream& stream, const CMediaType& type) {
  const auto before = FiltersOf(session.Graph());
  const auto tap = MakeCom<TapFilter>(stream.counter);
  session.AddAndConnect(tap.Get(), kTapName, stream.output.Get(), tap->InputPin());
  const HRESULT result = session.Graph()->Render(tap->OutputPin());
  if (SUCCEEDED(result) && result != VFW_S_PARTIAL_RENDER && IsConnected(tap->OutputPin())) return {};
  RemoveAllBut(session, before);
  return ReasonOf(result, type);
}

// The filters behind the tap; empty without one.
std::string RenderersOf(IPin* output) {
  std::string text;
  const auto filters = ChainBehind(output);
  for (std::size_t i = 1; i < filters.size(); ++i) text += (text.empty() ? "" : " > ") + FilterName(filters[i].Get());
  return text;
}

std::string NameOfCarried(const GraphSession& session, IPin* output) {
  const auto pins = session.OutputPins();
  const auto streams = StreamsOf(session.Splitter());
  const auto carried = StreamsOfPins(pins, streams);
  for (std::size_t i = 0; i < pins.size(); ++i) {
    if (pins[i].Get() == output && carried[i]) return streams[*carried[i]].name;
  }
  return {};
}

}  // namespace

void DescribeStream(const GraphSession& session, RenderedStream& stream) {
  const auto types = OfferedTypes(stream.output.Get());
  stream.pin = PinName(stream.output.Get());
  stream.name = NameOfCarried(session, stream.output.Get());
  stream.renderer = RenderersOf(stream.output.Get());
  if (types.empty()) return;
  stream.majorType = types.front().majortype;
  stream.mediaType = MediaTypeLine(DescribeMediaType(types.front()));
}

void RenderStream(GraphSession& session, RenderedStream& stream, SinkSeeking seeking) {
  const auto types = OfferedTypes(stream.output.Get());
  stream.reason = ReasonNotToTry(types);
  if (stream.reason.empty()) stream.reason = TryPlatform(session, stream, types.front());
  if (!stream.reason.empty()) {
    const auto sink = MakeCom<SinkFilter>(stream.counter, seeking);
    session.AddAndConnect(sink.Get(), L"Counting sink", stream.output.Get(), sink->Input().Get());
  }
  DescribeStream(session, stream);
}

std::vector<RenderedStream> RenderStreams(GraphSession& session, SinkSeeking seeking) {
  std::vector<RenderedStream> streams;
  ComPtr<IBaseFilter> videoRenderer;
  const auto pins = session.OutputPins();
  if (std::any_of(pins.begin(), pins.end(), [](const auto& pin) { return OffersVideo(pin.Get()); })) {
    videoRenderer = AddVideoRenderer(session);
  }
  for (const auto& pin : pins) {
    streams.push_back({pin, {}, {}, {}, {}, {}, {}, std::make_shared<StreamCounter>()});
    RenderStream(session, streams.back(), seeking);
  }
  // A renderer without input would keep the graph from ever being complete.
  if (videoRenderer && !HasConnectedInput(videoRenderer.Get())) session.Remove(videoRenderer.Get());
  return streams;
}

}  // namespace tarvex::host
