// Content decoding: what the corpus does not hold.
#include "scanner/frames/frame_decoder.h"

#include <gtest/gtest.h>

#include "tests/scanner/recording.h"
#include "tests/support/deflated.h"

namespace tarvex::test {
namespace {

// Long, short, damaged and long again, by one scanner: what a frame leaves behind must not show in the next.
TEST(FrameDecoder, FramesDoNotDependOnThoseBefore) {
  OpenFile file(FileOf({}, Headers(2, Element(id::kContentEncodings,
                                              Element(id::kContentEncoding, Element(id::kContentCompression, {}))))));
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
