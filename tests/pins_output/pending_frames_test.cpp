// Held frames: their order and what is dropped. The choice of a start is told by the video pin.
#include "pins/output/pending_frames.h"

#include <gtest/gtest.h>

#include <vector>

namespace tarvex {
namespace {

using Times = std::vector<REFERENCE_TIME>;

// The bytes are gone as soon as the frame is held.
void Add(PendingFrames& frames, REFERENCE_TIME start, bool key = false, std::vector<std::uint8_t> bytes = {1}) {
  FrameInfo frame;
  frame.start = static_cast<std::uint64_t>(start);
  frame.keyFrame = key;
  frame.data = bytes.data();
  frame.size = static_cast<std::uint32_t>(bytes.size());
  frames.Add(frame);
  for (std::uint8_t& byte : bytes) byte = 0xEE;
}

Times Starts(const PendingFrames& frames) {
  Times starts;
  for (std::size_t i = 0; i < frames.Count(); ++i) starts.push_back(static_cast<REFERENCE_TIME>(frames.At(i).start));
  return starts;
}

PendingFrames WithStarts(const Times& starts) {
  PendingFrames frames;
  for (const REFERENCE_TIME start : starts) Add(frames, start);
  return frames;
}

TEST(PendingFrames, KeepsItsOwnCopyOfTheBytesAndEmptyOnes) {
  PendingFrames frames;
  for (int i = 0; i < 100; ++i) Add(frames, i, false, {1, 2, 3});
  Add(frames, 100, false, {});
  EXPECT_EQ(frames.At(0).data[2], 3);
  EXPECT_EQ(frames.At(99).size, 3U);
  EXPECT_EQ(frames.At(100).size, 0U);
}

TEST(PendingFrames, TrimsToTheLastKeyFrameNotAfterTheTime) {
  PendingFrames frames;
  for (const REFERENCE_TIME start : {0, 40, 80, 120, 160}) Add(frames, start, start % 80 == 0);
  frames.TrimToKeyFrameBefore(159);
  EXPECT_EQ(Starts(frames), (Times{80, 120, 160}));
  frames.TrimToKeyFrameBefore(79);
  EXPECT_EQ(Starts(frames), (Times{80, 120, 160})) << "no key frame early enough: nothing is dropped";
  EXPECT_TRUE(frames.HasTwoKeyFrames());
  frames.TrimToKeyFrameBefore(160);
  EXPECT_EQ(Starts(frames), (Times{160}));
  EXPECT_FALSE(frames.HasTwoKeyFrames());
}

TEST(PendingFrames, DropStopsAtTheFirstFrameThatIsLateEnough) {
  PendingFrames frames = WithStarts({0, 40, 120, 80});
  EXPECT_EQ(frames.FirstStart(), 0);
  EXPECT_EQ(frames.LatestStart(), 120);
  frames.DropBefore(100);
  EXPECT_EQ(Starts(frames), (Times{120, 80})) << "arrival order: what follows a kept frame is kept";
  REFERENCE_TIME start = 0;
  ASSERT_TRUE(frames.PickStart(50, false, start));
  EXPECT_EQ(start, 80) << "starts of dropped frames are forgotten";
  frames.Clear();
  EXPECT_EQ(frames.Count(), 0U);
  EXPECT_EQ(frames.FirstStart(), 0);
  EXPECT_EQ(frames.LatestStart(), 0);
}

TEST(PendingFrames, DroppedFrameDoesNotTakeAnotherOfTheSameStartAlong) {
  PendingFrames frames = WithStarts({10, 200, 10, 300});
  frames.DropBefore(11);
  REFERENCE_TIME start = 0;
  ASSERT_TRUE(frames.PickStart(50, false, start));
  EXPECT_EQ(start, 10) << "the second one that starts at 10 is still held";
}

}  // namespace
}  // namespace tarvex
