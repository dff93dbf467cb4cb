#include "host/stream_renderer.h"

#include <algorithm>

#include "framework/text_conversion.h"
#include "host/media_type_text.h"
#include "host/pin_queries.h"
#include "host/sink_filter.h"
#include "host/tap_filter.h"
#include "host/tap_input_pin.h"
#include "host/tap_output_pin.h"

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
void RemoveAllBut(CGraphSession& session, const std::vector<ComPtr<IBaseFilter>>& kept) {
  for (const auto& filter : FiltersOf(session.Graph())) {
    if (std::find(kept.begin(), kept.end(), filter) == kept.end()) session.Remove(filter.Get());
  }
}

std::string Joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : " > ") + name;
  return text;
}

bool OffersVideo(IPin* pin) {
  const auto types = OfferedTypes(pin);
  return !types.empty() && types.front().majortype == MEDIATYPE_Video;
}

// The plain renderer, present before rendering begins, is preferred to the mixing one, which does not get
// on with every decoder.
ComPtr<IBaseFilter> AddVideoRenderer(CGraphSession& session) {
  ComPtr<IBaseFilter> renderer;
  if (FAILED(
          CoCreateInstance(CLSID_VideoRenderer, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter, renderer.PutVoid()))) {
    return nullptr;
  }
  session.Add(renderer.Get(), L"Video Renderer");
  return renderer;
}

bool HasConnectedInput(IBaseFilter* filter) {
  const auto pins = PinsOf(filter, PINDIR_INPUT);
  return std::any_of(pins.begin(), pins.end(), [](const auto& pin) { return IsConnected(pin.Get()); });
}

// A type that does not say what it is has no decoder, and the platform's filters may read the format block
// that it lacks.
bool IsWorthTrying(const CMediaType& type) { return type.subtype != GUID_NULL && type.pbFormat != nullptr; }

// Empty when the platform cannot render the pin; the graph is then as it was.
std::string TryPlatform(CGraphSession& session, IPin* output, const std::shared_ptr<CStreamCounter>& counter) {
  const auto before = FiltersOf(session.Graph());
  const auto tap = MakeCom<CTapFilter>(counter);
  session.AddAndConnect(tap.Get(), L"Counter", output, tap->InputPin());
  const HRESULT result = session.Graph()->Render(tap->OutputPin());
  if (SUCCEEDED(result) && result != VFW_S_PARTIAL_RENDER && IsConnected(tap->OutputPin())) {
    return Joined(DownstreamNames(tap->OutputPin()));
  }
  RemoveAllBut(session, before);
  return {};
}

RenderedStream RenderStream(CGraphSession& session, IPin* output) {
  RenderedStream stream;
  const auto types = OfferedTypes(output);
  stream.pin = PinName(output);
  stream.counter = std::make_shared<CStreamCounter>();
  if (!types.empty()) {
    stream.majorType = types.front().majortype;
    stream.mediaType = MediaTypeLine(DescribeMediaType(types.front()));
  }
  if (!types.empty() && IsWorthTrying(types.front())) {
    stream.renderer = TryPlatform(session, output, stream.counter);
  }
  if (!stream.renderer.empty()) return stream;
  const auto sink = MakeCom<CSinkFilter>(stream.counter);
  session.AddAndConnect(sink.Get(), L"Counting sink", output, sink->Input().Get());
  return stream;
}

}  // namespace

std::vector<RenderedStream> RenderStreams(CGraphSession& session) {
  std::vector<RenderedStream> streams;
  ComPtr<IBaseFilter> videoRenderer;
  const auto pins = session.OutputPins();
  if (std::any_of(pins.begin(), pins.end(), [](const auto& pin) { return OffersVideo(pin.Get()); })) {
    videoRenderer = AddVideoRenderer(session);
  }
  for (const auto& pin : pins) streams.push_back(RenderStream(session, pin.Get()));
  // A renderer without input would keep the graph from ever being complete.
  if (videoRenderer && !HasConnectedInput(videoRenderer.Get())) session.Remove(videoRenderer.Get());
  return streams;
}

}  // namespace tarvex::host
