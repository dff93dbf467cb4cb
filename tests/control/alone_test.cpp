// A splitter that is stopped and started while the filters around it go on, and one whose last reference goes while
// its threads are at work: nobody has stopped it.
#include <gtest/gtest.h>

#include "framework/thread.h"
#include "tests/support/film.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"

namespace tarvex::test {
namespace {

// Those around it go first, as they may: a pin of a stopped filter can be disconnected whatever its peer does.
TEST(Alone, ItStopsStartsAgainAndIsDroppedWhileItRuns) {
  for (const SinkKind kind : {SinkKind::kCounting, SinkKind::kSlow, SinkKind::kHolding, SinkKind::kBlocking}) {
    SCOPED_TRACE(NameOf(kind));
    {
      const auto source = MakeFilm({.seconds = 60, .pictures = 4000000, .sound = 1000000});
      const auto sink = SinkFilter::Create(kind);
      const ComPtr<IBaseFilter> splitter = CreateSplitter();
      ASSERT_EQ(source->Pin()->Connect(AllPins(splitter.Get()).front().Get(), nullptr), S_OK);
      ASSERT_EQ(AllPins(splitter.Get()).at(1)->Connect(sink->Pin(), nullptr), S_OK);
      ASSERT_TRUE(SUCCEEDED(sink->Pause()));
      ASSERT_TRUE(SUCCEEDED(splitter->Run(0)));
      ASSERT_TRUE(sink->WaitForSample(kPatience));
      SleepMilliseconds(100);  // until the ring of a sink that takes no more is full
      EXPECT_TRUE(SUCCEEDED(splitter->Stop()));
      sink->LetGo();
      sink->Clear();
      ASSERT_TRUE(SUCCEEDED(splitter->Run(0)));
      ASSERT_TRUE(sink->WaitForSample(kPatience)) << "stopped alone, it does not start again";
      EXPECT_TRUE(SUCCEEDED(sink->Stop()));
      EXPECT_EQ(sink->Pin()->Disconnect(), S_OK);
      EXPECT_EQ(source->Pin()->Disconnect(), S_OK);
      FILTER_STATE state = State_Stopped;
      splitter->GetState(0, &state);
      EXPECT_EQ(state, State_Running);
    }
    EXPECT_TRUE(ModuleBecomesIdle()) << "something of the module is left";
  }
}

}  // namespace
}  // namespace tarvex::test
