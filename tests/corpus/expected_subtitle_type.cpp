// The subtitle rows of expected_media_type.h.
#include <algorithm>
#include <map>

#include "tests/corpus/block_writer.h"
#include "tests/corpus/expected_media_type.h"

namespace tarvex::test {
namespace {

constexpr GUID kSubtitle = {0xE487EB08, 0x6B26, 0x4BE9, {0x9D, 0xD3, 0x99, 0x34, 0x34, 0xD3, 0x13, 0xFD}};
constexpr GUID kFormatSubtitleInfo = {0xA33D2F7D, 0x96BC, 0x4337, {0xB2, 0x3B, 0xA8, 0xB9, 0xFB, 0xC2, 0x95, 0xE9}};
constexpr GUID kUtf8 = {0x87C0B230, 0x03A8, 0x4FDF, {0x80, 0x10, 0xB2, 0x7A, 0x58, 0x48, 0x20, 0x0D}};
constexpr GUID kSsa = {0x3020560F, 0x255A, 0x4DDC, {0x80, 0x6E, 0x6C, 0x5C, 0xC6, 0xDC, 0xD7, 0x0A}};
constexpr GUID kAss = {0x326444F7, 0x686F, 0x47FF, {0xA4, 0xB2, 0xC8, 0xC9, 0x63, 0x07, 0xB4, 0xC2}};
constexpr GUID kUsf = {0xB753B29A, 0x0A96, 0x45BE, {0x98, 0x5F, 0x68, 0x35, 0x1D, 0x9C, 0xAB, 0x90}};
constexpr GUID kVobSub = {0xF7239E31, 0x9599, 0x4E43, {0x8D, 0xD5, 0xFB, 0xAF, 0x75, 0xCF, 0x37, 0xF1}};

constexpr std::size_t kLanguage = 4;
constexpr std::size_t kInfoSize = 520;

}  // namespace

ExpectedMediaType ExpectSubtitleType(const ManifestTrack& track, Bytes codecPrivate) {
  static const std::map<std::string, GUID> kSubtypes = {
      {"S_TEXT/UTF8", kUtf8}, {"S_TEXT/SSA", kSsa}, {"S_TEXT/ASS", kAss}, {"S_TEXT/USF", kUsf}, {"S_VOBSUB", kVobSub}};
  if (!track.codecId) return {.major = kSubtitle};
  if (*track.codecId == "S_TEXT/ASCII") return {.major = BaseGuid(FourCc("txts"))};
  BlockWriter block(kInfoSize + codecPrivate.size());
  const std::size_t letters = std::min<std::size_t>(track.language.size(), 3);
  block.Copy(kLanguage, {reinterpret_cast<const std::uint8_t*>(track.language.data()), letters});
  block.Copy(kInfoSize, codecPrivate);
  const auto subtype = kSubtypes.find(*track.codecId);
  return {.major = kSubtitle,
          .subtype = subtype == kSubtypes.end() ? GUID{} : subtype->second,
          .format = kFormatSubtitleInfo,
          .block = block.Take()};
}

}  // namespace tarvex::test
