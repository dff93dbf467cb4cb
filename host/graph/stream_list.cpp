#include "host/graph/stream_list.h"

#include <map>

#include "framework/co_task_mem.h"
#include "framework/text_conversion.h"
#include "host/graph/pin_queries.h"
#include "pins/formats/media_guids.h"

namespace tarvex::host {

namespace {

std::optional<StreamReport> StreamAt(IAMStreamSelect* select, LONG index) {
  DWORD flags = 0;
  DWORD group = 0;
  CoTaskMem<WCHAR> name;
  if (select->Info(index, nullptr, &flags, nullptr, &group, name.Put(), nullptr, nullptr) != S_OK) return std::nullopt;
  return StreamReport{group, name ? Utf8FromWide(name.Get()) : std::string(),
                      (flags & (AMSTREAMSELECTINFO_ENABLED | AMSTREAMSELECTINFO_EXCLUSIVE)) != 0,
                      (flags & AMSTREAMSELECTINFO_EXCLUSIVE) != 0};
}

}  // namespace

std::uint32_t GroupOf(const GUID& majorType) {
  if (majorType == MEDIATYPE_Video) return kVideoGroup;
  return majorType == MEDIATYPE_Audio ? kAudioGroup : kSubtitleGroup;
}

std::vector<StreamReport> StreamsOf(IBaseFilter* splitter) {
  std::vector<StreamReport> streams;
  const auto select = QueryFor<IAMStreamSelect>(splitter);
  DWORD count = 0;
  if (!select || FAILED(select->Count(&count))) return streams;
  for (DWORD index = 0; index < count; ++index) {
    const auto stream = StreamAt(select.Get(), static_cast<LONG>(index));
    if (!stream) break;
    streams.push_back(*stream);
  }
  return streams;
}

std::vector<std::optional<std::uint32_t>> StreamsOfPins(const std::vector<ComPtr<IPin>>& pins,
                                                        const std::vector<StreamReport>& streams) {
  std::map<std::uint32_t, std::uint32_t> next;  // by group: where the search for its next pin begins
  std::vector<std::optional<std::uint32_t>> carried;
  for (const auto& pin : pins) {
    const auto types = OfferedTypes(pin.Get());
    const std::uint32_t group = types.empty() ? 0 : GroupOf(types.front().majortype);
    std::uint32_t& index = next[group];
    while (index < streams.size() && (streams[index].group != group || !streams[index].enabled)) ++index;
    carried.push_back(index < streams.size() ? std::optional(index++) : std::nullopt);
  }
  return carried;
}

}  // namespace tarvex::host
