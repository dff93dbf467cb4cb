// The sample buffer: where samples lie, when and how waiting for room ends, and what keeps its memory.
#include "pins/output/sample_buffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <functional>
#include <random>
#include <vector>

#include "framework/event.h"
#include "tests/support/patience.h"
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

/// Null when there is no room.
ComPtr<CMediaSample> TakeNow(CSampleBuffer& buffer, std::size_t size) {
  ComPtr<CMediaSample> sample;
  const HRESULT result = buffer.GetSample(sample.Put(), size, false);
  EXPECT_EQ(result, sample ? S_OK : S_FALSE);
  return sample;
}

BYTE* BytesOf(IMediaSample& sample) {
  BYTE* bytes = nullptr;
  EXPECT_EQ(sample.GetPointer(&bytes), S_OK);
  return bytes;
}

// Samples of any size are taken and given back, the oldest first or in disorder: none overlaps another. Where the
// oldest goes first, a sample is refused only when what lies in front of the oldest has no room for it.
TEST(SampleBuffer, SamplesLieApartAndRoomThatIsThereIsGiven) {
  constexpr std::size_t kSize = 1000;
  std::mt19937 random(20);
  const auto upTo = [&](std::size_t n) { return std::uniform_int_distribution<std::size_t>(0, n)(random); };
  for (const std::size_t largest : {3U, 90U, 400U, 1000U}) {
    for (const std::size_t disorder : {1U, 4U, 1000U}) {
      SCOPED_TRACE(testing::Message() << "largest " << largest << " disorder " << disorder);
      const auto buffer = MakeBuffer(1, kSize);
      const BYTE* block = BytesOf(*TakeNow(*buffer, 1));
      std::deque<std::pair<std::size_t, ComPtr<CMediaSample>>> out;  // starts and samples, the oldest first
      const auto endOf = [](const auto& each) { return each.first + static_cast<std::size_t>(each.second->GetSize()); };
      for (int step = 0; step < 20000; ++step) {
        if (!out.empty() && upTo(1) == 0) {
          out.erase(out.begin() + static_cast<std::ptrdiff_t>(std::min(upTo(disorder - 1), out.size() - 1)));
          continue;
        }
        const std::size_t size = 1 + upTo(largest - 1);
        ComPtr<CMediaSample> sample = TakeNow(*buffer, size);
        if (!sample) {
          ASSERT_FALSE(out.empty());
          const std::size_t oldest = out.front().first;
          const std::size_t newest = endOf(out.back());
          ASSERT_TRUE(disorder > 1 || (newest <= oldest ? oldest - newest : oldest) < size) << "step " << step;
          continue;
        }
        const auto start = static_cast<std::size_t>(BytesOf(*sample) - block);
        ASSERT_LE(start + size, kSize);
        ASSERT_EQ(sample->GetActualDataLength(), static_cast<LONG>(size));
        for (const auto& each : out) ASSERT_TRUE(endOf(each) <= start || start + size <= each.first) << "step " << step;
        out.emplace_back(start, std::move(sample));
      }
      out.clear();
      EXPECT_TRUE(TakeNow(*buffer, kSize)) << "all is back, and the whole ring is there";
    }
  }
}

TEST(SampleBuffer, EmptySamplesTakeNoRoomButHaveABound) {
  const auto buffer = MakeBuffer();
  std::vector<ComPtr<CMediaSample>> samples = {TakeNow(*buffer, kWholeBlock)};
  while (samples.size() < 1000000 && samples.back()) samples.push_back(TakeNow(*buffer, 0));
  EXPECT_GT(samples.size(), 1000U);
  EXPECT_FALSE(samples.back());
}

TEST(SampleBuffer, WaitEndsWithWhateverMustEndIt) {
  using End = std::function<void(CSampleBuffer&, ComPtr<CMediaSample>&)>;
  const std::pair<End, HRESULT> ends[] = {{[](auto&, auto& out) { out.Reset(); }, S_OK},
                                          {[](auto& b, auto&) { b.Decommit(); }, VFW_E_NOT_COMMITTED},
                                          {[](auto& b, auto&) { b.BeginFlush(); }, VFW_E_WRONG_STATE},
                                          {[](auto& b, auto&) { b.CancelWaits(true); }, VFW_E_WRONG_STATE}};
  const auto buffer = MakeBuffer();
  ComPtr<CMediaSample> sample;
  for (const auto& [end, expected] : ends) {
    auto out = TakeNow(*buffer, 1);
    HRESULT result = E_FAIL;
    Event done;
    Thread waiter;
    ASSERT_EQ(waiter.Start([&] {
      ComPtr<CMediaSample> waited;
      result = buffer->GetSample(waited.Put(), kWholeBlock, true);
      done.Set();
    }),
              S_OK);
    EXPECT_FALSE(done.Wait(30)) << "it should be waiting";
    end(*buffer, out);
    if (!done.Wait(kPatience)) std::abort();  // the thread would outlive what it waits for
    waiter.Join();
    EXPECT_EQ(result, expected);
    buffer->Commit();
    buffer->EndFlush();
  }
  const auto out = TakeNow(*buffer, 1);
  EXPECT_EQ(buffer->GetSample(sample.Put(), kWholeBlock, true), VFW_E_WRONG_STATE) << "outlasts a flush";
  EXPECT_EQ(buffer->GetSample(sample.Put(), 1, true), S_OK) << "this one need not wait";
}

