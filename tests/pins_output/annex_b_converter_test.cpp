// Frames with start codes: every length size, damaged units, and parameter sets that lie about themselves.
#include <gtest/gtest.h>

#include <tuple>

#include "pins/output/annex_b_converter.h"
#include "tests/support/ebml_writer.h"

namespace tarvex::test {
namespace {

// 16-bit lengths in front of the sets, as in a format block.
const ByteString kSets = {0, 2, 0x67, 1, 0, 1, 0x68, 0, 1, 0x99};
const ByteString kPrefix = {0, 0, 0, 1, 0x67, 1, 0, 0, 0, 1, 0x68};

ByteString Converted(unsigned lengthSize, const ByteString& sets, const ByteString& data, bool key) {
  AnnexBConverter converter(lengthSize, sets);
  FrameInfo frame;
  frame.keyFrame = key;
  // A copy of exactly this size, so that reading outside is seen.
  const ByteString exact(data.begin(), data.end());
  frame.data = exact.data();
  frame.size = static_cast<std::uint32_t>(exact.size());
  const FrameInfo converted = converter.Convert(frame);
  return {converted.data, converted.data + converted.size};
}

TEST(AnnexB, UnitsGetStartCodes) {
  const ByteString unit = {0, 0, 0, 1, 0x41, 9};
  using Case =
      std::tuple<const char*, unsigned, bool, ByteString, ByteString>;  // size of lengths, key frame, data, expected
  const Case cases[] = {
      {"length of 2 bytes", 2, false, {0, 2, 0x41, 9}, unit},
      {"length of 4 bytes", 4, false, {0, 0, 0, 2, 0x41, 9}, unit},
      {"key frame without sets", 1, true, {2, 0x41, 9}, Join({kPrefix, unit})},
      {"key frame with a set", 1, true, {1, 0x67, 2, 0x41, 9}, Join({{0, 0, 0, 1, 0x67}, unit})},
      {"the set is not its first unit", 1, true, {2, 0x41, 9, 1, 0x28}, Join({unit, {0, 0, 0, 1, 0x28}})},
      {"empty unit", 1, false, {0, 2, 0x41, 9}, Join({{0, 0, 0, 1}, unit})},
      {"unit past the end", 1, false, {200, 0x41, 9}, unit},
      {"greatest length there is", 4, false, {0xFF, 0xFF, 0xFF, 0xFF, 0x41, 9}, unit},
      {"length cut off", 4, false, {0, 0, 0, 2, 0x41, 9, 0, 0}, unit},
      {"empty frame", 4, true, {}, kPrefix},
  };
  for (const auto& [what, lengthSize, key, data, expected] : cases) {
    EXPECT_EQ(Converted(lengthSize, kSets, data, key), expected) << what;
  }
  // Sets that run past their block are not used.
  EXPECT_EQ(Converted(1, {0, 3, 0x67, 1}, {2, 0x41, 9}, true), unit);
  EXPECT_EQ(Converted(1, {0, 1, 0x67, 0, 2, 0x68}, {2, 0x41, 9}, true), Join({{0, 0, 0, 1, 0x67}, unit}));
}

}  // namespace
}  // namespace tarvex::test
