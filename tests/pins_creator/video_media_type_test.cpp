// Media types of video tracks: every row byte for byte, and every track that is refused.
#include "pins/creator/video_media_type.h"

#include <gtest/gtest.h>

#include "tests/pins_creator/block_writer.h"
#include "tests/pins_creator/track_builder.h"

namespace tarvex::test {
namespace {

constexpr char kFormatVideoInfo[] = "05589F80-C356-11CE-BF01-00AA0055595A";
constexpr char kFormatMpeg1[] = "05589F82-C356-11CE-BF01-00AA0055595A";
constexpr char kFormatMpeg2[] = "E06D80E3-DB46-11CF-B4D1-00805F6CBBEA";
constexpr char kFormatVideoInfo2[] = "F72A76A0-EB0A-11D0-ACE4-0000C0CC16BA";
constexpr char kAvc1[] = "31435641-0000-0010-8000-00AA00389B71";
constexpr char kByteStream[] = "8D2D71CB-243F-45E3-B2D8-5FD7967EC09B";

TrackBuilder Film(const char* codecId) {
  return TrackBuilder(1, 1, codecId).Size(720, 576).Display(1024, 600).Duration(41708333);
}

// A bitmap header at `offset` as the rows with a whole picture fill it.
Block& Picture(Block& block, std::size_t offset) {
  return block.U32(offset, 40)
      .U32(offset + 4, 720)
      .U32(offset + 8, 576)
      .U16(offset + 12, 1)
      .U16(offset + 14, 24)
      .U32(offset + 20, 720 * 576 * 3);
}

// MPEG2VIDEOINFO of Film with this much after its first 132 bytes.
Block Mpeg2(std::size_t sequence, const char* compression) {
  Block block(132 + sequence);
  Picture(block, 72).U64(40, 417083).U32(56, 1024).U32(60, 600).Text(88, compression);
  return block;
}

// One parameter set of 25 bytes, one of 4, as an AVC decoder configuration record.
ByteVector Avcc() {
  ByteVector record = {1, 0x64, 0x07, 0x1F, 0xFE, 0xE1, 0, 25};
  for (std::uint8_t i = 0; i < 25; ++i) record.push_back(static_cast<std::uint8_t>(0x60 + i));
  record.insert(record.end(), {1, 0, 4, 0x68, 0xEE, 0x3C, 0x80});
  return record;
}

TEST(VideoMediaType, Vp8HasSizeAndCompressionOnly) {
  Block block(88);
  block.U32(48, 40).U32(52, 720).U32(56, 576).U16(60, 1).Text(64, "VP80");
  const Expected expected{kVideo, "30385056-0000-0010-8000-00AA00389B71", kFormatVideoInfo, block.Bytes(), false};
  ExpectType(VideoMediaType(Film("V_VP8").Private({1, 2, 3}), false), expected);
}

TEST(VideoMediaType, Mpeg4PartTwoCarriesItsPrivate) {
  const Block block = Mpeg2(5, "MP4V").U32(116, 5).Data(132, {9, 8, 7, 6, 5});
  const Expected expected{kVideo, "5634504D-0000-0010-8000-00AA00389B71", kFormatMpeg2, block.Bytes(), false};
  ExpectType(VideoMediaType(Film("V_MPEG4/ISO/ASP").Private({9, 8, 7, 6, 5}), false), expected);
}

TEST(VideoMediaType, Mpeg4PartTwoWithoutPrivateIsAWholeStructure) {
  const Expected expected{kVideo, "5634504D-0000-0010-8000-00AA00389B71", kFormatMpeg2, Mpeg2(4, "MP4V").Bytes(),
                          false};
  ExpectType(VideoMediaType(Film("V_MPEG4/ISO/ASP"), false), expected);
}

TEST(VideoMediaType, Mpeg1HasNoAspect) {
  Block block(96 + 7);
  Picture(block, 48).U64(40, 417083).U32(92, 7).Data(96, CountingBytes(7));
  const Expected expected{kVideo, "E436EB81-524F-11CE-9F53-0020AF0BA770", kFormatMpeg1, block.Bytes()};
  ExpectType(VideoMediaType(Film("V_MPEG1").Private(CountingBytes(7)), false), expected);
}

TEST(VideoMediaType, Mpeg2HasNoCompression) {
  const Block block = Mpeg2(150, "").U32(116, 150).Data(132, CountingBytes(150));
  const Expected expected{kVideo, "E06D8026-DB46-11CF-B4D1-00805F6CBBEA", kFormatMpeg2, block.Bytes()};
  ExpectType(VideoMediaType(Film("V_MPEG2").Private(CountingBytes(150)), false), expected);
}

TEST(VideoMediaType, TheoraIsMpeg2WithCompression) {
  const Block block = Mpeg2(42, "THEO").U32(116, 42).Data(132, CountingBytes(42));
  const Expected expected{kVideo, "4F454854-0000-0010-8000-00AA00389B71", kFormatMpeg2, block.Bytes()};
  ExpectType(VideoMediaType(Film("V_THEORA").Private(CountingBytes(42)), false), expected);
}

Block AvcBlock(const char* compression) {
  const ByteVector record = Avcc();
  ByteVector sets(record.begin() + 6, record.begin() + 6 + 27);
  sets.insert(sets.end(), {0, 4, 0x68, 0xEE, 0x3C, 0x80});
  return Mpeg2(33, compression).U32(116, 33).U32(120, 0x64).U32(124, 0x1F).U32(128, 3).Data(132, sets);
}

TEST(VideoMediaType, AvcLeavesOutTheCountByte) {
  ExpectType(VideoMediaType(Film("V_MPEG4/ISO/AVC").Private(Avcc()), false),
             {kVideo, kAvc1, kFormatMpeg2, AvcBlock("AVC1").Bytes()});
}

TEST(VideoMediaType, AvcByteStreamKeepsTheLengths) {
  ExpectType(VideoMediaType(Film("V_MPEG4/ISO/AVC").Private(Avcc()), true),
             {kVideo, kByteStream, kFormatMpeg2, AvcBlock("H264").Bytes()});
}

TEST(VideoMediaType, AvcWithoutParameterSets) {
  const Block block = Mpeg2(0, "AVC1").U32(120, 0x42).U32(124, 30).U32(128, 1);
  ExpectType(VideoMediaType(Film("V_MPEG4/ISO/AVC").Private({1, 0x42, 0, 30, 0xFC, 0xE0, 0}), false),
             {kVideo, kAvc1, kFormatMpeg2, block.Bytes()});
}

ByteVector BitmapHeader(std::size_t extra) {
  Block header(40 + extra);
  header.U32(0, 40 + extra).U32(4, 11).U32(8, 22).U16(12, 3).U16(14, 16).Text(16, "CRAM").U32(20, 55);
  header.U32(24, 66).U32(28, 77).U32(32, 88).U32(36, 99).Data(40, ByteVector(extra, 0xEE));
  return header.Bytes();
}

TEST(VideoMediaType, VfwKeepsAllOfTheHeaderButTheSize) {
  for (const std::size_t extra : {0u, 1u, 300u}) {
    Block block(112 + extra);
    block.Data(72, BitmapHeader(extra)).U32(76, 720).U32(80, 576).U64(40, 417083).U32(56, 1024).U32(60, 600);
    block.U32(8, 720).U32(12, 576).U32(24, 720).U32(28, 576);
    const Expected expected{kVideo, "4D415243-0000-0010-8000-00AA00389B71", kFormatVideoInfo2, block.Bytes()};
    ExpectType(VideoMediaType(Film("V_MS/VFW/FOURCC").Private(BitmapHeader(extra)), false), expected);
  }
}

TEST(VideoMediaType, EmptyIdentifierIsTheMajorTypeAlone) {
  ExpectType(VideoMediaType(TrackBuilder(1, 1, ""), false), {kVideo, kNullGuid, kNullGuid, {}});
  ExpectType(VideoMediaType(TrackBuilder().Number(1).Type(1), false), {kVideo, kNullGuid, kNullGuid, {}});
}

TEST(VideoMediaType, MissingDurationIsFrameTimeZero) {
  const CMediaType type = VideoMediaType(TrackBuilder(1, 1, "V_MPEG2").Size(8, 8).Private({0}), false);
  ASSERT_NE(type.FormatAs<VIDEOINFOHEADER2>(), nullptr);
  EXPECT_EQ(type.FormatAs<VIDEOINFOHEADER2>()->AvgTimePerFrame, 0);
}

TEST(VideoMediaType, LongestDurationStaysPositive) {
  const CMediaType type = VideoMediaType(Film("V_MPEG2").Private({0}).Duration(~std::uint64_t{0}), false);
  EXPECT_EQ(type.FormatAs<VIDEOINFOHEADER2>()->AvgTimePerFrame, 184467440737095516);
}

TEST(VideoMediaType, AspectFallsBackForZeroAndMissing) {
  const TrackBuilder tracks[] = {TrackBuilder(1, 1, "V_MPEG2").Private({0}).Size(320, 200),
                                 TrackBuilder(1, 1, "V_MPEG2").Private({0}).Size(320, 200).Display(0, 0),
                                 TrackBuilder(1, 1, "V_MS/VFW/FOURCC").Private(BitmapHeader(0)).Size(320, 200)};
  for (const TrackBuilder& track : tracks) {
    const CMediaType type = VideoMediaType(track, false);
    EXPECT_EQ(type.FormatAs<VIDEOINFOHEADER2>()->dwPictAspectRatioX, 320u);
    EXPECT_EQ(type.FormatAs<VIDEOINFOHEADER2>()->dwPictAspectRatioY, 200u);
  }
}

TEST(VideoMediaType, SizesBeyondTheFieldsWrapAround) {
  const CMediaType type =
      VideoMediaType(TrackBuilder(1, 1, "V_MPEG2").Private({0}).Size(0x1FFFFFFFF, 0x80000001), false);
  const BITMAPINFOHEADER& bitmap = type.FormatAs<VIDEOINFOHEADER2>()->bmiHeader;
  EXPECT_EQ(bitmap.biWidth, -1);
  EXPECT_EQ(static_cast<DWORD>(bitmap.biHeight), 0x80000001u);
  EXPECT_EQ(bitmap.biSizeImage, 0x7FFFFFFDu);
}

TEST(VideoMediaType, MissingPrivateComesBeforeUnknown) {
  for (const char* codecId : {"V_MPEG1", "V_MPEG2", "V_THEORA", "V_MPEG4/ISO/AVC", "V_MS/VFW/FOURCC", "V_VP9",
                              "V_MPEG4/ISO/AVCX", "V_VP80", "v_vp8"}) {
    EXPECT_EQ(ThrownBy([&] { VideoMediaType(Film(codecId), false); }), "KaxCodecPrivate is empty") << codecId;
  }
}

TEST(VideoMediaType, UnknownIdentifierIsRefused) {
  for (const char* codecId : {"V_VP9", "V_MPEG4/ISO/AVCX", "V_MPEG", "V_VP8 ", "V_MPEG4/ISO/ASPX"}) {
    EXPECT_EQ(ThrownBy([&] { VideoMediaType(Film(codecId).Private({1}), false); }),
              "<COutPinsCreator::createVideoPin> unknown codec id")
        << codecId;
  }
}

TEST(VideoMediaType, EveryRowNeedsThePictureSize) {
  const std::pair<const char*, ByteVector> rows[] = {{"V_VP8", {}},
                                                     {"V_MPEG4/ISO/ASP", {}},
                                                     {"V_MPEG1", {0}},
                                                     {"V_MPEG2", {0}},
                                                     {"V_THEORA", {0}},
                                                     {"V_MPEG4/ISO/AVC", Avcc()},
                                                     {"V_MS/VFW/FOURCC", BitmapHeader(0)}};
  for (const auto& [codecId, bytes] : rows) {
    TrackBuilder track(1, 1, codecId);
    track.Private(bytes);
    EXPECT_EQ(ThrownBy([&] { VideoMediaType(TrackBuilder(track).Height(9), false); }), "KaxVideoPixelWidth is empty");
    EXPECT_EQ(ThrownBy([&] { VideoMediaType(TrackBuilder(track).Width(9), false); }), "KaxVideoPixelHeight is empty");
  }
}

TEST(VideoMediaType, CutAvcPrivateIsRefused) {
  const ByteVector record = Avcc();
  for (std::size_t size = 1; size < record.size(); ++size) {
    const ByteVector cut(record.begin(), record.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_EQ(ThrownBy([&] { VideoMediaType(Film("V_MPEG4/ISO/AVC").Private(cut), false); }),
              "KaxCodecPrivate is too short")
        << size;
  }
}

TEST(VideoMediaType, CutBitmapHeaderIsRefused) {
  for (std::size_t size = 0; size < 40; ++size) {
    EXPECT_EQ(ThrownBy([&] { VideoMediaType(Film("V_MS/VFW/FOURCC").Private(CountingBytes(size)), false); }),
              "KaxCodecPrivate is too short")
        << size;
  }
}

}  // namespace
}  // namespace tarvex::test
