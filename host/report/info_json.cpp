// The form of an InfoReport for programs.
#include "host/report/info_report.h"
#include "host/report/media_type_json.h"
#include "host/report/stream_choice.h"

namespace tarvex::host {

namespace {

template <class T>
Json OrNull(const std::optional<T>& value) {
  return value ? Json(*value) : Json();
}

Json PinJson(std::size_t index, const PinReport& pin) {
  Json types = Json::array();
  for (const MediaTypeText& type : pin.mediaTypes) types.push_back(MediaTypeJson(type, true));
  return {{"pin", index}, {"name", pin.name}, {"stream", OrNull(pin.stream)}, {"media_types", std::move(types)}};
}

Json StreamJson(const std::vector<StreamReport>& streams, std::uint32_t index) {
  const StreamReport& stream = streams[index];
  return {{"stream", index},
          {"group", GroupName(stream.group)},
          {"group_number", stream.group},
          {"number", NumberInGroup(streams, index)},
          {"name", stream.name},
          {"enabled", stream.enabled},
          {"exclusive", stream.exclusive}};
}

Json ChapterJson(std::size_t number, const ChapterReport& chapter) {
  return {{"number", number}, {"name", chapter.name}, {"start", chapter.start}, {"end", chapter.end}};
}

}  // namespace

std::string InfoJson(const InfoReport& report) {
  Json pins = Json::array();
  Json streams = Json::array();
  Json markers = Json::array();
  Json chapters = Json::array();
  for (const PinReport& pin : report.pins) pins.push_back(PinJson(pins.size(), pin));
  for (std::uint32_t i = 0; i < report.streams.size(); ++i) streams.push_back(StreamJson(report.streams, i));
  for (const MarkerReport& marker : report.markers) {
    markers.push_back({{"number", markers.size() + 1}, {"name", marker.name}, {"seconds", marker.seconds}});
  }
  for (const ChapterReport& chapter : report.chapters) chapters.push_back(ChapterJson(chapters.size() + 1, chapter));
  const Json object = {
      {"file", report.file},
      {"doc_type", report.docType},
      {"duration", OrNull(report.duration)},
      {"separate_pins", report.separatePins},
      {"pins", std::move(pins)},
      {"streams", std::move(streams)},
      {"seek_capabilities", OrNull(report.seekCapabilities)},
      {"markers", std::move(markers)},
      {"chapters", std::move(chapters)},
  };
  return object.dump(2, ' ', true, Json::error_handler_t::replace) + '\n';
}

}  // namespace tarvex::host
