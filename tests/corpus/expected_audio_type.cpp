// The audio rows of expected_media_type.h.
#include <map>
#include <numeric>

#include "tests/corpus/block_writer.h"
#include "tests/corpus/expected_media_type.h"

namespace tarvex::test {
namespace {

constexpr GUID kFormatWaveFormatEx = {0x05589F81, 0xC356, 0x11CE, {0xBF, 0x01, 0x00, 0xAA, 0x00, 0x55, 0x59, 0x5A}};
constexpr GUID kTrueHd = {0xEB27CEC4, 0x163E, 0x4CA3, {0x8B, 0x74, 0x8E, 0x25, 0xF9, 0x1B, 0x51, 0x7E}};
constexpr GUID kVorbis = {0x8D2FD10B, 0x5841, 0x4A6B, {0x89, 0x05, 0x58, 0x8F, 0xEC, 0x1A, 0xDE, 0xD9}};
constexpr GUID kFormatVorbis = {0xB36E107F, 0xA938, 0x4387, {0x93, 0xC7, 0x55, 0xE9, 0x66, 0x75, 0x74, 0x73}};
constexpr GUID kFlac = {0x1541C5C0, 0xCDDF, 0x477D, {0xBC, 0x0A, 0x86, 0xF8, 0xAE, 0x7F, 0x83, 0x54}};

constexpr std::size_t kWaveFormatSize = 18;
constexpr std::size_t kBlockAlign = 12;
constexpr std::size_t kBitsPerSample = 14;
constexpr std::size_t kAppended = 16;

std::uint64_t Rate(const ManifestTrack& track) {
  return static_cast<std::uint64_t>(static_cast<float>(track.samplingFrequency));
}

BlockWriter WaveFormat(const ManifestTrack& track, std::uint32_t tag, Bytes appended) {
  BlockWriter block(kWaveFormatSize + appended.size());
  block.U16(0, tag).U16(2, track.channels).U32(4, Rate(track)).U16(kAppended, appended.size());
  block.Copy(kWaveFormatSize, appended);
  return block;
}

void PutSampleLayout(BlockWriter& block, const ManifestTrack& track) {
  block.U16(kBlockAlign, track.bitDepth * track.channels / 8).U16(kBitsPerSample, track.bitDepth);
}

ExpectedMediaType Audio(const GUID& subtype, BlockWriter block, const GUID& format = kFormatWaveFormatEx) {
  return {.major = BaseGuid(FourCc("auds")), .subtype = subtype, .format = format, .block = block.Take()};
}

ExpectedMediaType Plain(const ManifestTrack& track, std::uint32_t tag, const GUID& subtype) {
  BlockWriter block = WaveFormat(track, tag, {});
  PutSampleLayout(block, track);
  return Audio(subtype, std::move(block));
}

std::uint32_t RealTag(const std::string& codec) {
  static const std::map<std::string, std::uint32_t> kTags = {
      {"14_4", 0x2002}, {"28_8", 0x2003}, {"COOK", 0x2004}, {"SIPR", 0x0130}, {"ATRC", 0x0270}};
  const auto found = kTags.find(codec.size() < 4 ? codec : codec.substr(codec.size() - 4));
  return found == kTags.end() ? 0 : found->second;
}

// The sizes that stand in front of laced packets, and the place where the packets start.
std::vector<std::size_t> LacedSizes(Bytes laced, std::size_t& at) {
  std::vector<std::size_t> sizes;
  at = 1;
  for (std::size_t k = 0; k < laced[0]; ++k) {
    std::size_t size = 0;
    while (laced[at] == 255) size += laced[at++];
    sizes.push_back(size + laced[at++]);
  }
  sizes.push_back(laced.size() - at - std::accumulate(sizes.begin(), sizes.end(), std::size_t{0}));
  return sizes;
}

ExpectedMediaType Vorbis(const ManifestTrack& track, Bytes laced) {
  std::size_t at = 0;
  const std::vector<std::size_t> sizes = laced.empty() ? std::vector<std::size_t>{} : LacedSizes(laced, at);
  BlockWriter block(24 + laced.size() - at);
  block.U32(0, track.channels).U32(4, Rate(track));
  if (sizes.size() == 3) {
    block.U32(12, sizes[0]).U32(16, sizes[1]).U32(20, sizes[2]).Copy(24, laced.subspan(at));
  }
  return Audio(kVorbis, std::move(block), kFormatVorbis);
}

ExpectedMediaType Acm(Bytes waveFormat) {
  if (waveFormat.size() < kWaveFormatSize) return {.major = BaseGuid(FourCc("auds"))};
  BlockWriter block(waveFormat.size());
  block.Copy(0, waveFormat);
  return Audio(BaseGuid(static_cast<std::uint32_t>(waveFormat[0] | waveFormat[1] << 8)), std::move(block));
}

}  // namespace

ExpectedMediaType ExpectAudioType(const ManifestTrack& track, Bytes codecPrivate) {
  static const std::map<std::string, std::uint32_t> kPlainTags = {
      {"A_AC3", 0x2000},     {"A_EAC3", 0x2000}, {"A_MPEG/L3", 0x0055},     {"A_MPEG/L1", 0x0050},
      {"A_MPEG/L2", 0x0050}, {"A_DTS", 0x2001},  {"A_PCM/INT/LIT", 0x0001}, {"A_PCM/FLOAT/IEEE", 0x0003}};
  static const std::map<std::string, std::uint32_t> kAppendingTags = {{"A_TTA1", 0x77A1}, {"A_WAVPACK4", 0x5756}};
  const std::string codec = track.codecId.value_or("");
  if (const auto plain = kPlainTags.find(codec); plain != kPlainTags.end()) {
    return Plain(track, plain->second, BaseGuid(plain->second));
  }
  if (const auto appending = kAppendingTags.find(codec); appending != kAppendingTags.end()) {
    return Audio(BaseGuid(appending->second), WaveFormat(track, appending->second, codecPrivate));
  }
  if (codec == "A_TRUEHD") return Plain(track, 0, kTrueHd);
  if (codec == "A_VORBIS") return Vorbis(track, codecPrivate);
  if (codec == "A_FLAC") return Audio(kFlac, WaveFormat(track, 0xF1AC, codecPrivate));
  if (codec.starts_with("A_REAL") && codec.size() > 6) {
    return Audio(BaseGuid(RealTag(codec)), WaveFormat(track, RealTag(codec), codecPrivate));
  }
  if (codec == "A_AAC") {
    BlockWriter block = WaveFormat(track, 0x00FF, codecPrivate);
    PutSampleLayout(block, track);
    return Audio(BaseGuid(0x00FF), std::move(block));
  }
  if (codec == "A_MS/ACM") return Acm(codecPrivate);
  return {.major = BaseGuid(FourCc("auds"))};
}

}  // namespace tarvex::test
