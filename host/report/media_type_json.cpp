#include "host/report/media_type_json.h"

#include "host/report/guid_text.h"

namespace tarvex::host {

namespace {

Json NamedGuid(const GUID& guid, const std::string& name) { return {{"guid", GuidText(guid)}, {"name", name}}; }

Json FieldsJson(const std::vector<FormatField>& fields) {
  Json object = Json::object();
  for (const FormatField& field : fields) {
    std::visit([&](const auto& value) { object[field.name] = value; }, field.value);
  }
  return object;
}

}  // namespace

Json MediaTypeJson(const MediaTypeText& text, bool withBlock) {
  Json object = {
      {"major", NamedGuid(text.major, MajorTypeName(text.major))},
      {"subtype", NamedGuid(text.subtype, SubtypeName(text.major, text.subtype))},
      {"format", NamedGuid(text.format, FormatTypeName(text.format))},
      {"fixed_size_samples", text.fixedSizeSamples},
      {"temporal_compression", text.temporalCompression},
      {"sample_size", text.sampleSize},
      {"details", FieldsJson(text.fields)},
      {"summary", text.summary},
      {"block_size", text.block.size()},
  };
  if (withBlock) object["block"] = HexText(text.block);
  return object;
}

std::string JsonLine(const Json& value) { return value.dump(-1, ' ', true, Json::error_handler_t::replace); }

}  // namespace tarvex::host
