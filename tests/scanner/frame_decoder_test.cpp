// Content decoding: what the corpus does not hold, and the texts.
#include "scanner/frames/frame_decoder.h"

#include <gtest/gtest.h>

#include <optional>

#include "tests/scanner/recording.h"
#include "tests/support/deflated.h"

namespace tarvex::test {
namespace {

ByteString Compression(const ByteString& children) { return Element(id::kContentCompression, children); }

/// The one frame of a file whose track has these encodings, decoded; nothing when it stayed as it was.
std::optional<ByteString> Decoded(const ByteString& encodings, const ByteString& frame) {
  OpenFile file(FileOf({}, Headers(2, Element(id::kContentEncodings, encodings))));
  FrameInfo info;
  info.trackNumber = 1;
  info.data = frame.data();
  info.size = static_cast<std::uint32_t>(frame.size());
  if (!file.scanner.Decode(info)) {
    EXPECT_EQ(info.data, frame.data());
    EXPECT_EQ(info.size, frame.size());
    return std::nullopt;
  }
  return ByteString(info.data, info.data + info.size);
}

ByteString ZlibEncodings() { return Element(id::kContentEncoding, Compression(Unsigned(id::kContentCompAlgo, 0))); }

TEST(FrameDecoder, DamagedFramesStayAsTheyAreAndCutOnesGiveWhatThereIs) {
  ByteString packed = Deflated(Noise(50000, 1));
  packed[packed.size() - 1] ^= 1;
  EXPECT_FALSE(Decoded(ZlibEncodings(), packed)) << "wrong checksum";
  EXPECT_FALSE(Decoded(ZlibEncodings(), {}));
  EXPECT_FALSE(Decoded(ZlibEncodings(), Noise(100, 2)));
  packed = Deflated(FromText("a frame that is compressed and cut"));
  packed.resize(packed.size() - 6);
  EXPECT_TRUE(Decoded(ZlibEncodings(), packed));
}

// Long, short, damaged and long again, by one scanner: what a frame leaves behind must not show in the next.
TEST(FrameDecoder, FramesDoNotDependOnThoseBefore) {
  OpenFile file(FileOf({}, Headers(2, Element(id::kContentEncodings, ZlibEncodings()))));
  for (const std::size_t size : {70000U, 1U, 16384U, 0U, 32768U, 5U, 70001U}) {
    const ByteString plain = Noise(size, static_cast<unsigned>(size));
    ByteString packed = Deflated(plain);
    FrameInfo info;
    info.trackNumber = 1;
    info.data = packed.data();
    info.size = static_cast<std::uint32_t>(packed.size());
    FrameInfo damaged = info;
    ASSERT_TRUE(file.scanner.Decode(info)) << size;
    EXPECT_EQ(ByteString(info.data, info.data + info.size), plain) << size;
    packed[0] ^= 0xFF;
    EXPECT_FALSE(file.scanner.Decode(damaged)) << size;
  }
}

}  // namespace
}  // namespace tarvex::test
