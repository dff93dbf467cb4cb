// The media type as a value.
#include "framework/media_type.h"

#include <gtest/gtest.h>

#include <array>

namespace tarvex::test {
namespace {

CMediaType Sample() {
  CMediaType type(MEDIATYPE_Video);
  type.subtype = MEDIASUBTYPE_RGB24;
  type.formattype = FORMAT_VideoInfo;
  type.bTemporalCompression = TRUE;
  const std::array<BYTE, 3> block{1, 2, 3};
  type.SetFormat(block.data(), static_cast<ULONG>(block.size()));
  return type;
}

TEST(MediaType, NewOneHasFixedSamplesOfOneByte) {
  const CMediaType type;
  EXPECT_EQ(type.bFixedSizeSamples, TRUE);
  EXPECT_EQ(type.bTemporalCompression, FALSE);
  EXPECT_EQ(type.lSampleSize, 1u);
  EXPECT_EQ(type.majortype, GUID_NULL);
  EXPECT_EQ(type.pbFormat, nullptr);
}

TEST(MediaType, CopyHasItsOwnBlock) {
  CMediaType original = Sample();
  const CMediaType copy(original);
  original.Format()[0] = 9;
  original.ResetFormatBuffer();
  EXPECT_EQ(copy.FormatLength(), 3u);
  EXPECT_EQ(copy.Format()[0], 1);
}

TEST(MediaType, EveryFieldAndEveryByteCountsInComparison) {
  const CMediaType type = Sample();
  EXPECT_EQ(type, Sample());
  const auto differs = [&](auto change) {
    CMediaType other = Sample();
    change(other);
    return !(type == other);
  };
  EXPECT_TRUE(differs([](CMediaType& t) { t.majortype = MEDIATYPE_Audio; }));
  EXPECT_TRUE(differs([](CMediaType& t) { t.subtype = GUID_NULL; }));
  EXPECT_TRUE(differs([](CMediaType& t) { t.formattype = GUID_NULL; }));
  EXPECT_TRUE(differs([](CMediaType& t) { t.bFixedSizeSamples = FALSE; }));
  EXPECT_TRUE(differs([](CMediaType& t) { t.bTemporalCompression = FALSE; }));
  EXPECT_TRUE(differs([](CMediaType& t) { t.lSampleSize = 2; }));
  EXPECT_TRUE(differs([](CMediaType& t) { t.Format()[2] = 4; }));
  EXPECT_TRUE(differs([](CMediaType& t) { t.ReallocFormatBuffer(2); }));
}

TEST(MediaType, GrowingKeepsTheBytesAndZeroesTheRest) {
  CMediaType type = Sample();
  type.ReallocFormatBuffer(5);
  EXPECT_EQ((std::vector<BYTE>(type.Format(), type.Format() + 5)), (std::vector<BYTE>{1, 2, 3, 0, 0}));
}

TEST(MediaType, SelfAssignmentKeepsTheBlock) {
  CMediaType type = Sample();
  const CMediaType& same = type;
  type = same;
  EXPECT_EQ(type, Sample());
}

TEST(MediaType, ShortBlockIsNotReadAsALargerStructure) { EXPECT_EQ(Sample().FormatAs<VIDEOINFOHEADER>(), nullptr); }

TEST(MediaType, PartialTypeMatchesWhatItLeavesOpen) {
  const CMediaType type = Sample();
  CMediaType partial(MEDIATYPE_Video);
  EXPECT_TRUE(type.MatchesPartial(&partial));
  partial.formattype = FORMAT_VideoInfo;
  EXPECT_FALSE(type.MatchesPartial(&partial));  // a format type means its block too
  partial = CMediaType(MEDIATYPE_Audio);
  EXPECT_FALSE(type.MatchesPartial(&partial));
}

TEST(MediaType, RecordForOthersIsACopy) {
  const CMediaType type = Sample();
  const MediaTypePtr record(CreateMediaType(type));
  EXPECT_EQ(type, *record);
  EXPECT_NE(record->pbFormat, type.pbFormat);
}

}  // namespace
}  // namespace tarvex::test
