// Sources other than a file on a disk: one whose bytes are still on their way, one of more than 4 GiB.
#include "tests/contract/contract_fixture.h"

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
  const auto movie = MakeMovie(kMovie);
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

// And to open a file takes its headers alone.
TEST_F(Sources, PositionsBeyondFourGibibytesAreSoughtAndRead) {
  constexpr LONGLONG kHeaders = 5000;
  constexpr REFERENCE_TIME kWanted = 190 * kSecond;  // 4.75 GB
  const auto source = MakeFilm({.seconds = 200, .pictures = 25000000});
  source->Pin()->brokenFrom = kHeaders;
  Open(source);
  EXPECT_EQ(source->Pin()->brokenReads, 0);
  source->Pin()->brokenFrom = -1;
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  ASSERT_EQ(Seek(kWanted), S_OK);
  ASSERT_TRUE(SUCCEEDED(Graph().Run()));
  EXPECT_TRUE(Graph().WaitForEnd());
  EXPECT_TRUE(SUCCEEDED(Graph().Stop()));
  const auto pictures = Graph().Sink(0).Samples();
  EXPECT_EQ(pictures.size(), 250U);
  EXPECT_EQ(pictures.front().origin.time, kWanted);
  EXPECT_EQ(pictures.front().size, 1000000U);
  EXPECT_EQ(pictures.back().origin.time, 200 * kSecond - kPictureTime);
  EXPECT_LT(source->Reads(), 10000) << "what is in front of it is not read";
}

}  // namespace
}  // namespace tarvex::test
