// Filters of a playing graph are stopped one after another, in every order and at every distance. A renderer that
// stops decommits the allocator of its connection, which is the splitter's, while the worker waits for room in it.
#include <algorithm>
#include <array>
#include <string>

#include "framework/thread.h"
#include "tests/orders/orders_fixture.h"

namespace tarvex::test {
namespace {

// More than the rings hold, so that the worker waits for room.
constexpr FilmShape kLongFilm = {.seconds = 60, .pictures = 4000000, .sound = 1000000};

class Stopping : public OrdersTest {
 protected:
  void Start(SinkKind sinks) {
    OpenFilm(kLongFilm, sinks);
    ASSERT_TRUE(SUCCEEDED(sinks == SinkKind::kBlocking ? Graph().Pause() : Graph().Run()));
    ASSERT_TRUE(EverySinkHasASample());
    SleepMilliseconds(20);  // until the rings are full
  }
  IBaseFilter* Filter(int number) {
    if (number == 0) return Graph().Splitter();
    return &Graph().Sink(static_cast<std::size_t>(number) - 1);
  }
};

TEST_F(Stopping, InNoOrderIsAnErrorAndTheNextRunPlays) {
  for (const SinkKind kind : {SinkKind::kSlow, SinkKind::kBlocking}) {
    for (const DWORD delay : {0U, 1U, 5U, 50U}) {
      std::array<int, 3> order{0, 1, 2};
      do {
        SCOPED_TRACE(std::string(NameOf(kind)) + ", " + std::to_string(delay) + " ms, " + std::to_string(order[0]) +
                     std::to_string(order[1]) + std::to_string(order[2]));
        Start(kind);
        for (const int number : order) {
          EXPECT_TRUE(SUCCEEDED(Filter(number)->Stop()));
          SleepMilliseconds(delay);
        }
        ExpectQuickStop();
        for (const auto& sink : Graph().Sinks()) sink->Clear();
        ASSERT_TRUE(SUCCEEDED(Graph().Run()));
        EXPECT_TRUE(EverySinkHasASample()) << "the next run does not play";
        for (const auto& sink : Graph().Sinks()) EXPECT_EQ(sink->Samples().front().start, 0);
        ExpectQuickStop();
        ExpectNoEnd();
      } while (std::ranges::next_permutation(order).found);
    }
  }
}

TEST_F(Stopping, OneBranchAloneAndStartedAgain) {
  for (const int branch : {1, 2}) {
    Start(SinkKind::kSlow);
    EXPECT_TRUE(SUCCEEDED(Filter(branch)->Stop()));
    SleepMilliseconds(20);
    EXPECT_TRUE(SUCCEEDED(Filter(branch)->Run(0)));
    SleepMilliseconds(20);
    EXPECT_EQ(Seek(10 * kSecond), S_OK);
    Graph().Sink(static_cast<std::size_t>(branch) - 1).Clear();
    EXPECT_TRUE(EverySinkHasASample()) << "a seek starts all branches again";
    ExpectQuickStop();
    ExpectNoEnd();
  }
}

}  // namespace
}  // namespace tarvex::test
