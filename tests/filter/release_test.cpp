// The release of held frames to downstream filters that keep what they get, as paused renderers do.
#include "tests/filter/filter_fixture.h"

namespace tarvex::test {
namespace {

using Release = FilterTest;

// Two pictures are more than the video pin's ring holds.
TEST_F(Release, SoundArrivesThoughThePicturesFillTheirRing) {
  constexpr std::uint32_t kHalfARing = 6000000;
  OpenMovie({.frames = 3, .frameSize = kHalfARing});
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kHolding), S_OK);
  ASSERT_TRUE(SUCCEEDED(Graph().Pause()));
  for (const auto& sink : Graph().Sinks()) EXPECT_TRUE(sink->WaitForSample(kPatience));
  EXPECT_TRUE(SUCCEEDED(Graph().Stop()));
}

}  // namespace
}  // namespace tarvex::test
