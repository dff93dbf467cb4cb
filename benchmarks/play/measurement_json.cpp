// See measurement_json.h.
#include "benchmarks/play/measurement_json.h"

namespace tarvex::bench {
namespace {

using Json = nlohmann::ordered_json;

Json PinsJson(const std::vector<MeasuredPin>& pins) {
  Json list = Json::array();
  for (const MeasuredPin& pin : pins) {
    list.push_back({{"name", pin.name}, {"samples", pin.samples}, {"bytes", pin.bytes}});
  }
  return list;
}

Json SeeksJson(const std::vector<MeasuredSeek>& seeks) {
  Json list = Json::array();
  for (const MeasuredSeek& seek : seeks) {
    list.push_back({{"target_s", seek.target},
                    {"first_ms", seek.first},
                    {"reads", seek.reads.calls},
                    {"read_bytes", seek.reads.bytes}});
  }
  return list;
}

}  // namespace

Json MeasurementJson(const Measurement& measured) {
  Json json{{"made_ms", measured.made}, {"open_ms", measured.opened}, {"open_reads", measured.openReads.calls}};
  if (measured.first) {
    json["first_ms"] = *measured.first;
    json["first_reads"] = measured.firstReads.calls;
    json["first_read_bytes"] = measured.firstReads.bytes;
  }
  if (measured.ended) json["wall_ms"] = *measured.ended;
  json["user_ms"] = measured.cpu.user;
  json["system_ms"] = measured.cpu.system;
  json["reads"] = measured.allReads.calls;
  json["read_bytes"] = measured.allReads.bytes;
  json["peak_bytes"] = measured.peakBytes;
  json["start_bytes"] = measured.startBytes;
  json["ring_bytes"] = measured.ringBytes;
  json["heap_before_bytes"] = measured.heapBefore;
  json["heap_open_bytes"] = measured.heapOpened;
  json["heap_bytes"] = measured.heapFirst;
  json["pins"] = PinsJson(measured.pins);
  if (!measured.seeks.empty()) json["seeks"] = SeeksJson(measured.seeks);
  return json;
}

}  // namespace tarvex::bench
