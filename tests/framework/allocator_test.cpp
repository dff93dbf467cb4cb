// The allocator's rules for properties, commit, waiting and deferred freeing, and the sample's.
#include <gtest/gtest.h>

#include <cstdint>

#include "framework/module_lock.h"
#include "framework/thread.h"
#include "tests/framework/fakes.h"

namespace tarvex::test {
namespace {

class Allocator : public ::testing::Test {
 protected:
  HRESULT Set(LONG buffers, LONG size, LONG align = 1, LONG prefix = 0) {
    ALLOCATOR_PROPERTIES request{buffers, size, align, prefix};
    return allocator->SetProperties(&request, &actual);
  }
  ComPtr<IMediaSample> Get(DWORD flags = AM_GBF_NOWAIT) {
    ComPtr<IMediaSample> sample;
    result = allocator->GetBuffer(sample.Put(), nullptr, nullptr, flags);
    return sample;
  }
  static BYTE* PointerOf(const ComPtr<IMediaSample>& sample) {
    BYTE* bytes = nullptr;
    sample->GetPointer(&bytes);
    return bytes;
  }

  ComPtr<CMemAllocator> allocator = MakeCom<CMemAllocator>();
  ALLOCATOR_PROPERTIES actual{};
  HRESULT result = S_OK;
};

TEST_F(Allocator, CommitBeforePropertiesIsRefused) { EXPECT_EQ(allocator->Commit(), VFW_E_SIZENOTSET); }

TEST_F(Allocator, BuffersAreRoundedUpAndAlignedBehindTheirPrefix) {
  ASSERT_EQ(Set(3, 100, 16, 4), S_OK);
  EXPECT_EQ(actual.cbBuffer, 108);
  ASSERT_EQ(allocator->Commit(), S_OK);
  const auto first = Get();
  const auto second = Get();
  EXPECT_EQ((reinterpret_cast<std::uintptr_t>(PointerOf(first)) - 4) % 16, 0u);
  EXPECT_EQ((reinterpret_cast<std::uintptr_t>(PointerOf(second)) - 4) % 16, 0u);
  EXPECT_EQ(first->GetSize(), 108);
  allocator->Decommit();
}

TEST_F(Allocator, UnusableAlignmentsAndSizesAreRefused) {
  EXPECT_EQ(Set(1, 10, 0), VFW_E_BADALIGN);
  EXPECT_EQ(Set(1, 10, 3), VFW_E_BADALIGN);
  EXPECT_EQ(Set(1, -1), E_INVALIDARG);
  EXPECT_EQ(Set(1, 0x7FFFFFFF, 4096), E_INVALIDARG);
}

TEST_F(Allocator, PropertiesAreFixedWhileCommittedAndWhileSamplesAreOut) {
  ASSERT_EQ(Set(1, 10), S_OK);
  ASSERT_EQ(allocator->Commit(), S_OK);
  EXPECT_EQ(Set(2, 10), VFW_E_ALREADY_COMMITTED);
  auto sample = Get();
  allocator->Decommit();
  EXPECT_EQ(Set(2, 10), VFW_E_BUFFERS_OUTSTANDING);
  sample.Reset();
  EXPECT_EQ(Set(2, 10), S_OK);
}

TEST_F(Allocator, GetBufferNeedsACommit) {
  ASSERT_EQ(Set(1, 10), S_OK);
  Get();
  EXPECT_EQ(result, VFW_E_NOT_COMMITTED);
}

TEST_F(Allocator, NoWaitAnswersTimeoutWhenAllAreOut) {
  ASSERT_EQ(Set(1, 10), S_OK);
  ASSERT_EQ(allocator->Commit(), S_OK);
  const auto sample = Get();
  Get();
  EXPECT_EQ(result, VFW_E_TIMEOUT);
  allocator->Decommit();
}

TEST_F(Allocator, ReleasedSampleEndsAWait) {
  ASSERT_EQ(Set(1, 10), S_OK);
  ASSERT_EQ(allocator->Commit(), S_OK);
  auto sample = Get();
  CThread thread;
  ASSERT_EQ(thread.Start([&] {
    SleepMilliseconds(10);
    sample.Reset();
  }),
            S_OK);
  EXPECT_TRUE(Get(0));
  thread.Join();
  allocator->Decommit();
}

TEST_F(Allocator, DecommitEndsAWait) {
  ASSERT_EQ(Set(1, 10), S_OK);
  ASSERT_EQ(allocator->Commit(), S_OK);
  const auto sample = Get();
  CThread thread;
  ASSERT_EQ(thread.Start([&] {
    SleepMilliseconds(10);
    allocator->Decommit();
  }),
            S_OK);
  Get(0);
  EXPECT_EQ(result, VFW_E_NOT_COMMITTED);
  thread.Join();
}

TEST_F(Allocator, MemoryAndAllocatorLiveAsLongAsASampleIsOut) {
  const LONG before = ModuleObjectCount();
  auto owner = MakeCom<CMemAllocator>();
  ALLOCATOR_PROPERTIES request{1, 1 << 20, 1, 0};
  ASSERT_EQ(owner->SetProperties(&request, &actual), S_OK);
  ASSERT_EQ(owner->Commit(), S_OK);
  ComPtr<IMediaSample> sample;
  ASSERT_EQ(owner->GetBuffer(sample.Put(), nullptr, nullptr, 0), S_OK);
  owner->Decommit();
  owner.Reset();
  PointerOf(sample)[(1 << 20) - 1] = 1;
  EXPECT_EQ(ModuleObjectCount(), before + 1);
  sample.Reset();
  EXPECT_EQ(ModuleObjectCount(), before);
}

TEST_F(Allocator, CommitWhileSamplesAreStillOutGoesOnWithTheSameBlock) {
  ASSERT_EQ(Set(2, 10), S_OK);
  ASSERT_EQ(allocator->Commit(), S_OK);
  const auto first = Get();
  allocator->Decommit();
  ASSERT_EQ(allocator->Commit(), S_OK);
  const auto second = Get();
  ASSERT_TRUE(second);
  EXPECT_NE(PointerOf(first), PointerOf(second));
  allocator->Decommit();
}

TEST_F(Allocator, SampleComesBackWithoutItsFormerProperties) {
  ASSERT_EQ(Set(1, 10), S_OK);
  ASSERT_EQ(allocator->Commit(), S_OK);
  auto sample = Get();
  REFERENCE_TIME start = 5;
  REFERENCE_TIME stop = 9;
  CMediaType type = TypeOf(MEDIATYPE_Audio);
  sample->SetTime(&start, &stop);
  sample->SetMediaTime(&start, &stop);
  sample->SetSyncPoint(TRUE);
  sample->SetDiscontinuity(TRUE);
  sample->SetMediaType(&type);
  EXPECT_EQ(sample->SetActualDataLength(3), S_OK);
  sample.Reset();
  sample = Get();
  AM_MEDIA_TYPE* record = nullptr;
  EXPECT_EQ(sample->GetTime(&start, &stop), VFW_E_SAMPLE_TIME_NOT_SET);
  EXPECT_EQ(sample->GetMediaTime(&start, &stop), VFW_E_MEDIA_TIME_NOT_SET);
  EXPECT_EQ(sample->IsSyncPoint(), S_FALSE);
  EXPECT_EQ(sample->IsDiscontinuity(), S_FALSE);
  EXPECT_EQ(sample->GetMediaType(&record), S_FALSE);
  EXPECT_EQ(sample->GetActualDataLength(), 10);
  sample.Reset();
  allocator->Decommit();
}

TEST_F(Allocator, SampleRefusesMoreDataThanItHolds) {
  ASSERT_EQ(Set(1, 10), S_OK);
  ASSERT_EQ(allocator->Commit(), S_OK);
  const auto sample = Get();
  EXPECT_EQ(sample->SetActualDataLength(11), VFW_E_BUFFER_OVERFLOW);
  EXPECT_EQ(sample->SetActualDataLength(-1), VFW_E_BUFFER_OVERFLOW);
  EXPECT_EQ(sample->GetActualDataLength(), 10);
  allocator->Decommit();
}

TEST_F(Allocator, PartialPropertyRecordLeavesTheRestAlone) {
  ASSERT_EQ(Set(1, 10), S_OK);
  ASSERT_EQ(allocator->Commit(), S_OK);
  const auto sample = Get();
  REFERENCE_TIME start = 5;
  sample->SetTime(&start, nullptr);
  const auto sample2 = sample.Query<IMediaSample2>();
  AM_SAMPLE2_PROPERTIES record{};
  record.cbData = 12;  // up to and with the flags
  record.dwSampleFlags = AM_SAMPLE_TIMEVALID | AM_SAMPLE_PREROLL;
  record.lActual = 4;
  ASSERT_EQ(sample2->SetProperties(sizeof(record), reinterpret_cast<const BYTE*>(&record)), S_OK);
  EXPECT_EQ(sample->IsPreroll(), S_OK);
  EXPECT_EQ(sample->GetActualDataLength(), 10);
  REFERENCE_TIME stop = 0;
  EXPECT_EQ(sample->GetTime(&start, &stop), VFW_S_NO_STOP_TIME);
  EXPECT_EQ(start, 5);
  EXPECT_EQ(stop, 6);
  allocator->Decommit();
}

}  // namespace
}  // namespace tarvex::test
