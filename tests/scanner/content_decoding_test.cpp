#include "scanner/content_decoding.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <optional>

#include "tests/scanner/recording.h"

namespace tarvex::test {
namespace {

ByteString Compressed(const ByteString& plain) {
  uLongf size = compressBound(static_cast<uLong>(plain.size()));
  ByteString packed(size);
  EXPECT_EQ(compress(packed.data(), &size, plain.data(), static_cast<uLong>(plain.size())), Z_OK);
  packed.resize(size);
  return packed;
}

ByteString BytesOf(const DecodedFrame& frame) { return {frame.Bytes().begin(), frame.Bytes().end()}; }

std::optional<ByteString> Inflated(const ByteString& packed) {
  const auto decoded = Inflate(packed);
  return decoded ? std::optional(BytesOf(*decoded)) : std::nullopt;
}

ByteString Compression(const ByteString& children) {
  return Element(id::kContentEncodings, Element(id::kContentEncoding, Element(id::kContentCompression, children)));
}

/// The one frame of a file whose track has these children, decoded; nothing when it stayed as it was.
std::optional<ByteString> Decoded(const ByteString& trackChildren, const ByteString& frame) {
  OpenFile file(FileOf({}, Headers(2, trackChildren)));
  FrameInfo info;
  info.trackNumber = 1;
  info.data = frame.data();
  info.size = static_cast<std::uint32_t>(frame.size());
  DecodedFrame owner;
  if (!file.scanner.Decode(info, owner)) {
    EXPECT_EQ(info.data, frame.data());
    EXPECT_EQ(info.size, frame.size());
    return std::nullopt;
  }
  EXPECT_EQ(info.data, owner.Bytes().data());
  return ByteString(info.data, info.data + info.size);
}

TEST(ContentDecoding, InflatesAroundTheChunkSize) {
  for (const std::size_t size : {1U, 16383U, 16384U, 16385U, 32768U, 100000U}) {
    EXPECT_EQ(Inflated(Compressed(Noise(size, 1))), Noise(size, 1)) << size;
    EXPECT_EQ(Inflated(Compressed(Zeros(size))), Zeros(size)) << size;
  }
}

TEST(ContentDecoding, FrameThatInflatesToNothingIsEmpty) {
  const auto decoded = Inflate(Compressed({}));
  ASSERT_TRUE(decoded);
  EXPECT_EQ(decoded->Bytes().data(), nullptr);
  EXPECT_TRUE(decoded->Bytes().empty());
}

TEST(ContentDecoding, CorruptAndEmptyFramesStayAsTheyAre) {
  ByteString packed = Compressed(Noise(50000, 1));
  packed[packed.size() - 1] ^= 1;
  EXPECT_FALSE(Inflated(packed));
  EXPECT_FALSE(Inflated({}));
  EXPECT_FALSE(Inflated(Noise(100, 2)));
}

TEST(ContentDecoding, CutFrameGivesWhatThereIs) {
  ByteString packed = Compressed(FromText("a frame that is compressed and cut"));
  packed.resize(packed.size() - 6);
  EXPECT_TRUE(Inflated(packed));
}

TEST(ContentDecoding, HeaderIsPutBack) {
  const ByteString settings = Element(id::kContentCompSettings, {0, 0, 1});
  const auto decoded = Decoded(Compression(Join({Unsigned(id::kContentCompAlgo, 3), settings})), {5, 6, 7, 8, 9});
  EXPECT_EQ(decoded, (ByteString{0, 0, 1, 5, 6, 7, 8, 9}));
}

TEST(ContentDecoding, HeaderStrippingWithoutSettingsChangesNothing) {
  EXPECT_FALSE(Decoded(Compression(Unsigned(id::kContentCompAlgo, 3)), {5}));
}

TEST(ContentDecoding, OtherAlgorithmsAndNoneChangeNothing) {
  EXPECT_FALSE(Decoded(Compression(Unsigned(id::kContentCompAlgo, 1)), Compressed({1, 2, 3})));
  EXPECT_FALSE(Decoded({}, Compressed({1, 2, 3})));
}

TEST(ContentDecoding, EmptyCompressionIsZlib) {
  const LogTexts log;
  EXPECT_EQ(Decoded(Compression({}), Compressed({1, 2, 3})), (ByteString{1, 2, 3}));
  EXPECT_TRUE(log.Contains("\tKaxContentEncodings"));
  EXPECT_TRUE(log.Contains("\t\tKaxContentCompression"));
  EXPECT_TRUE(log.Contains("\t\t\tKaxContentCompAlgo 0"));
}

TEST(ContentDecoding, LastAlgorithmAndSettingsOfATrackCount) {
  const ByteString compression =
      Join({Compression(Unsigned(id::kContentCompAlgo, 3)), Compression(Element(id::kContentCompSettings, {1})),
            Compression(Element(id::kContentCompSettings, {2}))});
  EXPECT_EQ(Decoded(compression, {9}), (ByteString{2, 9}));
}

TEST(ContentDecoding, WhatIsNotReadIsLogged) {
  const LogTexts log;
  const ByteString order = Unsigned(0x5031, 0);
  const ByteString encodings = Element(
      id::kContentEncodings,
      Element(id::kContentEncoding,
              Join({order, Element(id::kContentCompression, Join({Unsigned(id::kContentCompAlgo, 0), order}))})));
  EXPECT_TRUE(Decoded(encodings, Compressed({1})));
  EXPECT_TRUE(log.Contains("Unsupported Element in KaxContentEncoding"));
}

}  // namespace
}  // namespace tarvex::test
