// The sample buffer: where samples lie, when and how waiting for room ends, and what keeps its memory.
#include "pins/output/sample_buffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <deque>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "framework/com_ptr.h"
#include "framework/event.h"
#include "framework/message_error.h"
#include "framework/thread.h"
#include "tests/pins_output/allocation_count.h"

namespace tarvex::test {
namespace {

constexpr std::size_t kWholeBlock = 10485600;

ComPtr<CSampleBuffer> MakeBuffer(LONG count = 200, LONG size = 52428) {
  auto buffer = MakeCom<CSampleBuffer>();
  ALLOCATOR_PROPERTIES request{count, size, 1, 0};
  ALLOCATOR_PROPERTIES actual{};
  EXPECT_EQ(buffer->SetProperties(&request, &actual), S_OK);
  EXPECT_EQ(buffer->Commit(), S_OK);
  return buffer;
}

ComPtr<IMediaSample> TakeNow(CSampleBuffer& buffer, std::size_t size) {
  ComPtr<IMediaSample> sample;
  EXPECT_EQ(buffer.GetSample(sample.Put(), size, false), S_OK);
  return sample;
}

bool HasRoom(CSampleBuffer& buffer, std::size_t size) {
  ComPtr<IMediaSample> sample;
  return buffer.GetSample(sample.Put(), size, false) == S_OK;
}

BYTE* BytesOf(IMediaSample& sample) {
  BYTE* bytes = nullptr;
  EXPECT_EQ(sample.GetPointer(&bytes), S_OK);
  return bytes;
}

TEST(SampleBuffer, SampleHasExactlyTheSizeAskedFor) {
  const auto buffer = MakeBuffer();
  const auto sample = TakeNow(*buffer, 777);
  EXPECT_EQ(sample->GetSize(), 777);
  EXPECT_EQ(sample->GetActualDataLength(), 777);
}

TEST(SampleBuffer, SecondLargeSampleFollowsTheFirstsReturn) {
  const auto buffer = MakeBuffer();
  auto first = TakeNow(*buffer, 6000000);
  const BYTE* start = BytesOf(*first);
  ComPtr<IMediaSample> second;
  EXPECT_EQ(buffer->GetSample(second.Put(), 6000000, false), S_FALSE);
  EXPECT_FALSE(second);
  first.Reset();
  ASSERT_EQ(buffer->GetSample(second.Put(), 6000000, true), S_OK);
  EXPECT_EQ(BytesOf(*second), start);
}

TEST(SampleBuffer, WholeBlockFitsAndOneByteMoreNeverWill) {
  const auto buffer = MakeBuffer();
  ComPtr<IMediaSample> sample;
  try {
    static_cast<void>(buffer->GetSample(sample.Put(), kWholeBlock + 1, true));
    ADD_FAILURE() << "no sample of that size exists";
  } catch (const MessageError& error) {
    EXPECT_STREQ(error.what(), "CSampleBuffer::GetSample size of buffer less than sample");
  }
  EXPECT_EQ(buffer->GetSample(sample.Put(), kWholeBlock, true), S_OK);
}

TEST(SampleBuffer, OversizeIsFoundOnlyWhenAllIsBack) {
  const auto buffer = MakeBuffer();
  auto out = TakeNow(*buffer, 1);
  ComPtr<IMediaSample> sample;
  EXPECT_EQ(buffer->GetSample(sample.Put(), kWholeBlock + 1, false), S_FALSE);
  out.Reset();
  EXPECT_THROW(static_cast<void>(buffer->GetSample(sample.Put(), kWholeBlock + 1, false)), MessageError);
}

TEST(SampleBuffer, WrapsToTheFrontOfTheBlock) {
  const auto buffer = MakeBuffer();
  auto first = TakeNow(*buffer, 100);
  const BYTE* start = BytesOf(*first);
  const auto second = TakeNow(*buffer, 100);
  const auto rest = TakeNow(*buffer, kWholeBlock - 250);
  first.Reset();
  EXPECT_FALSE(HasRoom(*buffer, 101));
  EXPECT_EQ(BytesOf(*TakeNow(*buffer, 100)), start);
}

TEST(SampleBuffer, EmptySamplesAreCountedEachAndTakeNoRoom) {
  const auto buffer = MakeBuffer();
  auto one = TakeNow(*buffer, 0);
  auto two = TakeNow(*buffer, 0);
  const auto whole = TakeNow(*buffer, kWholeBlock);
  EXPECT_EQ(one->GetSize(), 0);
  one.Reset();
  EXPECT_FALSE(HasRoom(*buffer, 1));
  two.Reset();
  EXPECT_FALSE(HasRoom(*buffer, 1));
}

TEST(SampleBuffer, NumberOfSamplesIsBoundedEvenWhenTheyAreEmpty) {
  const auto buffer = MakeBuffer();
  std::vector<ComPtr<IMediaSample>> out(static_cast<std::size_t>(CSampleBuffer::kMaxSamplesOut));
  for (auto& sample : out) ASSERT_EQ(buffer->GetSample(sample.Put(), 0, false), S_OK);
  EXPECT_FALSE(HasRoom(*buffer, 0));
  out.pop_back();
  EXPECT_TRUE(HasRoom(*buffer, 0));
}

TEST(SampleBuffer, ReturnedSampleRemembersNothing) {
  const auto buffer = MakeBuffer();
  auto sample = TakeNow(*buffer, 10);
  REFERENCE_TIME time = 5;
  sample->SetTime(&time, &time);
  sample->SetDiscontinuity(TRUE);
  sample->SetPreroll(TRUE);
  sample.Reset();
  sample = TakeNow(*buffer, 10);
  EXPECT_EQ(sample->GetTime(&time, &time), VFW_E_SAMPLE_TIME_NOT_SET);
  EXPECT_EQ(sample->IsDiscontinuity(), S_FALSE);
  EXPECT_EQ(sample->IsPreroll(), S_FALSE);
}

TEST(SampleBuffer, NotCommittedIsAnError) {
  const auto buffer = MakeCom<CSampleBuffer>();
  ComPtr<IMediaSample> sample;
  EXPECT_EQ(buffer->GetSample(sample.Put(), 1, true), VFW_E_NOT_COMMITTED);
}

/// A thread that waits for the whole block while some of it is out.
class Waiter {
 public:
  explicit Waiter(CSampleBuffer& buffer) {
    EXPECT_EQ(m_thread.Start([this, &buffer] {
      m_result = buffer.GetSample(m_sample.Put(), kWholeBlock, true);
      m_done.Set();
    }),
              S_OK);
    EXPECT_FALSE(m_done.Wait(30)) << "it should be waiting";
  }

