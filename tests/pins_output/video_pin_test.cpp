// The video pin's own rules: what is held and where a segment starts, the stop, and start codes.
#include <gtest/gtest.h>

#include "pins/creator/media_guids.h"
#include "pins/h264_form.h"
#include "tests/pins_output/pin_rig.h"

namespace tarvex::test {
namespace {

struct Sent {
  REFERENCE_TIME start;
  bool key;
};

struct HoldingCase {
  const char* what;
  REFERENCE_TIME wanted;
  std::vector<Sent> frames;
  std::vector<REFERENCE_TIME> delivered;  // before the end of stream, times of the file
  REFERENCE_TIME segment;
  std::size_t afterEnd;  // how many more the end of stream releases
};

// Frames last no time, so that the last one can start at the stop.
TEST(VideoPin, ChoosesTheStartOfASegment) {
  const HoldingCase cases[] = {
      {"nothing before the first key frame", 0, {{0, false}, {10, true}, {20, false}, {30, true}}, {10, 20, 30}, 10, 0},
      {"one key frame is not enough", 0, {{0, true}, {10, false}}, {}, 0, 2},
      {"from the key frame before the wanted time, at the frame before it",
       25,
       {{0, true}, {10, true}, {20, false}, {30, true}},
       {10, 20, 30},
       20,
       0},
      {"held until a frame is beyond the wanted time", 30, {{0, true}, {10, true}, {20, true}}, {}, 20, 1},
      {"exactly the wanted time", 20, {{0, true}, {20, true}, {30, true}}, {20, 30}, 20, 0},
      {"the last frame is the wanted one", 20, {{10, true}, {20, false}}, {}, 20, 2},
      {"all later than wanted", 5, {{10, true}, {20, true}}, {10, 20}, 10, 0},
      {"order of decoding, not of showing",
       15,
       {{0, true}, {20, false}, {10, false}, {40, true}},
       {0, 20, 10, 40},
       10,
       0},
      {"no key frame at all", 0, {{0, false}, {10, false}}, {}, 0, 0},
  };
  for (const HoldingCase& each : cases) {
    SCOPED_TRACE(each.what);
    VideoRig rig;
    rig.host.SetPlayRange(each.wanted, 1000, 1.0);
    rig.Start();
    for (const Sent& frame : each.frames) EXPECT_TRUE(rig.Send(frame.start, 0, frame.key));
    ASSERT_TRUE(rig.WaitForSamples(each.delivered.size()));
    EXPECT_EQ(rig.pin->DeliverEndOfStream(), S_OK);
    ASSERT_TRUE(rig.WaitForEnds(1));
    const auto samples = rig.sink->Samples();
    EXPECT_EQ(samples.size(), each.delivered.size() + each.afterEnd);
    if (samples.empty()) continue;
    EXPECT_EQ(rig.sink->Events().front().start, each.segment);
    for (std::size_t i = 0; i < std::min(samples.size(), each.delivered.size()); ++i) {
      EXPECT_EQ(samples[i].start + each.segment, each.delivered[i]);
    }
  }
}

TEST(VideoPin, FramesOutOfOrderAreShownUpToTheStop) {
  VideoRig rig;
  rig.host.SetPlayRange(0, 100, 1.0);
  rig.Start();
  rig.pin->SetHolding(false);
  for (const REFERENCE_TIME start : {0, 80, 95, 60, 100, 101, 40}) EXPECT_TRUE(rig.Send(start, 20));
  ASSERT_TRUE(rig.WaitForEnds(1));
  rig.Stop();
  EXPECT_EQ(Order(rig.sink->Events()), "nssssse");
}

TEST(VideoPin, ReachingTheStopReleasesWhatIsHeld) {
  VideoRig rig;
  rig.host.SetPlayRange(0, 100, 1.0);
  rig.Start();
  for (const REFERENCE_TIME start : {0, 40, 120, 160}) EXPECT_TRUE(rig.Send(start, 20, start == 0));
  ASSERT_TRUE(rig.WaitForEnds(1));
  EXPECT_EQ(Order(rig.sink->Events()), "nsse");
}

// 16-bit lengths in front of the sets, as in a format block.
const std::vector<std::uint8_t> kSets = {0, 2, 0x67, 1, 0, 1, 0x68, 0, 1, 0x99};
const std::vector<std::uint8_t> kPrefix = {0, 0, 0, 1, 0x67, 1, 0, 0, 0, 1, 0x68};

using Bytes = std::vector<std::uint8_t>;

Bytes Joined(Bytes first, const Bytes& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

Bytes Converted(unsigned lengthSize, const Bytes& sets, const Bytes& data, bool key) {
  CAnnexBConverter converter(lengthSize, sets);
  FrameInfo frame;
  frame.keyFrame = key;
  // A copy of exactly this size, so that reading outside is seen.
  const Bytes exact(data.begin(), data.end());
  frame.data = exact.data();
  frame.size = static_cast<std::uint32_t>(exact.size());
  const FrameInfo converted = converter.Convert(frame);
  return {converted.data, converted.data + converted.size};
}

TEST(AnnexB, UnitsGetStartCodes) {
  const Bytes unit = {0, 0, 0, 1, 0x41, 9};
  const struct {
    const char* what;
    unsigned lengthSize;
    bool key;
    Bytes data;
    Bytes expected;
  } cases[] = {
      {"length of 1 byte", 1, false, {2, 0x41, 9}, unit},
      {"length of 2 bytes", 2, false, {0, 2, 0x41, 9}, unit},
      {"length of 3 bytes", 3, false, {0, 0, 2, 0x41, 9}, unit},
      {"length of 4 bytes", 4, false, {0, 0, 0, 2, 0x41, 9}, unit},
      {"key frame without sets", 1, true, {2, 0x41, 9}, Joined(kPrefix, unit)},
      {"key frame with a set", 1, true, {1, 0x67, 2, 0x41, 9}, Joined({0, 0, 0, 1, 0x67}, unit)},
      {"the set is not its first unit", 1, true, {2, 0x41, 9, 1, 0x28}, Joined(unit, {0, 0, 0, 1, 0x28})},
      {"empty unit", 1, false, {0, 2, 0x41, 9}, Joined({0, 0, 0, 1}, unit)},
      {"unit past the end", 1, false, {200, 0x41, 9}, unit},
      {"greatest length there is", 4, false, {0xFF, 0xFF, 0xFF, 0xFF, 0x41, 9}, unit},
      {"length cut off", 4, false, {0, 0, 0, 2, 0x41, 9, 0, 0}, unit},
      {"empty frame", 4, true, {}, kPrefix},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(Converted(each.lengthSize, kSets, each.data, each.key), each.expected) << each.what;
  }
}

TEST(AnnexB, SetsThatRunPastTheirBlockAreNotUsed) {
  const Bytes unit = {0, 0, 0, 1, 0x65};
  const auto prefixed = [&](const Bytes& sets) { return Converted(1, sets, {1, 0x65}, true); };
  EXPECT_EQ(prefixed({}), unit);
  EXPECT_EQ(prefixed({0}), unit);
  EXPECT_EQ(prefixed({0, 3, 0x67, 1}), unit);
  EXPECT_EQ(prefixed({0, 1, 0x67, 0, 2, 0x68}), Joined({0, 0, 0, 1, 0x67}, unit));
}

// A block may claim more parameter sets than it holds, and a length size that there is none of.
TEST(AnnexB, OnlyAStartCodeTypeConverts) {
  CMediaType type(MEDIATYPE_Video);
  type.subtype = kSubtypeH264ByteStream;
  type.formattype = FORMAT_MPEG2Video;
  EXPECT_FALSE(CAnnexBConverter::For(type));
  type.AllocFormatBuffer(sizeof(MPEG2VIDEOINFO));
  auto* info = type.FormatAs<MPEG2VIDEOINFO>();
  info->cbSequenceHeader = 0xFFFFFFFF;
  for (const DWORD size : {0U, 5U, 255U}) {
    info->dwFlags = size;
    EXPECT_FALSE(CAnnexBConverter::For(type)) << size;
  }
  info->dwFlags = 4;
  EXPECT_TRUE(CAnnexBConverter::For(type));
  SetH264Form(type, false);
  EXPECT_EQ(info->hdr.bmiHeader.biCompression, FourCc("AVC1"));
  EXPECT_FALSE(CAnnexBConverter::For(type));
}

}  // namespace
}  // namespace tarvex::test
