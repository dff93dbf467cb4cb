// Memory and threads that cannot be had, at every single call and from every call on.
#include <gtest/gtest.h>

#include <cstdio>
#include <exception>

#include "tests/faults/fault_points.h"
#include "tests/faults/fault_rig.h"

namespace tarvex::test {
namespace {

constexpr int kWanted = 40;  // fault points of one kind in one file in the quick form

FaultPoint g_point;

// An exception that nobody could catch ends the program without GoogleTest's trace.
[[noreturn]] void NamePointAndAbort() {
  std::fprintf(stderr, "terminated at %s %lld%s\n", NameOf(g_point.kind), static_cast<long long>(g_point.index),
               g_point.lasting ? " and later" : "");
  std::abort();
}

class ResourceFaults : public testing::TestWithParam<std::tuple<FaultMovie, FaultKind>> {
 protected:
  void SetUp() override { m_former = std::set_terminate(&NamePointAndAbort); }
  void TearDown() override { std::set_terminate(m_former); }

  /// One use with one fault. False when the fault was not met.
  bool Try(const FaultPoint& point) {
    g_point = point;
    FaultRig rig(m_movie);
    ArmFaults(point);
    rig.Use();
    const bool met = FaultWasMet();
    if (met && !point.lasting) {
      m_calls = DisarmFaults();
      ExpectNothingLost(rig);
      rig.ExpectRecovery();
      ExpectWhole(rig);
    }
    if (!met) {
      EXPECT_FALSE(rig.Complained()) << "without a fault";
      ExpectWhole(rig);
    }
    return met;
  }

  void ExpectWhole(const FaultRig& rig) const {
    if (m_samples >= 0) {
      EXPECT_EQ(rig.SamplesOfFirstPass(), m_samples);
    }
  }
  void ExpectNothingLost(const FaultRig& rig) const {
    if (rig.Complained()) return;
    EXPECT_EQ(rig.SamplesOfFirstPass(), m_samples) << "lost without a word";
    EXPECT_EQ(rig.DigestOfAnswers(), m_answers) << "answers that are not right";
  }

  void CountCalls(FaultKind kind) {
    constexpr std::int64_t kNever = INT64_MAX;
    for (int round = 0; round < 2; ++round) {  // the first one also fills what is kept for good
      FaultRig rig(m_movie);
      ArmFaults({.kind = kind, .index = kNever});
      rig.Use();
      m_calls = DisarmFaults();
      m_samples = rig.SamplesOfFirstPass();
      m_answers = rig.DigestOfAnswers();
    }
  }

  const FaultMovie m_movie = std::get<0>(GetParam());
  std::int64_t m_calls = 0;
  int m_samples = -1;
  std::uint64_t m_answers = 0;
  std::terminate_handler m_former = nullptr;
};

TEST_P(ResourceFaults, EndClearlyAndLeaveNothing) {
  const MeetsNoFaults own;
  const FaultKind kind = std::get<1>(GetParam());
  CountCalls(kind);
  ASSERT_GT(m_samples, 0);
  const FaultIndices indices(m_calls, kWanted);
  long long tried = 0;
  for (const bool lasting : {false, true}) {
    for (std::int64_t index = indices.First(); !HasFailure(); index += indices.Stride()) {
      SCOPED_TRACE(std::string(NameOf(kind)) + " " + std::to_string(index) + (lasting ? " and later" : ""));
      const bool met = Try({.kind = kind, .index = index, .lasting = lasting});
      DisarmFaults();
      if (!met) break;
      ++tried;
    }
  }
  PrintFaultPoints(std::string(NameOf(kind)) + " " + m_movie.name, tried);
}

INSTANTIATE_TEST_SUITE_P(Movies, ResourceFaults,
                         testing::Combine(testing::ValuesIn(kFaultMovies), testing::ValuesIn(kAllFaultKinds)),
                         [](const auto& parameters) {
                           return std::string(std::get<0>(parameters.param).name) +
                                  NameOf(std::get<1>(parameters.param));
                         });

// Of several pins one has no memory for its samples: the graph cannot play, learns of it, and plays when it
// is started again.
TEST(FailedActivation, OfOnePinAbortsTheGraphAndHarmsNoOther) {
  const MeetsNoFaults own;
  const FaultMovie& movie = kFaultMovies[3];
  int connected = 0;
  {
    FaultRig rig(movie);
    rig.Prepare();
    ArmFaults({.kind = FaultKind::kRing, .index = INT64_MAX});
    rig.PauseOnce();
    connected = static_cast<int>(DisarmFaults());
  }
  ASSERT_GT(connected, 1);
  for (int pin = 0; pin < connected; ++pin) {
    SCOPED_TRACE("pin " + std::to_string(pin));
    FaultRig rig(movie);
    rig.Prepare();
    ArmFaults({.kind = FaultKind::kRing, .index = pin});
    rig.PauseOnce();
    DisarmFaults();
    EXPECT_EQ(rig.Sinks().aborts, 1);
    rig.ForgetComplaints();
    rig.PlayOnce();
    EXPECT_FALSE(rig.Complained());
    EXPECT_EQ(rig.Sinks().aborts, 1);
  }
}

}  // namespace
}  // namespace tarvex::test