  HRESULT Result() {
    if (!m_done.Wait(10000)) std::abort();
    m_thread.Join();
    return m_result;
  }

 private:
  ComPtr<IMediaSample> m_sample;
  HRESULT m_result = E_FAIL;
  CEvent m_done{CEvent::Mode::kManual};
  CThread m_thread;
};

TEST(SampleBuffer, WaitEndsWithAReturnedSample) {
  const auto buffer = MakeBuffer();
  auto out = TakeNow(*buffer, 1);
  Waiter waiter(*buffer);
  out.Reset();
  EXPECT_EQ(waiter.Result(), S_OK);
}

TEST(SampleBuffer, WaitEndsWithDecommit) {
  const auto buffer = MakeBuffer();
  const auto out = TakeNow(*buffer, 1);
  Waiter waiter(*buffer);
  buffer->Decommit();
  EXPECT_EQ(waiter.Result(), VFW_E_NOT_COMMITTED);
}

TEST(SampleBuffer, WaitEndsWithAFlush) {
  const auto buffer = MakeBuffer();
  const auto out = TakeNow(*buffer, 1);
  Waiter waiter(*buffer);
  buffer->BeginFlush();
  EXPECT_EQ(waiter.Result(), VFW_E_WRONG_STATE);
  buffer->EndFlush();
  Waiter next(*buffer);
  buffer->Decommit();
  EXPECT_EQ(next.Result(), VFW_E_NOT_COMMITTED);
}

TEST(SampleBuffer, WaitEndsWithItsCancellation) {
  const auto buffer = MakeBuffer();
  const auto out = TakeNow(*buffer, 1);
  Waiter waiter(*buffer);
  buffer->CancelWaits(true);
  EXPECT_EQ(waiter.Result(), VFW_E_WRONG_STATE);
  ComPtr<IMediaSample> sample;
  EXPECT_EQ(buffer->GetSample(sample.Put(), kWholeBlock, true), VFW_E_WRONG_STATE) << "later waits are cancelled too";
  EXPECT_EQ(buffer->GetSample(sample.Put(), 1, true), S_OK) << "this one need not wait";
  buffer->EndFlush();
  EXPECT_EQ(buffer->GetSample(sample.Put(), kWholeBlock, true), VFW_E_WRONG_STATE) << "a flush is another matter";
  buffer->CancelWaits(false);
  Waiter next(*buffer);
  buffer->Decommit();
  EXPECT_EQ(next.Result(), VFW_E_NOT_COMMITTED);
}

TEST(SampleBuffer, MemoryStaysUntilTheLastSampleIsBack) {
  const auto buffer = MakeBuffer();
  auto sample = TakeNow(*buffer, 1000);
  buffer->Decommit();
  ALLOCATOR_PROPERTIES request{1, 1, 1, 0};
  ALLOCATOR_PROPERTIES actual{};
  EXPECT_EQ(buffer->SetProperties(&request, &actual), VFW_E_BUFFERS_OUTSTANDING);
  std::memset(BytesOf(*sample), 1, 1000);
  sample.Reset();
  EXPECT_EQ(buffer->SetProperties(&request, &actual), S_OK);
}

TEST(SampleBuffer, NewCommitGoesAroundSamplesThatAreStillOut) {
  const auto buffer = MakeBuffer();
  auto old = TakeNow(*buffer, 1000);
  BytesOf(*old)[0] = 7;
  buffer->Decommit();
  ASSERT_EQ(buffer->Commit(), S_OK);
  const auto fresh = TakeNow(*buffer, 1000);
  std::memset(BytesOf(*fresh), 1, 1000);
  EXPECT_EQ(BytesOf(*old)[0], 7);
  old.Reset();
  EXPECT_FALSE(HasRoom(*buffer, kWholeBlock));
}

TEST(SampleBuffer, SampleKeepsAnAllocatorThatNobodyElseHolds) {
  auto buffer = MakeBuffer();
  auto sample = TakeNow(*buffer, 1000);
  buffer->Decommit();
  buffer.Reset();
  std::memset(BytesOf(*sample), 1, 1000);
  sample.Reset();
}

// Another filter may take samples of ours through IMemAllocator: they must come out of the same ring.
TEST(SampleBuffer, StandardBuffersDoNotOverlapFrames) {
  const auto buffer = MakeBuffer(2, 100);
  const auto frame = TakeNow(*buffer, 60);
  ComPtr<IMediaSample> standard;
  ASSERT_EQ(buffer->GetBuffer(standard.Put(), nullptr, nullptr, AM_GBF_NOWAIT), S_OK);
  EXPECT_EQ(standard->GetSize(), 100);
  EXPECT_EQ(BytesOf(*standard), BytesOf(*frame) + 60);
  ComPtr<IMediaSample> other;
  EXPECT_EQ(buffer->GetBuffer(other.Put(), nullptr, nullptr, AM_GBF_NOWAIT), VFW_E_TIMEOUT);
}

TEST(SampleBuffer, SteadyUseAllocatesNothing) {
  const auto buffer = MakeBuffer();
  std::mt19937 random(1);
  std::deque<ComPtr<IMediaSample>> out(8);
  const auto step = [&] {
    out.front().Reset();
    std::rotate(out.begin(), out.begin() + 1, out.end());
    ASSERT_EQ(buffer->GetSample(out.back().Put(), random() % 300000, true), S_OK);
  };
  for (int i = 0; i < 20; ++i) step();
  const std::size_t before = AllocationsOfThisThread();
  for (int i = 0; i < 1000; ++i) step();
  EXPECT_EQ(AllocationsOfThisThread(), before);
}

/// Samples on their way to threads that check and release them.
class Pipe {
 public:
  void Put(ComPtr<IMediaSample> sample) {
    const CAutoLock hold(m_lock);
    m_samples.push_back(std::move(sample));
  }
  ComPtr<IMediaSample> TakeAny(std::size_t choice) {
    const CAutoLock hold(m_lock);
    if (m_samples.empty()) return nullptr;
    const auto entry = m_samples.begin() + static_cast<std::ptrdiff_t>(choice % m_samples.size());
    auto sample = std::move(*entry);
    m_samples.erase(entry);
    return sample;
  }

