// The sample buffer: where samples lie, when and how waiting for room ends, and what keeps its memory.
#include "pins/output/sample_buffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <functional>
#include <random>
#include <vector>

#include "framework/com_ptr.h"
#include "framework/event.h"
#include "framework/message_error.h"
#include "framework/thread.h"
#include "pins/limits.h"
#include "tests/support/test_system.h"

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

/// Takes and gives back at random. `disorder` is how far from the oldest a release may reach: 1 is a queue.
void Churn(std::uint32_t seed, std::size_t largest, std::size_t disorder) {
  SCOPED_TRACE(testing::Message() << "seed " << seed << " largest " << largest << " disorder " << disorder);
  struct Lent {
    ComPtr<IMediaSample> sample;
    const BYTE* begin = nullptr;
    const BYTE* end = nullptr;
  };
  std::mt19937 random(seed);
  const auto upTo = [&](std::size_t n) { return std::uniform_int_distribution<std::size_t>(0, n)(random); };
  const auto buffer = MakeBuffer(1, 1000);
  const BYTE* block = BytesOf(*TakeNow(*buffer, 1));
  std::deque<Lent> out;
  bool isAtFront = false;  // a sample that did not fit behind the others, so the next go to the front
  for (int step = 0; step < 2000; ++step) {
    if (!out.empty() && upTo(1) == 0) {
      out.erase(out.begin() + static_cast<std::ptrdiff_t>(std::min(upTo(disorder - 1), out.size() - 1)));
      continue;
    }
    const auto size = static_cast<std::ptrdiff_t>(1 + upTo(largest - 1));
    Lent lent;
    const HRESULT result = buffer->GetSample(lent.sample.Put(), static_cast<std::size_t>(size), false);
    if (result == S_OK) {
      lent.begin = BytesOf(*lent.sample);
      lent.end = lent.begin + size;
      ASSERT_EQ(lent.sample->GetActualDataLength(), size);
      ASSERT_TRUE(lent.begin >= block && lent.end <= block + 1000);
      for (const Lent& other : out) ASSERT_TRUE(lent.end <= other.begin || lent.begin >= other.end) << "step " << step;
      out.push_back(std::move(lent));
      isAtFront = false;
      continue;
    }
    ASSERT_EQ(result, S_FALSE);
    ASSERT_FALSE(out.empty());
    if (disorder != 1) continue;
    const BYTE* oldest = out.front().begin;
    const BYTE* newest = out.back().end;
    const std::ptrdiff_t behind = newest > oldest && !isAtFront ? block + 1000 - newest : 0;
    ASSERT_GT(size, newest > oldest ? std::max(behind, oldest - block) : oldest - newest);
    isAtFront = true;
  }
  out.clear();
  EXPECT_TRUE(HasRoom(*buffer, 1000));
}

TEST(SampleBuffer, SamplesNeverOverlapAndAQueueWastesNoRoom) {
  for (std::uint32_t seed = 1; seed <= 20; ++seed) {
    for (const std::size_t largest : {3U, 90U, 400U, 1000U}) {
      for (const std::size_t disorder : {1U, 4U, 1000U}) Churn(seed, largest, disorder);
    }
  }
}

TEST(SampleBuffer, OversizeIsFoundOnlyWhenAllIsBack) {
  const auto buffer = MakeBuffer();
  auto out = TakeNow(*buffer, 1);
  EXPECT_FALSE(HasRoom(*buffer, kWholeBlock + 1));
  out.Reset();
  try {
    HasRoom(*buffer, kWholeBlock + 1);
    ADD_FAILURE() << "no sample of that size exists";
  } catch (const MessageError& error) {
    EXPECT_STREQ(error.what(), "CSampleBuffer::GetSample size of buffer less than sample");
  }
  EXPECT_TRUE(HasRoom(*buffer, kWholeBlock));
}

