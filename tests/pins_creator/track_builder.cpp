// See track_builder.h.
#include "tests/pins_creator/track_builder.h"

#include <ebml/EbmlUnicodeString.h>
#include <matroska/KaxTrackEntryData.h>
#include <matroska/KaxTrackVideo.h>

namespace tarvex::test {

namespace mkv = libmatroska;

template <class Element, class Value>
TrackBuilder& TrackBuilder::Set(const char* key, const Value& value) {
  Element element;
  element.SetValue(value);
  m_heap.Store(key, element);
  return *this;
}

TrackBuilder::TrackBuilder(std::uint64_t number, std::uint64_t type, const std::string& codecId) {
  Set<mkv::KaxTrackNumber>("KaxTrackNumber", number);
  Set<mkv::KaxTrackType>("KaxTrackType", type);
  Set<mkv::KaxCodecID>("KaxCodecID", codecId);
}

TrackBuilder& TrackBuilder::Private(const std::string& bytes) {
  mkv::KaxCodecPrivate element;
  element.CopyBuffer(reinterpret_cast<const std::uint8_t*>(bytes.data()), static_cast<std::uint32_t>(bytes.size()));
  m_heap.Store("KaxCodecPrivate", element);
  return *this;
}
TrackBuilder& TrackBuilder::Name(const std::string& utf8) {
  mkv::KaxTrackName element;
  element.SetValueUTF8(utf8);
  m_heap.Store("KaxTrackName", element);
  return *this;
}
TrackBuilder& TrackBuilder::Language(const std::string& value) {
  return Set<mkv::KaxTrackLanguage>("KaxTrackLanguage", value);
}
TrackBuilder& TrackBuilder::Default(std::uint64_t value) {
  return Set<mkv::KaxTrackFlagDefault>("KaxTrackFlagDefault", value);
}
TrackBuilder& TrackBuilder::Forced(std::uint64_t value) {
  return Set<mkv::KaxTrackFlagForced>("KaxTrackFlagForced", value);
}
TrackBuilder& TrackBuilder::Size(std::uint64_t width, std::uint64_t height) {
  Set<mkv::KaxVideoPixelWidth>("KaxVideoPixelWidth", width);
  return Set<mkv::KaxVideoPixelHeight>("KaxVideoPixelHeight", height);
}

}  // namespace tarvex::test
