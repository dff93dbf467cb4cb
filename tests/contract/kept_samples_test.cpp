// Samples that downstream keeps: decoders and renderers hold some for long, beyond the filter's life if they like.
#include <algorithm>
#include <utility>
#include <vector>

#include "tests/contract/contract_fixture.h"

namespace tarvex::test {
namespace {

struct KeptSample {
  ComPtr<IMediaSample> sample;
  std::vector<BYTE> bytes;  // as they were when it came
};

std::vector<BYTE> BytesOf(IMediaSample& sample) {
  BYTE* bytes = nullptr;
  EXPECT_EQ(sample.GetPointer(&bytes), S_OK);
  return {bytes, bytes + sample.GetActualDataLength()};
}

using KeptSamples = GraphTest;

// One of three is kept. Small ones leave gaps in the ring that it does not use, so all of those fit into it once.
// Large ones are more than are kept where they were read to.
TEST_F(KeptSamples, StayAsTheyCameWhateverIsReadAfterThemAndWithoutTheFilter) {
  for (const auto& [frames, size] : {std::pair{18'000U, 500U}, {1'500U, 10'000U}, {21U, 700'000U}}) {
    SCOPED_TRACE(size);
    OpenMovie({.audios = 0, .frames = frames, .frameSize = size});
    ASSERT_EQ(Graph().ConnectSinks(SinkKind::kForgetful), S_OK);
    std::vector<KeptSample> kept;
    std::size_t count = 0;
    Graph().Sink(0).OnSample([&](IMediaSample* sample) {
      if (count++ % 3 == 0) kept.push_back({ComPtr(sample), BytesOf(*sample)});
    });
    ASSERT_TRUE(SUCCEEDED(Graph().Run()));
    ASSERT_TRUE(Graph().WaitForEnd());
    EXPECT_EQ(count, frames);
    EXPECT_TRUE(SUCCEEDED(Graph().Stop()));
    EXPECT_TRUE(SUCCEEDED(Graph().DisconnectAll()));
    Drop();
    const auto isAsItCame = [](const KeptSample& each) { return BytesOf(*each.sample) == each.bytes; };
    EXPECT_TRUE(std::ranges::all_of(kept, isAsItCame));
  }
}

}  // namespace
}  // namespace tarvex::test
