// Held frames: their order, the choice of a start, and what is dropped.
#include "pins/output/pending_frames.h"

#include <gtest/gtest.h>

#include <vector>

namespace tarvex {
namespace {

void Add(PendingFrames& frames, REFERENCE_TIME start, bool key = false, std::vector<std::uint8_t> bytes = {1}) {
  FrameInfo frame;
  frame.start = static_cast<std::uint64_t>(start);
  frame.keyFrame = key;
  frame.data = bytes.data();
  frame.size = static_cast<std::uint32_t>(bytes.size());
  frames.Add(frame);
}

std::vector<REFERENCE_TIME> Starts(const PendingFrames& frames) {
  std::vector<REFERENCE_TIME> starts;
  for (std::size_t i = 0; i < frames.Count(); ++i) starts.push_back(static_cast<REFERENCE_TIME>(frames.At(i).start));
  return starts;
}

using Times = std::vector<REFERENCE_TIME>;

PendingFrames WithStarts(const Times& starts) {
  PendingFrames frames;
  for (const REFERENCE_TIME start : starts) Add(frames, start);
  return frames;
}

TEST(PendingFrames, KeepsItsOwnCopyOfTheBytes) {
  PendingFrames frames;
  std::vector<std::uint8_t> bytes{1, 2, 3};
  FrameInfo frame;
  frame.data = bytes.data();
  frame.size = 3;
  for (int i = 0; i < 100; ++i) frames.Add(frame);
  bytes.assign(3, 9);
  EXPECT_EQ(frames.At(0).data[2], 3);
  EXPECT_EQ(frames.At(99).size, 3U);
}

TEST(PendingFrames, EmptyFrameIsHeldToo) {
  PendingFrames frames;
  Add(frames, 5, false, {});
  EXPECT_EQ(frames.Count(), 1U);
  EXPECT_EQ(frames.At(0).size, 0U);
}

TEST(PendingFrames, EmptyAnswersZeroAndFindsNothing) {
  const PendingFrames frames;
  REFERENCE_TIME start = 77;
  EXPECT_EQ(frames.LatestStart(), 0);
  EXPECT_EQ(frames.FirstStart(), 0);
  EXPECT_FALSE(frames.PickStart(0, false, start));
  EXPECT_FALSE(frames.PickStart(0, true, start));
  EXPECT_EQ(start, 77);
}

TEST(PendingFrames, FirstIsByArrivalAndLatestByTime) {
  const PendingFrames frames = WithStarts({-40, 120, 80});
  EXPECT_EQ(frames.FirstStart(), -40);
  EXPECT_EQ(frames.LatestStart(), 120);
}

struct Pick {
  REFERENCE_TIME t;
  bool final;
  bool found;
  REFERENCE_TIME start;  // 77: left as it was
};

TEST(PendingFrames, PicksTheNearestStartThatIsNotLater) {
  const PendingFrames frames = WithStarts({0, 120, 40, 80});
  for (const Pick& pick : {
           Pick{39, false, true, 0},
           Pick{40, false, true, 40},
           Pick{119, false, true, 80},
           Pick{-1, false, true, 0},     // all are later: the first of them
           Pick{120, false, false, 77},  // something nearer may still come
           Pick{500, false, false, 77},
           Pick{119, true, true, 80},
           Pick{120, true, true, 77},
           Pick{500, true, false, 77},
       }) {
    SCOPED_TRACE(testing::Message() << "t " << pick.t << " final " << pick.final);
    REFERENCE_TIME start = 77;
    EXPECT_EQ(frames.PickStart(pick.t, pick.final, start), pick.found);
    EXPECT_EQ(start, pick.start);
  }
}

TEST(PendingFrames, CountsKeyFramesThatAreStillThere) {
  PendingFrames frames;
  Add(frames, 0, true);
  Add(frames, 40);
  EXPECT_FALSE(frames.HasTwoKeyFrames());
  Add(frames, 80, true);
  EXPECT_TRUE(frames.HasTwoKeyFrames());
  frames.DropBefore(40);
  EXPECT_FALSE(frames.HasTwoKeyFrames());
}

TEST(PendingFrames, TrimsToTheLastKeyFrameNotAfterTheTime) {
  PendingFrames frames;
  for (const REFERENCE_TIME start : {0, 40, 80, 120, 160}) Add(frames, start, start % 80 == 0);
  frames.TrimToKeyFrameBefore(159);
  EXPECT_EQ(Starts(frames), (Times{80, 120, 160}));
  frames.TrimToKeyFrameBefore(79);
  EXPECT_EQ(Starts(frames), (Times{80, 120, 160})) << "no key frame early enough: nothing is dropped";
  frames.TrimToKeyFrameBefore(160);
  EXPECT_EQ(Starts(frames), (Times{160}));
  EXPECT_FALSE(frames.HasTwoKeyFrames());
}

TEST(PendingFrames, DropStopsAtTheFirstFrameThatIsLateEnough) {
  PendingFrames frames = WithStarts({0, 40, 120, 80});
  frames.DropBefore(100);
  EXPECT_EQ(Starts(frames), (Times{120, 80})) << "arrival order: what follows a kept frame is kept";
  REFERENCE_TIME start = 0;
  ASSERT_TRUE(frames.PickStart(50, false, start));
  EXPECT_EQ(start, 80) << "starts of dropped frames are forgotten";
}

TEST(PendingFrames, DroppedFrameDoesNotTakeAnotherOfTheSameStartAlong) {
  PendingFrames frames = WithStarts({10, 200, 10, 300});
  frames.DropBefore(11);
  REFERENCE_TIME start = 0;
  ASSERT_TRUE(frames.PickStart(50, false, start));
  EXPECT_EQ(start, 10) << "the second one that starts at 10 is still held";
}

TEST(PendingFrames, UsableAfterClear) {
  PendingFrames frames;
  Add(frames, 0, true);
  Add(frames, 40, true);
  frames.DropBefore(20);
  frames.Clear();
  EXPECT_EQ(frames.Count(), 0U);
  EXPECT_EQ(frames.LatestStart(), 0);
  Add(frames, 80, true);
  Add(frames, 120, true);
  EXPECT_TRUE(frames.HasTwoKeyFrames());
  frames.TrimToKeyFrameBefore(120);
  EXPECT_EQ(Starts(frames), (Times{120}));
}

}  // namespace
}  // namespace tarvex
