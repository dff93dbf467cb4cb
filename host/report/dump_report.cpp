#include "host/report/dump_report.h"

#include <fmt/format.h>

#include "host/report/media_type_json.h"
#include "host/system/text_escape.h"

namespace tarvex::host {

namespace {

Json OrNull(const std::optional<std::int64_t>& value) { return value ? Json(*value) : Json(); }

std::string OrDash(const std::optional<std::int64_t>& value) { return value ? std::to_string(*value) : "-"; }

Json EventJson(const DumpEvent& event, std::size_t sample) {
  if (event.kind == DumpEvent::Kind::kEnd) return {{"event", "end"}};
  if (event.kind == DumpEvent::Kind::kSegment) {
    return {{"event", "segment"}, {"start", OrNull(event.start)}, {"stop", OrNull(event.stop)}, {"rate", event.rate}};
  }
  return {{"event", "sample"},
          {"number", sample},
          {"start", OrNull(event.start)},
          {"stop", OrNull(event.stop)},
          {"sync", event.sync},
          {"discontinuity", event.discontinuity},
          {"preroll", event.preroll},
          {"new_type", event.typeChange},
          {"size", event.size},
          {"sha1", event.sha1}};
}

std::string FlagsText(const DumpEvent& event) {
  std::string flags;
  if (event.sync) flags += 'K';
  if (event.discontinuity) flags += 'D';
  if (event.preroll) flags += 'P';
  if (event.typeChange) flags += 'T';
  return flags.empty() ? "-" : flags;
}

}  // namespace

std::string PinJsonLine(const DumpPin& pin) {
  Json object = {{"event", "pin"}, {"pin", pin.index}, {"name", pin.name}, {"stream", Json()}};
  if (pin.stream) object["stream"] = *pin.stream;
  object["media_type"] = MediaTypeJson(pin.mediaType, false);
  return JsonLine(object) + '\n';
}

std::string EventJsonLine(const DumpPin& pin, const DumpEvent& event, std::size_t sample) {
  Json object = {{"pin", pin.index}, {"stream", Json()}};
  if (pin.stream) object["stream"] = *pin.stream;
  object.update(EventJson(event, sample));
  return JsonLine(object) + '\n';
}

std::string PinTextLine(const DumpPin& pin) {
  return fmt::format("{:<3} pin      {}, stream {}, {}\n", pin.index, EscapeForTerminal(pin.name),
                     pin.stream ? std::to_string(*pin.stream) : "-", EscapeForTerminal(MediaTypeLine(pin.mediaType)));
}

std::string EventTextLine(const DumpPin& pin, const DumpEvent& event, std::size_t sample) {
  switch (event.kind) {
    case DumpEvent::Kind::kEnd:
      return fmt::format("{:<3} end\n", pin.index);
    case DumpEvent::Kind::kSegment:
      return fmt::format("{:<3} segment {:>8} {:>12} {:>20} rate {}\n", pin.index, "", OrDash(event.start),
                         OrDash(event.stop), event.rate);
    case DumpEvent::Kind::kSample:
      break;
  }
  return fmt::format("{:<3} sample  {:>8} {:>12} {:>20} {:<4} {:>9} {}\n", pin.index, sample, OrDash(event.start),
                     OrDash(event.stop), FlagsText(event), event.size, event.sha1);
}

}  // namespace tarvex::host
