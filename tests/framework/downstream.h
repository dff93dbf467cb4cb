// What an output queue delivers to: a connected sink that runs, and an allocator to take samples from. Owned by one
// test.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "framework/mem_allocator.h"
#include "framework/thread.h"
#include "tests/support/sink_filter.h"
#include "tests/support/source_filter.h"

namespace tarvex::test {

class Downstream {
 public:
  Downstream() {
    EXPECT_EQ(source->Pin()->Connect(Pin(), nullptr), S_OK);
    sink->AnswerWith(
        [this](IMediaSample* sample) { return onSample(static_cast<int>(sample->GetActualDataLength())); });
    EXPECT_EQ(sink->Pause(), S_OK);
    ALLOCATOR_PROPERTIES request{64, 64, 1, 0};
    ALLOCATOR_PROPERTIES actual{};
    EXPECT_EQ(allocator->SetProperties(&request, &actual), S_OK);
    EXPECT_EQ(allocator->Commit(), S_OK);
  }
  ~Downstream() {
    sink->Stop();
    source->Pin()->Disconnect();
    Pin()->Disconnect();
    allocator->Decommit();
  }
  Downstream(const Downstream&) = delete;
  Downstream& operator=(const Downstream&) = delete;

  SinkPin* Pin() const noexcept { return sink->Pin(); }
  /// A sample of `mark` bytes; the caller owns the reference.
  IMediaSample* Sample(int mark) {
    ComPtr<IMediaSample> sample;
    EXPECT_EQ(allocator->GetBuffer(sample.Put(), nullptr, nullptr, 0), S_OK);
    EXPECT_EQ(sample->SetActualDataLength(mark), S_OK);
    return sample.Detach();
  }
  /// Samples that are out.
  LONG Out() { return allocator->Out(); }

  /// Everything that reached the pin: "s:7" for a sample of 7 bytes, "eos", "segment:start", "flush", "endflush".
  std::vector<std::string> Words() {
    std::vector<std::string> words;
    for (const SinkEvent& event : sink->Events()) words.push_back(WordOf(event));
    return words;
  }
  bool WaitForWords(std::size_t count) {
    return WaitUntil([&] { return Words().size() >= count; });
  }
  /// For a flush to begin, on the thread that is in onSample.
  bool WaitForFlush() {
    return WaitUntil([&] { return sink->CountOf(SinkEvent::Kind::kBeginFlush) != 0; });
  }

  class CountingAllocator : public CMemAllocator {
   public:
    LONG Out() {
      const CAutoLock hold(Lock());
      return LentCount();
    }
  };

  /// Called for every sample with its length; the answer is Receive's.
  std::function<HRESULT(int)> onSample = [](int) { return S_OK; };
  ComPtr<SourceFilter> source = SourceFilter::FromBytes({});
  ComPtr<SinkFilter> sink = SinkFilter::Create(SinkKind::kCounting);
  ComPtr<CountingAllocator> allocator = MakeCom<CountingAllocator>();

 private:
  static std::string WordOf(const SinkEvent& event) {
    switch (event.kind) {
      case SinkEvent::Kind::kNewSegment:
        return "segment:" + std::to_string(event.start);
      case SinkEvent::Kind::kEndOfStream:
        return "eos";
      case SinkEvent::Kind::kBeginFlush:
        return "flush";
      case SinkEvent::Kind::kEndFlush:
        return "endflush";
      case SinkEvent::Kind::kSample:
        break;
    }
    return "s:" + std::to_string(event.size);
  }
  static bool WaitUntil(const std::function<bool()>& done) {
    for (int waited = 0; waited < 10000 && !done(); ++waited) SleepMilliseconds(1);
    return done();
  }
};

}  // namespace tarvex::test