TEST(SampleBuffer, MemoryComesAsFarAsTheRingIsUsedAndStaysForSamplesThatAreOut) {
  constexpr std::size_t kCoarse = 512 * 1024;
  const auto buffer = MakeBuffer();
  const std::uint64_t before = MemoryInUse();
  std::size_t largest = 0;
  for (const std::size_t used : {std::size_t{1}, std::size_t{3} << 20, std::size_t{2} << 20, kWholeBlock}) {
    std::memset(BytesOf(*TakeNow(*buffer, used)), 1, used);
    largest = std::max(largest, used);
    EXPECT_TRUE(IsInstrumented() || MemoryInUse() < before + largest + kCoarse) << used;
  }
  const auto old = TakeNow(*buffer, 1000);
  std::memset(BytesOf(*old), 7, 1000);
  EXPECT_EQ(buffer->Decommit(), S_OK);
  ALLOCATOR_PROPERTIES request{1, 1, 1, 0};
  ALLOCATOR_PROPERTIES actual{};
  EXPECT_EQ(buffer->SetProperties(&request, &actual), VFW_E_BUFFERS_OUTSTANDING);
  ASSERT_EQ(buffer->Commit(), S_OK);
  const auto fresh = TakeNow(*buffer, 1000);
  std::memset(BytesOf(*fresh), 1, 1000);
  EXPECT_EQ(BytesOf(*old)[999], 7) << "a new commit goes around samples that are still out";
}

// Another filter may take samples of ours through IMemAllocator: they must come out of the same ring. And it may write
// properties by a record that is shorter than ours.
TEST(SampleBuffer, IsAnAllocatorAsThePlatformDescribesIt) {
  const auto buffer = MakeCom<CSampleBuffer>();
  ComPtr<IMediaSample> sample;
  ALLOCATOR_PROPERTIES actual{};
  ALLOCATOR_PROPERTIES odd{1, 10, 3, 0};
  EXPECT_EQ(buffer->SetProperties(&odd, &actual), VFW_E_BADALIGN);
  ALLOCATOR_PROPERTIES request{3, 100, 16, 4};
  EXPECT_EQ(buffer->SetProperties(&request, &actual), S_OK);
  EXPECT_EQ(actual.cbBuffer, 108) << "with its prefix a multiple of the alignment";
  EXPECT_EQ(buffer->Commit(), S_OK);
  const auto frame = TakeNow(*buffer, 200);
  ASSERT_EQ(buffer->GetBuffer(sample.Put(), nullptr, nullptr, AM_GBF_NOWAIT), S_OK);
  EXPECT_EQ(BytesOf(*sample), BytesOf(*frame) + 200);
  ComPtr<IMediaSample> other;
  EXPECT_EQ(buffer->GetBuffer(other.Put(), nullptr, nullptr, AM_GBF_NOWAIT), VFW_E_TIMEOUT);

  EXPECT_EQ(sample->SetActualDataLength(sample->GetSize() + 1), VFW_E_BUFFER_OVERFLOW);
  AM_SAMPLE2_PROPERTIES record{};
  record.cbData = 12;  // up to and with the flags
  record.dwTypeSpecificFlags = 4;
  record.dwSampleFlags = AM_SAMPLE_PREROLL;
  record.lActual = 4;
  const auto* bytes = reinterpret_cast<const BYTE*>(&record);
  ASSERT_EQ(sample.Query<IMediaSample2>()->SetProperties(sizeof(record), bytes), S_OK);
  EXPECT_EQ(sample->IsPreroll(), S_OK);
  ASSERT_EQ(sample.Query<IMediaSample2>()->GetProperties(sizeof(record), reinterpret_cast<BYTE*>(&record)), S_OK);
  EXPECT_EQ(record.dwTypeSpecificFlags, 4U);
  auto* type = reinterpret_cast<AM_MEDIA_TYPE*>(&record);
  EXPECT_EQ(sample->GetMediaType(&type), S_FALSE);
  EXPECT_EQ(type, nullptr);
  EXPECT_EQ(sample->GetActualDataLength(), 108);
}

}  // namespace
}  // namespace tarvex::test
