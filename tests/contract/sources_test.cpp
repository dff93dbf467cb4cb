// Sources other than a file on a disk: one whose bytes are still on their way, one that says its end in another way,
// one of more than 4 GiB.
#include "tests/contract/contract_fixture.h"
#include "tests/support/ebml_writer.h"

namespace tarvex::test {
namespace {

constexpr MovieShape kMovie = {.frames = 300, .framesPerCluster = 25, .frameSize = 5000};

class Sources : public GraphTest {
 protected:
  /// Connects the source and a sink for every pin.
  void OpenWithSinks(ComPtr<SourceFilter> source) {
    Open(std::move(source));
    ASSERT_EQ(Graph().ConnectSinks(SinkKind::kRecording), S_OK);
  }
  /// Of all samples that each sink gets.
  std::vector<std::vector<std::string>> DigestsAtTheEnd() {
    EXPECT_TRUE(SUCCEEDED(Graph().Run()));
    EXPECT_TRUE(Graph().WaitForEnd());
    EXPECT_FALSE(IsAborted());
    EXPECT_TRUE(SUCCEEDED(Graph().Stop()));
    std::vector<std::vector<std::string>> all;
    for (const auto& sink : Graph().Sinks()) {
      std::vector<std::string>& digests = all.emplace_back();
      for (const SinkEvent& sample : sink->Samples()) digests.push_back(sample.sha1);
    }
    return all;
  }
  std::size_t SamplesSoFar() {
    std::size_t samples = 0;
    for (const auto& sink : Graph().Sinks()) samples += sink->CountOf(SinkEvent::Kind::kSample);
    return samples;
  }
  bool WaitsForBytes() {
    return Eventually([this] { return m_source->Pin()->isWaiting.load(); });
  }
};

TEST_F(Sources, BytesOnTheirWayAreWaitedForAndNeverMadeUp) {
  const ByteString movie = MakeMovie(kMovie);
  const auto size = static_cast<LONGLONG>(movie.size());
  OpenWithSinks(SourceFilter::FromBytes(movie));
  const auto expected = DigestsAtTheEnd();
  ASSERT_EQ(expected.at(0).size(), kMovie.frames);

  const auto source = SourceFilter::FromBytes(movie);
  source->Arrive(2000);  // the headers; opening waits for no more
  OpenWithSinks(source);
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  EXPECT_TRUE(WaitsForBytes());
  EXPECT_TRUE(SUCCEEDED(Graph().Stop())) << "which ends the wait";
  EXPECT_FALSE(source->Pin()->isWaiting);
  EXPECT_FALSE(IsAborted());
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  const std::size_t aCluster = 2 * kMovie.framesPerCluster;
  for (LONGLONG arrived = 2000; arrived < size; arrived += 123457) {
    source->Arrive(arrived);
    // What is there is played, but for the Cluster that is not whole yet.
    const auto whole = static_cast<std::size_t>(arrived * 2 * kMovie.frames / size);
    EXPECT_TRUE(Eventually([&] { return WaitsForBytes() && SamplesSoFar() + 2 * aCluster >= whole; }));
    EXPECT_LE(SamplesSoFar(), whole);
  }
  source->Arrive(size);
  EXPECT_EQ(DigestsAtTheEnd(), expected);
}

// The end is nearer than it was thought to be when the stream was opened, or the file is cut: reads cross it.
TEST_F(Sources, AnEndIsTheSameHoweverTheSourceSaysIt) {
  constexpr LONGLONG kTooMuch = 100000;
  for (const int cut : {0, 1, 3, 4990, 5010}) {
    ByteString movie = MakeMovie(kMovie);
    movie.erase(movie.end() - cut, movie.end());
    OpenWithSinks(SourceFilter::FromBytes(movie));
    const auto expected = DigestsAtTheEnd();
    EXPECT_GE(expected.at(0).size(), kMovie.frames - kMovie.framesPerCluster);
    for (const HRESULT answer : {S_FALSE, HRESULT_FROM_WIN32(ERROR_HANDLE_EOF)}) {
      SCOPED_TRACE(testing::Message() << cut << " bytes missing, answer " << std::hex << answer);
      const auto source = SourceFilter::FromBytes(movie);
      const auto size = static_cast<LONGLONG>(movie.size());
      source->Pin()->answerAtTheEnd = answer;
      source->Arrive(size - kTooMuch, cut == 0 ? size + kTooMuch : size);
      OpenWithSinks(source);
      ASSERT_TRUE(SUCCEEDED(Graph().Run()));
      EXPECT_TRUE(WaitsForBytes());
      source->Arrive(size);
      EXPECT_EQ(DigestsAtTheEnd(), expected);
    }
  }
}

/// One Cluster in front of 5 GiB of tags and one behind them, with the Cues at the end.
ComPtr<SourceFilter> LargeFile() {
  constexpr std::uint64_t kTags = std::uint64_t{1} << 30;  // of each, as there are bounds to an element
  constexpr int kCount = 5;
  const auto pictures = [](std::uint8_t second) {
    ByteString blocks;
    for (std::int16_t k = 0; k < 10; ++k) {
      const auto content = static_cast<std::uint8_t>(second * 10 + k);
      blocks = Join({blocks, SimpleBlock(1, static_cast<std::int16_t>(k * 100), ByteString(100, content))});
    }
    return Cluster(std::uint64_t{1000} * second, blocks);
  };
  const auto cue = [](std::uint64_t time, std::uint64_t position) {
    const ByteString place = Join({Unsigned(id::kCueTrack, 1), Unsigned(id::kCueClusterPosition, position)});
    return Element(id::kCuePoint, Join({Unsigned(id::kCueTime, time), Element(id::kCueTrackPositions, place)}));
  };
  const ByteString video = Element(id::kVideo, Join({Unsigned(id::kPixelWidth, 320), Unsigned(id::kPixelHeight, 240)}));
  const ByteString front = Join({Element(id::kInfo, {}), Element(id::kTracks, TrackEntry(1, 1, "V_VP8", video))});
  const ByteString tags = Join({Id(id::kTags), Vint(kTags, 8)});
  const std::uint64_t first = SeekHeadFor(id::kCues, 0).size() + front.size();
  const std::uint64_t behind = first + pictures(0).size() + kCount * (tags.size() + kTags);
  const std::uint64_t cuesAt = behind + pictures(1).size();
  const ByteString cues = Element(id::kCues, Join({cue(0, first), cue(1000, behind)}));
  const ByteString head = Join({EbmlHead(), Id(id::kSegment), Vint(cuesAt + cues.size(), 8)});
  SourceFilter::Parts parts;
  parts[0] = Join({head, SeekHeadFor(id::kCues, cuesAt), front, pictures(0)});
  auto position = static_cast<LONGLONG>(parts[0].size());
  for (int k = 0; k < kCount; ++k, position += static_cast<LONGLONG>(tags.size() + kTags)) parts[position] = tags;
  parts[position] = Join({pictures(1), cues});
  return SourceFilter::FromParts(parts, static_cast<LONGLONG>(head.size() + cuesAt + cues.size()));
}

// Its Cues are the last to come, and only a seek needs them.
TEST_F(Sources, PositionsBeyondFourGibibytesAreReadAndSoughtAndOpeningNeedsTheHeadersAlone) {
  constexpr LONGLONG kHere = 4000;
  const auto source = LargeFile();
  source->Arrive(kHere);
  source->Pin()->brokenFrom = kHere;
  OpenWithSinks(source);
  EXPECT_EQ(source->Pin()->brokenReads, 0);
  source->Pin()->brokenFrom = -1;
  source->Arrive(source->Size());
  const std::vector<std::string> all = DigestsAtTheEnd().at(0);
  ASSERT_EQ(all.size(), 20U) << "from the front to the back";
  const int readsToPlay = source->Reads();
  EXPECT_LT(readsToPlay, 100) << "the tags are not read";

  ASSERT_EQ(Seek(kSecond), S_OK);
  Graph().Sink(0).Clear();
  EXPECT_EQ(DigestsAtTheEnd().at(0), std::vector<std::string>(all.begin() + 10, all.end()));
  EXPECT_EQ(Graph().Sink(0).Events().front().start, kSecond) << "the segment's";
  EXPECT_LT(source->Reads() - readsToPlay, 20) << "nothing in between is read";
}

}  // namespace
}  // namespace tarvex::test
