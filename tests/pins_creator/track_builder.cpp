// Track tables for tests.
#include "tests/pins_creator/track_builder.h"

#include <ebml/EbmlUnicodeString.h>
#include <matroska/KaxTrackAudio.h>
#include <matroska/KaxTrackEntryData.h>
#include <matroska/KaxTrackVideo.h>

#include <numeric>

namespace tarvex::test {

template <class Element, class Value>
TrackBuilder& TrackBuilder::Set(const char* key, const Value& value) {
  Element element;
  element.SetValue(value);
  m_heap.Store(key, element);
  return *this;
}

TrackBuilder::TrackBuilder(std::uint64_t number, std::uint64_t type, const std::string& codecId) {
  Number(number).Type(type).Codec(codecId);
}

TrackBuilder& TrackBuilder::Number(std::uint64_t value) {
  return Set<libmatroska::KaxTrackNumber>("KaxTrackNumber", value);
}
TrackBuilder& TrackBuilder::Type(std::uint64_t value) { return Set<libmatroska::KaxTrackType>("KaxTrackType", value); }
TrackBuilder& TrackBuilder::Codec(const std::string& value) {
  return Set<libmatroska::KaxCodecID>("KaxCodecID", value);
}
TrackBuilder& TrackBuilder::Private(const ByteVector& value) {
  libmatroska::KaxCodecPrivate element;
  if (!value.empty()) element.CopyBuffer(value.data(), static_cast<std::uint32_t>(value.size()));
  m_heap.Store("KaxCodecPrivate", element);
  return *this;
}
TrackBuilder& TrackBuilder::Name(const std::string& utf8) {
  libmatroska::KaxTrackName element;
  element.SetValueUTF8(utf8);
  m_heap.Store("KaxTrackName", element);
  return *this;
}
TrackBuilder& TrackBuilder::Language(const std::string& value) {
  return Set<libmatroska::KaxTrackLanguage>("KaxTrackLanguage", value);
}
TrackBuilder& TrackBuilder::Default(bool value) {
  return Set<libmatroska::KaxTrackFlagDefault>("KaxTrackFlagDefault", std::uint64_t{value});
}
TrackBuilder& TrackBuilder::Forced(bool value) {
  return Set<libmatroska::KaxTrackFlagForced>("KaxTrackFlagForced", std::uint64_t{value});
}
TrackBuilder& TrackBuilder::Duration(std::uint64_t nanoseconds) {
  return Set<libmatroska::KaxTrackDefaultDuration>("KaxTrackDefaultDuration", nanoseconds);
}
TrackBuilder& TrackBuilder::Width(std::uint64_t value) {
  return Set<libmatroska::KaxVideoPixelWidth>("KaxVideoPixelWidth", value);
}
TrackBuilder& TrackBuilder::Height(std::uint64_t value) {
  return Set<libmatroska::KaxVideoPixelHeight>("KaxVideoPixelHeight", value);
}
TrackBuilder& TrackBuilder::Size(std::uint64_t width, std::uint64_t height) { return Width(width).Height(height); }
TrackBuilder& TrackBuilder::Display(std::uint64_t width, std::uint64_t height) {
  Set<libmatroska::KaxVideoDisplayWidth>("KaxVideoDisplayWidth", width);
  return Set<libmatroska::KaxVideoDisplayHeight>("KaxVideoDisplayHeight", height);
}
TrackBuilder& TrackBuilder::Rate(double hertz) {
  return Set<libmatroska::KaxAudioSamplingFreq>("KaxAudioSamplingFreq", hertz);
}
TrackBuilder& TrackBuilder::Channels(std::uint64_t value) {
  return Set<libmatroska::KaxAudioChannels>("KaxAudioChannels", value);
}
TrackBuilder& TrackBuilder::Depth(std::uint64_t value) {
  return Set<libmatroska::KaxAudioBitDepth>("KaxAudioBitDepth", value);
}

ByteVector CountingBytes(std::size_t count) {
  ByteVector bytes(count);
  std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
  return bytes;
}

}  // namespace tarvex::test