 private:
  CCritSec m_lock{"pipe"};
  std::deque<ComPtr<IMediaSample>> m_samples;
};

bool IsFilledWith(IMediaSample& sample, BYTE mark) {
  const BYTE* bytes = BytesOf(sample);
  return std::all_of(bytes, bytes + sample.GetSize(), [mark](BYTE byte) { return byte == mark; });
}

TEST(SampleBuffer, SamplesOnManyThreadsNeverShareAByte) {
  const auto buffer = MakeBuffer(100, 100);
  Pipe pipe;
  std::atomic<bool> done{false};
  std::atomic<int> damaged{0};
  const auto release = [&](unsigned seed) {
    std::mt19937 random(seed);
    for (;;) {
      const bool last = done;
      const auto sample = pipe.TakeAny(random());
      if (!sample && last) return;
      if (!sample) continue;
      if (!IsFilledWith(*sample, static_cast<BYTE>(sample->GetSize()))) ++damaged;
    }
  };
  std::vector<CThread> threads(2);
  for (unsigned i = 0; i < threads.size(); ++i) ASSERT_EQ(threads[i].Start([&, i] { release(i); }), S_OK);
  std::mt19937 random(99);
  for (int i = 0; i < 5000; ++i) {
    const std::size_t size = random() % 3000;
    ComPtr<IMediaSample> sample;
    ASSERT_EQ(buffer->GetSample(sample.Put(), size, true), S_OK);
    std::memset(BytesOf(*sample), static_cast<BYTE>(size), size);
    pipe.Put(std::move(sample));
  }
  done = true;
  for (auto& thread : threads) thread.Join();
  EXPECT_EQ(damaged, 0);
  EXPECT_TRUE(HasRoom(*buffer, 10000)) << "all of the ring is back";
}

}  // namespace
}  // namespace tarvex::test