TEST(SampleBuffer, EmptySamplesTakeNoRoomAndHideNoOther) {
  const auto buffer = MakeBuffer();
  auto one = TakeNow(*buffer, 0);
  const auto whole = TakeNow(*buffer, kWholeBlock);
  auto two = TakeNow(*buffer, 0);
  EXPECT_EQ(one->GetSize(), 0);
  EXPECT_EQ(BytesOf(*whole), BytesOf(*one));
  one.Reset();
  EXPECT_FALSE(HasRoom(*buffer, 1)) << "the sample that lies where the empty one did is still out";
  two.Reset();
  EXPECT_FALSE(HasRoom(*buffer, 1));
}

TEST(SampleBuffer, NumberOfSamplesIsBoundedEvenWhenTheyAreEmpty) {
  const auto buffer = MakeBuffer();
  std::vector<ComPtr<IMediaSample>> out(static_cast<std::size_t>(limits::kSamplesOut));
  for (auto& sample : out) ASSERT_EQ(buffer->GetSample(sample.Put(), 0, false), S_OK);
  EXPECT_FALSE(HasRoom(*buffer, 0));
  out.pop_back();
  EXPECT_TRUE(HasRoom(*buffer, 0));
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
  Event m_done{Event::Mode::kManual};
  Thread m_thread;
};

TEST(SampleBuffer, WaitEndsWithWhateverMustEndIt) {
  const struct {
    const char* what;
    std::function<void(CSampleBuffer&, ComPtr<IMediaSample>&)> end;
    HRESULT expected;
    std::function<void(CSampleBuffer&)> undo;
  } cases[] = {
      {"returned sample", [](auto&, auto& out) { out.Reset(); }, S_OK, [](auto&) {}},
      {"decommit", [](auto& b, auto&) { b.Decommit(); }, VFW_E_NOT_COMMITTED, [](auto& b) { b.Commit(); }},
      {"flush", [](auto& b, auto&) { b.BeginFlush(); }, VFW_E_WRONG_STATE, [](auto& b) { b.EndFlush(); }},
      {"cancellation", [](auto& b, auto&) { b.CancelWaits(true); }, VFW_E_WRONG_STATE,
       [](auto& b) { b.CancelWaits(false); }},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.what);
    const auto buffer = MakeBuffer();
    auto out = TakeNow(*buffer, 1);
    {
      Waiter waiter(*buffer);
      each.end(*buffer, out);
      EXPECT_EQ(waiter.Result(), each.expected);
    }
    each.undo(*buffer);
    out = TakeNow(*buffer, 1);
    Waiter next(*buffer);
    buffer->Decommit();
    EXPECT_EQ(next.Result(), VFW_E_NOT_COMMITTED);
  }
}

TEST(SampleBuffer, CancellationIsForLaterWaitsTooAndOutlastsAFlush) {
  const auto buffer = MakeBuffer();
  const auto out = TakeNow(*buffer, 1);
  buffer->CancelWaits(true);
  buffer->BeginFlush();
  buffer->EndFlush();
  ComPtr<IMediaSample> sample;
  EXPECT_EQ(buffer->GetSample(sample.Put(), kWholeBlock, true), VFW_E_WRONG_STATE);
  EXPECT_EQ(buffer->GetSample(sample.Put(), 1, true), S_OK) << "this one need not wait";
}

TEST(SampleBuffer, MemoryComesAsFarAsTheRingIsUsedAndNoneBefore) {
  constexpr std::size_t kCoarse = 512 * 1024;
  const auto buffer = MakeBuffer();
  const auto empty = TakeNow(*buffer, 0);
  const BYTE* block = BytesOf(*empty);
  EXPECT_EQ(WritableBytes(block, kWholeBlock), 0U) << "nothing was delivered";
  std::size_t largest = 0;
  for (const std::size_t used : {std::size_t{1}, std::size_t{3} << 20, std::size_t{2} << 20, kWholeBlock}) {
    std::memset(BytesOf(*TakeNow(*buffer, used)), 1, used);
    largest = std::max(largest, used);
    EXPECT_GE(WritableBytes(block, kWholeBlock), largest);
    EXPECT_LT(WritableBytes(block, kWholeBlock), largest + kCoarse);
  }
}

