// The pins downstream refuse: a connection, an allocator, a sample, anything, at every single call.
#include <gtest/gtest.h>

#include "tests/faults/fault_points.h"
#include "tests/faults/fault_rig.h"

namespace tarvex::test {
namespace {

using Call = Downstream::Call;

struct Refusal {
  const char* name;
  Call call;
  HRESULT result;
};
constexpr Refusal kRefusals[] = {
    {"Receive", Call::kReceive, E_FAIL},
    {"ReceiveWantsNoMore", Call::kReceive, S_FALSE},
    {"ReceiveRejected", Call::kReceive, VFW_E_SAMPLE_REJECTED},
    {"ReceiveConnection", Call::kReceiveConnection, VFW_E_TYPE_NOT_ACCEPTED},
    {"NotifyAllocator", Call::kNotifyAllocator, E_FAIL},
    {"EndOfStream", Call::kEndOfStream, E_FAIL},
    {"NewSegment", Call::kNewSegment, E_FAIL},
    {"Flush", Call::kFlush, E_FAIL},
};

class DownstreamFaults : public testing::TestWithParam<std::tuple<FaultMovie, Refusal, bool>> {
 protected:
  /// One use with the refusal at this call. False when there were fewer calls.
  bool Try(int index) {
    const auto& [movie, refusal, lasting] = GetParam();
    FaultRig rig(movie);
    rig.Sinks().refused = refusal.call;
    rig.Sinks().index = index;
    rig.Sinks().lasting = lasting;
    rig.Sinks().refusal = refusal.result;
    rig.Use();
    const bool met = rig.Sinks().hasRefused;
    const bool connecting = refusal.call == Call::kReceiveConnection || refusal.call == Call::kNotifyAllocator;
    if (!met || !connecting) {
      EXPECT_FALSE(rig.Complained()) << "the filter that refuses is the one to report it";
    }
    rig.Sinks().refused = Call::kNone;
    if (met) rig.ExpectRecovery();
    return met;
  }
};

TEST_P(DownstreamFaults, EndClearlyAndLeaveNothing) {
  const MeetsNoFaults own;
  const auto& [movie, refusal, lasting] = GetParam();
  constexpr int kMany = 200;  // samples of one movie, about
  const FaultIndices indices(refusal.call == Call::kReceive ? kMany : 0, 40);
  constexpr int kNever = 0x7FFFFFFF;
  ASSERT_FALSE(Try(kNever));
  long long tried = 0;
  for (std::int64_t index = indices.First(); !HasFailure(); index += indices.Stride()) {
    SCOPED_TRACE("call " + std::to_string(index));
    if (!Try(static_cast<int>(index))) break;
    ++tried;
  }
  EXPECT_GT(tried, 0);
  PrintFaultPoints(std::string("Downstream ") + refusal.name + (lasting ? "AndLater " : " ") + movie.name, tried);
}

INSTANTIATE_TEST_SUITE_P(Movies, DownstreamFaults,
                         testing::Combine(testing::ValuesIn(kFaultMovies), testing::ValuesIn(kRefusals),
                                          testing::Bool()),
                         [](const auto& parameters) {
                           return std::string(std::get<0>(parameters.param).name) + std::get<1>(parameters.param).name +
                                  (std::get<2>(parameters.param) ? "AndLater" : "");
                         });

}  // namespace
}  // namespace tarvex::test
