// What the three kinds of track share of expected_media_type.h.
#include "tests/corpus/expected_media_type.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace tarvex::test {
namespace {

std::string Text(const GUID& guid) {
  std::array<char, 40> text{};
  std::snprintf(text.data(), text.size(), "%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X",
                static_cast<unsigned>(guid.Data1), guid.Data2, guid.Data3, guid.Data4[0], guid.Data4[1], guid.Data4[2],
                guid.Data4[3], guid.Data4[4], guid.Data4[5], guid.Data4[6], guid.Data4[7]);
  return text.data();
}

void CompareGuid(std::string& out, const char* name, const GUID& expected, const GUID& actual) {
  if (expected != actual) out += std::string(name) + " is " + Text(actual) + ", not " + Text(expected) + "; ";
}

void CompareNumber(std::string& out, const char* name, std::uint64_t expected, std::uint64_t actual) {
  if (expected != actual) {
    out += std::string(name) + " is " + std::to_string(actual) + ", not " + std::to_string(expected) + "; ";
  }
}

}  // namespace

ExpectedMediaType ExpectMediaType(const ManifestTrack& track, Bytes codecPrivate) {
  if (track.type == 1) return ExpectVideoType(track, codecPrivate);
  return track.type == 2 ? ExpectAudioType(track, codecPrivate) : ExpectSubtitleType(track, codecPrivate);
}

std::string Differences(const ExpectedMediaType& expected, const AM_MEDIA_TYPE& actual) {
  std::string out;
  CompareGuid(out, "major type", expected.major, actual.majortype);
  CompareGuid(out, "subtype", expected.subtype, actual.subtype);
  CompareGuid(out, "format type", expected.format, actual.formattype);
  CompareNumber(out, "bFixedSizeSamples", expected.fixedSize ? 1 : 0, actual.bFixedSizeSamples != FALSE ? 1 : 0);
  CompareNumber(out, "bTemporalCompression", expected.temporalCompression ? 1 : 0,
                actual.bTemporalCompression != FALSE ? 1 : 0);
  CompareNumber(out, "lSampleSize", expected.sampleSize, actual.lSampleSize);
  CompareNumber(out, "cbFormat", expected.block.size(), actual.cbFormat);
  if (actual.pUnk != nullptr) out += "pUnk is set; ";
  const std::size_t common = std::min<std::size_t>(expected.block.size(), actual.cbFormat);
  const auto differ = std::mismatch(expected.block.begin(),
                                    expected.block.begin() + static_cast<std::ptrdiff_t>(common), actual.pbFormat);
  const auto offset = static_cast<std::size_t>(differ.first - expected.block.begin());
  if (offset < common) CompareNumber(out, ("byte " + std::to_string(offset)).c_str(), *differ.first, *differ.second);
  return out;
}

GUID BaseGuid(std::uint32_t first) { return {first, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}}; }

std::uint32_t FourCc(std::string_view text) {
  std::uint32_t value = 0;
  for (std::size_t k = 0; k < 4; ++k) value |= static_cast<std::uint32_t>(static_cast<std::uint8_t>(text[k])) << 8 * k;
  return value;
}

}  // namespace tarvex::test
