// The video rows of expected_media_type.h.
#include <stdexcept>

#include "tests/corpus/block_writer.h"
#include "tests/corpus/expected_media_type.h"

namespace tarvex::test {
namespace {

constexpr GUID kFormatVideoInfo = {0x05589F80, 0xC356, 0x11CE, {0xBF, 0x01, 0x00, 0xAA, 0x00, 0x55, 0x59, 0x5A}};
constexpr GUID kFormatMpegVideo = {0x05589F82, 0xC356, 0x11CE, {0xBF, 0x01, 0x00, 0xAA, 0x00, 0x55, 0x59, 0x5A}};
constexpr GUID kFormatMpeg2Video = {0xE06D80E3, 0xDB46, 0x11CF, {0xB4, 0xD1, 0x00, 0x80, 0x5F, 0x6C, 0xBB, 0xEA}};
constexpr GUID kFormatVideoInfo2 = {0xF72A76A0, 0xEB0A, 0x11D0, {0xAC, 0xE4, 0x00, 0x00, 0xC0, 0xCC, 0x16, 0xBA}};
constexpr GUID kMpeg1Payload = {0xE436EB81, 0x524F, 0x11CE, {0x9F, 0x53, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
constexpr GUID kMpeg2Video = {0xE06D8026, 0xDB46, 0x11CF, {0xB4, 0xD1, 0x00, 0x80, 0x5F, 0x6C, 0xBB, 0xEA}};

// Offsets in the published blocks. The bitmap header is at 48 in the blocks that start with
// VIDEOINFOHEADER and at 72 in those that start with VIDEOINFOHEADER2.
constexpr std::size_t kBitmapShort = 48;
constexpr std::size_t kBitmapLong = 72;
constexpr std::size_t kFrameTime = 40;
constexpr std::size_t kAspectX = 56;
constexpr std::size_t kAspectY = 60;
constexpr std::size_t kSequenceSize = 116;
constexpr std::size_t kSequence = 132;

std::uint64_t Width(const ManifestTrack& track) { return track.pixelWidth.value(); }
std::uint64_t Height(const ManifestTrack& track) { return track.pixelHeight.value(); }

void PutBitmap(BlockWriter& block, std::size_t at, const ManifestTrack& track) {
  block.U32(at, 40).U32(at + 4, Width(track)).U32(at + 8, Height(track)).U16(at + 12, 1);
}

void PutPicture(BlockWriter& block, std::size_t at, const ManifestTrack& track) {
  PutBitmap(block, at, track);
  block.U16(at + 14, 24).U32(at + 20, Width(track) * Height(track) * 3);
}

void PutFrameTime(BlockWriter& block, const ManifestTrack& track) {
  block.U64(kFrameTime, track.defaultDuration.value_or(0) / 100);
}

void PutAspect(BlockWriter& block, const ManifestTrack& track) {
  block.U32(kAspectX, track.displayWidth != 0 ? track.displayWidth : Width(track));
  block.U32(kAspectY, track.displayHeight != 0 ? track.displayHeight : Height(track));
}

ExpectedMediaType Video(const GUID& subtype, const GUID& format, BlockWriter& block) {
  return {.major = BaseGuid(FourCc("vids")), .subtype = subtype, .format = format, .block = block.Take()};
}

ExpectedMediaType Vp8(const ManifestTrack& track) {
  BlockWriter block(88);
  PutBitmap(block, kBitmapShort, track);
  block.U32(kBitmapShort + 16, FourCc("VP80"));
  ExpectedMediaType type = Video(BaseGuid(FourCc("VP80")), kFormatVideoInfo, block);
  type.fixedSize = false;
  return type;
}

// MPEG-2, Theora and MPEG-4 ASP differ in subtype and compression alone.
ExpectedMediaType Mpeg2Like(const ManifestTrack& track, Bytes codecPrivate, const GUID& subtype,
                            std::uint32_t compression) {
  BlockWriter block(codecPrivate.empty() && !track.codecPrivate ? kSequence + 4 : kSequence + codecPrivate.size());
  PutPicture(block, kBitmapLong, track);
  block.U32(kBitmapLong + 16, compression).U32(kSequenceSize, codecPrivate.size()).Copy(kSequence, codecPrivate);
  PutFrameTime(block, track);
  PutAspect(block, track);
  return Video(subtype, kFormatMpeg2Video, block);
}

ExpectedMediaType Asp(const ManifestTrack& track, Bytes codecPrivate) {
  ExpectedMediaType type = Mpeg2Like(track, codecPrivate, BaseGuid(FourCc("MP4V")), FourCc("MP4V"));
  type.fixedSize = false;
  return type;
}

ExpectedMediaType Mpeg1(const ManifestTrack& track, Bytes codecPrivate) {
  constexpr std::size_t kHeader = 96;
  BlockWriter block(kHeader + codecPrivate.size());
  PutPicture(block, kBitmapShort, track);
  block.U32(92, codecPrivate.size()).Copy(kHeader, codecPrivate);
  PutFrameTime(block, track);
  return Video(kMpeg1Payload, kFormatMpegVideo, block);
}

// Length-prefixed entries from `at` on; moves `at` behind them.
Bytes Entries(Bytes avcc, std::size_t count, std::size_t& at) {
  const std::size_t start = at;
  for (std::size_t k = 0; k < count; ++k) at += 2U + (static_cast<std::size_t>(avcc[at]) << 8U | avcc[at + 1]);
  return avcc.subspan(start, at - start);
}

ExpectedMediaType Avc(const ManifestTrack& track, Bytes avcc) {
  std::size_t at = 6;
  const Bytes sps = Entries(avcc, avcc[5] & 31U, at);
  const std::size_t ppsCount = avcc[at++];
  const Bytes pps = Entries(avcc, ppsCount, at);
  BlockWriter block(kSequence + sps.size() + pps.size());
  block.Copy(kSequence, sps).Copy(kSequence + sps.size(), pps).U32(kSequenceSize, sps.size() + pps.size());
  block.U32(120, avcc[1]).U32(124, avcc[3]).U32(128, (avcc[4] & 3U) + 1U);
  PutPicture(block, kBitmapLong, track);
  block.U32(kBitmapLong + 16, FourCc("AVC1"));
  PutFrameTime(block, track);
  PutAspect(block, track);
  return Video(BaseGuid(FourCc("AVC1")), kFormatMpeg2Video, block);
}

ExpectedMediaType Vfw(const ManifestTrack& track, Bytes bitmap) {
  BlockWriter block(kBitmapLong + bitmap.size());
  block.Copy(kBitmapLong, bitmap).U32(kBitmapLong + 4, Width(track)).U32(kBitmapLong + 8, Height(track));
  for (const std::size_t rectangle : {0U, 16U}) {
    block.U32(rectangle + 8, Width(track)).U32(rectangle + 12, Height(track));
  }
  PutFrameTime(block, track);
  PutAspect(block, track);
  const std::string_view compression(reinterpret_cast<const char*>(bitmap.data()) + 16, 4);
  return Video(BaseGuid(FourCc(compression)), kFormatVideoInfo2, block);
}

}  // namespace

ExpectedMediaType ExpectVideoType(const ManifestTrack& track, Bytes codecPrivate) {
  const std::string codec = track.codecId.value_or("");
  if (codec.empty()) return {.major = BaseGuid(FourCc("vids"))};
  if (codec == "V_VP8") return Vp8(track);
  if (codec == "V_MPEG4/ISO/ASP") return Asp(track, codecPrivate);
  if (codec == "V_MPEG1") return Mpeg1(track, codecPrivate);
  if (codec == "V_MPEG2") return Mpeg2Like(track, codecPrivate, kMpeg2Video, 0);
  if (codec == "V_THEORA") return Mpeg2Like(track, codecPrivate, BaseGuid(FourCc("THEO")), FourCc("THEO"));
  if (codec == "V_MPEG4/ISO/AVC") return Avc(track, codecPrivate);
  if (codec == "V_MS/VFW/FOURCC") return Vfw(track, codecPrivate);
  throw std::runtime_error("no media type is known for " + codec);
}

}  // namespace tarvex::test
