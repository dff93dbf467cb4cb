// The reader upstream fails, gives less than asked, blocks until it is flushed, or has fewer bytes than
// before, at every single call.
#include <gtest/gtest.h>

#include <atomic>

#include "tests/faults/fault_points.h"
#include "tests/faults/fault_rig.h"

namespace tarvex::test {
namespace {

constexpr int kNever = 0x7FFFFFFF;

enum class ReaderFault { kFails, kFailsForGood, kShort, kBlocksUntilSeek, kBlocksUntilStop, kShrinks, kEmpties };

class UpstreamFaults : public testing::TestWithParam<std::tuple<FaultMovie, ReaderFault>> {
 protected:
  /// One use with the fault at this call. False when there were fewer calls.
  bool Try(int index) {
    FaultRig rig(m_movie);
    std::atomic<int> calls{0};
    rig.Source().BeforeEachCall([&] { return Answer(rig, calls++, index); });
    if (m_fault == ReaderFault::kBlocksUntilStop) rig.FlushByStop();
    rig.Use();
    const bool met = calls > index;
    if (index == kNever) m_samples = rig.SamplesOfFirstPass();
    if (FailsOnly() && !rig.Complained()) {
      EXPECT_EQ(rig.SamplesOfFirstPass(), m_samples) << "lost without a word";
    }
    if (!met) {
      EXPECT_FALSE(rig.Complained()) << "without a fault";
    }
    if (met && m_fault != ReaderFault::kFailsForGood) {
      index = -1;  // from now on the reader is well
      rig.Source().Shrink(m_size);
      rig.ExpectRecovery();
    }
    return met;
  }

  // The other faults look like the end of the file.
  bool FailsOnly() const { return m_fault == ReaderFault::kFails || m_fault == ReaderFault::kFailsForGood; }

  HRESULT Answer(FaultRig& rig, int call, int index) {
    m_size = std::max(m_size, rig.Source().Size());
    if (m_fault == ReaderFault::kFailsForGood && index >= 0 && call >= index) return E_FAIL;
    if (call != index) return S_OK;
    switch (m_fault) {
      case ReaderFault::kShort:
        return S_FALSE;
      case ReaderFault::kBlocksUntilSeek:
      case ReaderFault::kBlocksUntilStop:
        return rig.BlockUntilFlushed();
      case ReaderFault::kShrinks:
        rig.Source().Shrink(m_size / 2);
        return S_OK;
      case ReaderFault::kEmpties:
        rig.Source().Shrink(0);
        return S_OK;
      default:
        return E_FAIL;
    }
  }

  const FaultMovie m_movie = std::get<0>(GetParam());
  const ReaderFault m_fault = std::get<1>(GetParam());
  std::size_t m_size = 0;
  int m_samples = 0;
};

TEST_P(UpstreamFaults, EndClearlyAndLeaveNothing) {
  const MeetsNoFaults own;
  ASSERT_FALSE(Try(kNever));
  int index = 0;
  for (bool met = true; met && !HasFailure(); ++index) {
    SCOPED_TRACE("call " + std::to_string(index));
    met = Try(index);
  }
  PrintFaultPoints(std::string("Reader ") + testing::UnitTest::GetInstance()->current_test_info()->name(), index - 1);
}

// The small files take few reads.
constexpr FaultMovie kLargerMovie[] = {{"ManyStreams", "gen/multi.mkv", true}};

const char* NameOf(ReaderFault fault) {
  static constexpr const char* kNames[] = {"Fails",           "FailsForGood", "Short",  "BlocksUntilSeek",
                                           "BlocksUntilStop", "Shrinks",      "Empties"};
  return kNames[static_cast<std::size_t>(fault)];
}

const auto kReaderFaults =
    testing::Values(ReaderFault::kFails, ReaderFault::kFailsForGood, ReaderFault::kShort, ReaderFault::kBlocksUntilSeek,
                    ReaderFault::kBlocksUntilStop, ReaderFault::kShrinks, ReaderFault::kEmpties);

std::string NameOfTest(const testing::TestParamInfo<UpstreamFaults::ParamType>& parameters) {
  return std::string(std::get<0>(parameters.param).name) + NameOf(std::get<1>(parameters.param));
}

INSTANTIATE_TEST_SUITE_P(Movies, UpstreamFaults, testing::Combine(testing::ValuesIn(kFaultMovies), kReaderFaults),
                         NameOfTest);
INSTANTIATE_TEST_SUITE_P(LargerMovie, UpstreamFaults, testing::Combine(testing::ValuesIn(kLargerMovie), kReaderFaults),
                         NameOfTest);

}  // namespace
}  // namespace tarvex::test
