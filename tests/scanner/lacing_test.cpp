#include <gtest/gtest.h>

#include "tests/scanner/recording.h"

namespace tarvex::test {
namespace {

using Frames = std::vector<ByteString>;

/// The frames that a file with this one block delivers.
Frames FramesOf(const ByteString& block) {
  OpenFile file(FileOf(Cluster(0, block)));
  EXPECT_FALSE(file.Process());
  Frames frames;
  for (const RecordedFrame& frame : file.callback.frames) frames.push_back(frame.data);
  return frames;
}

Frames FramesOfSizes(std::initializer_list<std::size_t> sizes) {
  Frames frames;
  for (const std::size_t size : sizes) frames.push_back(Noise(size, static_cast<std::uint32_t>(frames.size())));
  return frames;
}

ByteString RawLace(std::uint8_t flags, const ByteString& lace) {
  return Element(id::kSimpleBlock, BlockData(1, 0, flags, lace));
}

constexpr std::uint8_t kXiph = 0x02;
constexpr std::uint8_t kFixed = 0x04;
constexpr std::uint8_t kEbml = 0x06;

TEST(Lacing, FramesOfEveryKindComeBack) {
  const Frames frames = FramesOfSizes({10, 300, 2, 70000, 255, 254, 7});
  EXPECT_EQ(FramesOf(LacedBlock(1, 0, Lacing::kXiph, frames)), frames);
  EXPECT_EQ(FramesOf(LacedBlock(1, 0, Lacing::kEbml, frames)), frames);
  const Frames even = FramesOfSizes({33, 33, 33, 33});
  EXPECT_EQ(FramesOf(LacedBlock(1, 0, Lacing::kFixed, even)), even);
}

TEST(Lacing, LaceOf256FramesOfEveryKindEndsAndIsWhole) {
  const Frames frames(256, ByteString{1, 2, 3});
  for (const Lacing lacing : {Lacing::kXiph, Lacing::kFixed, Lacing::kEbml}) {
    EXPECT_EQ(FramesOf(LacedBlock(1, 0, lacing, frames)), frames);
  }
}

TEST(Lacing, LaceOfOneFrame) {
  const Frames frames = FramesOfSizes({40});
  for (const Lacing lacing : {Lacing::kXiph, Lacing::kFixed, Lacing::kEbml}) {
    EXPECT_EQ(FramesOf(LacedBlock(1, 0, lacing, frames)), frames);
  }
}

TEST(Lacing, EmptyFramesInALace) {
  for (const Frames& frames : {FramesOfSizes({0, 5, 0, 9}), FramesOfSizes({5, 0, 0}), FramesOfSizes({0, 0})}) {
    EXPECT_EQ(FramesOf(LacedBlock(1, 0, Lacing::kEbml, frames)), frames);
    EXPECT_EQ(FramesOf(LacedBlock(1, 0, Lacing::kXiph, frames)), frames);
  }
  EXPECT_EQ(FramesOf(LacedBlock(1, 0, Lacing::kFixed, FramesOfSizes({0, 0}))).size(), 2U);
}

TEST(Lacing, EmptyFrameWithoutLace) { EXPECT_EQ(FramesOf(SimpleBlock(1, 0, {})), Frames{ByteString{}}); }

TEST(Lacing, DifferencesCodedInFiveToEightBytes) {
  for (unsigned length = 5; length <= 8; ++length) {
    const std::int64_t middle = (std::int64_t{1} << (7 * length - 1)) - 1;
    const ByteString sizes = Join({Vint(4, length), Vint(static_cast<std::uint64_t>(middle - 1), length)});
    const ByteString block = RawLace(kEbml, Join({{2}, sizes, Noise(9, 1)}));
    const Frames frames = FramesOf(block);
    ASSERT_EQ(frames.size(), 3U) << length;
    EXPECT_EQ(frames[0].size(), 4U);
    EXPECT_EQ(frames[1].size(), 3U);
    EXPECT_EQ(frames[2].size(), 2U);
  }
}

TEST(Lacing, LacesThatDoNotFitAreDropped) {
  const ByteString data = Noise(20, 1);
  const ByteString bad[] = {
      RawLace(kXiph, {}),                                  // no count
      RawLace(kXiph, {3}),                                 // no sizes
      RawLace(kXiph, Join({{1}, {255}})),                  // a size that does not end
      RawLace(kXiph, Join({{1}, {21}, data})),             // one byte more than there is
      RawLace(kXiph, Join({{2}, {15, 15}, data})),         // together more than there is
      RawLace(kXiph, Join({{1}, Repeat({255}, 1000)})),    // sizes and nothing else
      RawLace(kFixed, Join({{2}, data})),                  // 20 bytes for 3 frames
      RawLace(kEbml, {2}),                                 // no sizes
      RawLace(kEbml, Join({{1}, {0}, data})),              // no number
      RawLace(kEbml, Join({{1}, Vint(21), data})),         // more than there is
      RawLace(kEbml, Join({{2}, Vint(2), {0x80}, data})),  // less than nothing
      RawLace(kEbml, Join({{2}, Vint(1), Vint((std::uint64_t{1} << 56) - 2, 8), data})),
  };
  for (const ByteString& block : bad) {
    OpenFile file(FileOf(Cluster(0, Join({block, SimpleBlock(1, 7, {9})}))));
    EXPECT_FALSE(file.Process());
    ASSERT_EQ(file.callback.frames.size(), 1U) << "block " << &block - bad;
    EXPECT_EQ(file.callback.frames[0].start, 70000);
  }
}

TEST(Lacing, TrackNumbersOfOneToEightBytesAreWhole) {
  const std::uint64_t numbers[] = {1, 126, 127, 300, 0x3FFE, 20001, 3000001, 0x0FFFFFFF, 0xFFFFFFFF};
  for (const std::uint64_t number : numbers) {
    OpenFile file(FileOf(Cluster(0, SimpleBlock(number, 5, {1, 2, 3}))));
    file.Process();
    ASSERT_EQ(file.callback.frames.size(), 1U) << number;
    EXPECT_EQ(file.callback.frames[0].track, number);
    EXPECT_EQ(file.callback.frames[0].start, 50000);
    EXPECT_EQ(file.callback.frames[0].data, (ByteString{1, 2, 3}));
  }
  OpenFile padded(FileOf(Cluster(0, Element(id::kSimpleBlock, Join({Vint(1, 8), {0, 5, 0x80, 42}})))));
  padded.Process();
  ASSERT_EQ(padded.callback.frames.size(), 1U);
  EXPECT_EQ(padded.callback.frames[0].track, 1U);
}

TEST(Lacing, TrackNumberBeyond32BitsDoesNotPassForAnother) {
  OpenFile file(FileOf(Cluster(0, SimpleBlock((std::uint64_t{1} << 32) + 1, 0, {1}))));
  EXPECT_FALSE(file.Process());
  EXPECT_TRUE(file.callback.frames.empty());
}

TEST(Lacing, BlockThatIsAllHeadOrLessIsDropped) {
  for (const ByteString& data : {ByteString{}, ByteString{0x81}, ByteString{0x81, 0, 0}, ByteString{0x10, 1, 1, 0},
                                 ByteString{0x00, 0, 0, 0, 0}}) {
    EXPECT_TRUE(FramesOf(Element(id::kSimpleBlock, data)).empty()) << data.size();
  }
}

}  // namespace
}  // namespace tarvex::test