TEST(SampleBuffer, MemoryStaysUntilTheLastSampleIsBack) {
  auto buffer = MakeBuffer();
  auto old = TakeNow(*buffer, 1000);
  std::memset(BytesOf(*old), 7, 1000);
  buffer->Decommit();
  ALLOCATOR_PROPERTIES request{1, 1, 1, 0};
  ALLOCATOR_PROPERTIES actual{};
  EXPECT_EQ(buffer->SetProperties(&request, &actual), VFW_E_BUFFERS_OUTSTANDING);
  ASSERT_EQ(buffer->Commit(), S_OK);
  auto fresh = TakeNow(*buffer, 1000);
  std::memset(BytesOf(*fresh), 1, 1000);
  EXPECT_EQ(BytesOf(*old)[999], 7) << "a new commit goes around samples that are still out";
  old.Reset();
  EXPECT_FALSE(HasRoom(*buffer, kWholeBlock));
  buffer->Decommit();
  buffer.Reset();
  EXPECT_EQ(BytesOf(*fresh)[999], 1) << "a sample keeps an allocator that nobody else holds";
}

TEST(SampleBuffer, UnusablePropertiesAndStatesAreRefused) {
  const auto buffer = MakeCom<CSampleBuffer>();
  EXPECT_EQ(buffer->Commit(), VFW_E_SIZENOTSET);
  const std::pair<ALLOCATOR_PROPERTIES, HRESULT> cases[] = {{{1, 10, 0, 0}, VFW_E_BADALIGN},
                                                            {{1, 10, 3, 0}, VFW_E_BADALIGN},
                                                            {{1, -1, 1, 0}, E_INVALIDARG},
                                                            {{1, 0x7FFFFFFF, 4096, 0}, E_INVALIDARG},
                                                            {{3, 100, 16, 4}, S_OK}};
  ALLOCATOR_PROPERTIES actual{};
  for (auto [request, expected] : cases) {
    EXPECT_EQ(buffer->SetProperties(&request, &actual), expected);
  }
  EXPECT_EQ(actual.cbBuffer, 108) << "with its prefix a multiple of the alignment";
  ComPtr<IMediaSample> sample;
  EXPECT_EQ(buffer->GetSample(sample.Put(), 1, true), VFW_E_NOT_COMMITTED);
  EXPECT_EQ(buffer->Commit(), S_OK);
  EXPECT_EQ(buffer->SetProperties(&actual, &actual), VFW_E_ALREADY_COMMITTED);
}

// Filters downstream write their properties by the record, which may be shorter than ours.
TEST(SampleBuffer, PartialPropertyRecordLeavesTheRestAlone) {
  const auto buffer = MakeBuffer();
  const auto sample = TakeNow(*buffer, 10);
  EXPECT_EQ(sample->SetActualDataLength(11), VFW_E_BUFFER_OVERFLOW);
  EXPECT_EQ(sample->SetActualDataLength(-1), VFW_E_BUFFER_OVERFLOW);
  REFERENCE_TIME start = 5;
  sample->SetTime(&start, nullptr);
  AM_SAMPLE2_PROPERTIES record{};
  record.cbData = 12;  // up to and with the flags
  record.dwSampleFlags = AM_SAMPLE_TIMEVALID | AM_SAMPLE_PREROLL;
  record.lActual = 4;
  const auto* bytes = reinterpret_cast<const BYTE*>(&record);
  ASSERT_EQ(sample.Query<IMediaSample2>()->SetProperties(sizeof(record), bytes), S_OK);
  EXPECT_EQ(sample->IsPreroll(), S_OK);
  EXPECT_EQ(sample->GetActualDataLength(), 10);
  REFERENCE_TIME stop = 0;
  EXPECT_EQ(sample->GetTime(&start, &stop), VFW_S_NO_STOP_TIME);
  EXPECT_EQ(start, 5);
  EXPECT_EQ(stop, 6);
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

}  // namespace
}  // namespace tarvex::test
