#include "host/graph/pin_queries.h"

#include <algorithm>

#include "framework/filter_pins.h"
#include "framework/text_conversion.h"

namespace tarvex::host {

namespace {

constexpr std::size_t kLongestChain = 16;  // filters; a graph with a circle must not hold us

ComPtr<IPin> PeerOf(IPin* pin) {
  ComPtr<IPin> peer;
  return SUCCEEDED(pin->ConnectedTo(peer.Put())) ? peer : nullptr;
}

ComPtr<IBaseFilter> FilterOf(IPin* pin) {
  PIN_INFO info{};
  if (FAILED(pin->QueryPinInfo(&info))) return nullptr;
  return ComPtr<IBaseFilter>::Attach(info.pFilter);
}

ComPtr<IPin> FirstConnectedOutput(IBaseFilter* filter) {
  const auto outputs = PinsOf(filter, PINDIR_OUTPUT);
  const auto found =
      std::find_if(outputs.begin(), outputs.end(), [](const auto& pin) { return IsConnected(pin.Get()); });
  return found == outputs.end() ? nullptr : *found;
}

}  // namespace

std::string PinName(IPin* pin) {
  PIN_INFO info{};
  if (FAILED(pin->QueryPinInfo(&info))) return {};
  const auto filter = ComPtr<IBaseFilter>::Attach(info.pFilter);
  return Utf8FromWide(info.achName);
}

std::vector<CMediaType> OfferedTypes(IPin* pin) {
  std::vector<CMediaType> types;
  ComPtr<IEnumMediaTypes> list;
  if (FAILED(pin->EnumMediaTypes(list.Put()))) return types;
  AM_MEDIA_TYPE* record = nullptr;
  while (list->Next(1, &record, nullptr) == S_OK) {
    const MediaTypePtr owner(record);
    types.emplace_back(*record);
  }
  return types;
}

std::vector<ComPtr<IBaseFilter>> ChainBehind(IPin* output) {
  std::vector<ComPtr<IBaseFilter>> filters;
  for (ComPtr<IPin> pin(output); pin && filters.size() < kLongestChain;) {
    const ComPtr<IPin> peer = PeerOf(pin.Get());
    const ComPtr<IBaseFilter> filter = peer ? FilterOf(peer.Get()) : nullptr;
    if (!filter) break;
    filters.push_back(filter);
    pin = FirstConnectedOutput(filter.Get());
  }
  return filters;
}

std::string FilterName(IBaseFilter* filter) {
  FILTER_INFO info{};
  if (FAILED(filter->QueryFilterInfo(&info))) return {};
  const auto graph = ComPtr<IFilterGraph>::Attach(info.pGraph);
  return Utf8FromWide(info.achName);
}

}  // namespace tarvex::host
