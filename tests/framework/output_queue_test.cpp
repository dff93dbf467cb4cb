// The output queue's contract as its pins rely on it: order, batches, refusals, flushes, and an end whatever
// downstream does. Downstream is a sink that runs.
#include "framework/output_queue.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "framework/mem_allocator.h"
#include "tests/support/patience.h"
#include "tests/support/sink_filter.h"
#include "tests/support/source_filter.h"

namespace tarvex::test {
namespace {

class CountingAllocator : public CMemAllocator {
 public:
  LONG Out() {
    const CAutoLock hold(Lock());
    return LentCount();
  }
};

class OutputQueue : public ::testing::Test {
 protected:
  void SetUp() override {
    const CMediaType type(MEDIATYPE_Stream);
    ASSERT_EQ(m_source->Pin()->Connect(m_sink->Pin(), &type), S_OK);
    m_sink->AnswerWith([this](IMediaSample* sample) {
      const auto mark = static_cast<int>(sample->GetActualDataLength());
      m_out.at(static_cast<std::size_t>(mark)) = m_allocator->Out();
      return onSample(mark);
    });
    ASSERT_EQ(m_sink->Pause(), S_OK);
    ALLOCATOR_PROPERTIES request{64, 64, 1, 0};
    ALLOCATOR_PROPERTIES actual{};
    ASSERT_EQ(m_allocator->SetProperties(&request, &actual), S_OK);
    ASSERT_EQ(m_allocator->Commit(), S_OK);
  }
  // Samples that were downstream come back, and the others never went there.
  void TearDown() override {
    m_queue.reset();
    EXPECT_TRUE(Eventually([this] { return m_allocator->Out() == 0; }));
    m_sink->Stop();
    m_source->Pin()->Disconnect();
    m_sink->Pin()->Disconnect();
  }

  /// As an output pin makes it: with its own thread and exact batches, which are sent anyway.
  void Make(LONG batchSize = 200) {
    HRESULT result = S_OK;
    m_queue = std::make_shared<COutputQueue>(m_sink->Pin(), &result, batchSize, 4);
    ASSERT_EQ(result, S_OK);
  }
  /// Of `mark` bytes; not sent before the batch is full.
  HRESULT Put(int mark) {
    ComPtr<IMediaSample> sample;
    EXPECT_EQ(m_allocator->GetBuffer(sample.Put(), nullptr, nullptr, 0), S_OK);
    EXPECT_EQ(sample->SetActualDataLength(mark), S_OK);
    return m_queue->Receive(sample.Detach());
  }
  HRESULT Send(int mark) {
    const HRESULT result = Put(mark);
    m_queue->SendAnyway();
    return result;
  }

  /// Everything that reached the pin.
  std::string Heard() {
    static constexpr const char* kWords[] = {"segment ", "", "end ", "flush ", "flushed "};
    std::string words;
    for (const SinkEvent& event : m_sink->Events()) {
      words += kWords[static_cast<int>(event.kind)];
      if (event.kind == SinkEvent::Kind::kSample) words += std::to_string(event.size) + ' ';
    }
    return words;
  }
  void ExpectHeard(const std::string& expected) {
    EXPECT_TRUE(Eventually([&] { return Heard() == expected && (!m_queue || m_queue->IsIdle()); })) << Heard();
  }
  bool WaitForFlush() {
    return Eventually([this] { return m_sink->CountOf(SinkEvent::Kind::kBeginFlush) != 0; });
  }
  /// The first sample stays in Receive until m_go, and is answered so; other samples are sent behind it.
  void SendHeld(HRESULT answer, int others) {
    onSample = [this, answer](int mark) {
      if (mark != 1) return S_OK;
      m_entered.Set();
      m_go.Wait(kPatience);
      return answer;
    };
    Make();
    Send(1);
    ASSERT_TRUE(m_entered.Wait(kPatience));
    for (int mark = 2; mark < 2 + others; ++mark) Send(mark);
  }

  std::function<HRESULT(int)> onSample = [](int) { return S_OK; };  // the answer is Receive's
  ComPtr<SourceFilter> m_source = SourceFilter::FromBytes({});
  ComPtr<SinkFilter> m_sink = SinkFilter::Create(SinkKind::kCounting);
  ComPtr<CountingAllocator> m_allocator = MakeCom<CountingAllocator>();
  std::shared_ptr<COutputQueue> m_queue;
  std::array<LONG, 65> m_out{};  // how many samples were out when each came
  Event m_entered;
  Event m_go;
};

TEST_F(OutputQueue, KeepsEverythingInOrderAndSamplesUntilTheirBatchIsFullOrReleased) {
  Make(3);
  Put(1);
  Put(2);
  SleepMilliseconds(20);
  EXPECT_TRUE(Heard().empty());
  Put(3);
  ExpectHeard("1 2 3 ");
  EXPECT_EQ(m_out[2], 3) << "in one batch";
  Put(4);
  m_queue->NewSegment(7, 100, 1.0);
  Put(5);
  m_queue->EOS();
  ExpectHeard("1 2 3 4 segment 5 end ");
  m_sink->Clear();
  SendHeld(S_OK, 2);
  m_go.Set();
  ExpectHeard("1 2 3 ");
  EXPECT_EQ(m_out[2], 2) << "each is free as soon as downstream is done with it";
}

TEST_F(OutputQueue, ARefusalDropsWhatFollowsAndIsReportedUntilResetButTheEndPasses) {
  SendHeld(E_ACCESSDENIED, 1);
  m_queue->EOS();
  m_go.Set();
  ExpectHeard("1 end ");
  EXPECT_EQ(Send(3), E_ACCESSDENIED);
  m_queue->Reset();
  EXPECT_EQ(Send(4), S_OK);
  ExpectHeard("1 end 4 ");
  for (const HRESULT refusal : {S_FALSE, VFW_E_SAMPLE_REJECTED_EOS}) {
    m_sink->Clear();
    onSample = [refusal](int) { return refusal; };
    Make();
    Send(5);
    ExpectHeard("5 ");
    m_queue->EOS();
    ExpectHeard(refusal == S_FALSE ? "5 end " : "5 ");  // who has seen the end is not told
  }
}

TEST_F(OutputQueue, AFlushDropsWaitingSamplesAndEndsARefusalAlsoFromTheQueuesOwnThread) {
  m_sink->BeforeEachCall([this](SinkCall call) {
    if (call == SinkCall::kBeginFlush) m_go.Set();
    return S_OK;
  });
  SendHeld(S_FALSE, 1);
  m_queue->BeginFlush();
  EXPECT_EQ(Send(3), S_FALSE);
  m_queue->EndFlush();
  EXPECT_EQ(Send(4), S_OK);
  ExpectHeard("1 flush flushed 4 ");

  m_sink->Clear();
  onSample = [&](int mark) {
    if (mark != 1) return S_OK;
    EXPECT_EQ(Send(2), S_OK);
    m_queue->BeginFlush();
    m_queue->EndFlush();
    EXPECT_EQ(Send(9), S_OK);
    return E_FAIL;  // belongs to the time before the flush: must not refuse the sample after it
  };
  Send(1);
  ExpectHeard("1 flush flushed 9 ");
  EXPECT_EQ(Send(10), S_OK);
}

// Receive returns soon, waits for a flush, or returns only when everybody has given up.
TEST_F(OutputQueue, EndsWhateverReceiveDoes) {
  const std::function<void()> receives[] = {[] { SleepMilliseconds(30); }, [this] { WaitForFlush(); },
                                            [this] { m_go.Wait(); }};
  for (const auto& receive : receives) {
    Event left;
    onSample = [&](int) {
      m_entered.Set();
      receive();
      left.Set();
      return S_OK;
    };
    m_sink->Clear();
    Make();
    for (int mark = 1; mark <= 20; ++mark) Send(mark);
    ASSERT_TRUE(m_entered.Wait(kPatience));
    m_queue.reset();
    m_go.Set();
    ASSERT_TRUE(left.Wait(kPatience));
    EXPECT_TRUE(Eventually([this] { return m_allocator->Out() == 0; }));
    if (&receive != receives || Heard() != "1 ") ExpectHeard("1 flush flushed ");
    m_go.Clear();
  }
}

TEST_F(OutputQueue, EndsFromItsOwnThreadAndQuietlyWhenIdle) {
  onSample = [this](int) {
    m_go.Wait(kPatience);  // no other call may be in progress when the owner destroys its queue
    m_queue.reset();
    m_entered.Set();
    return S_OK;
  };
  Make();
  Put(1);
  m_queue->EOS();
  m_go.Set();
  ASSERT_TRUE(m_entered.Wait(kPatience));
  ExpectHeard("1 ");
  for (int i = 0; i < 50; ++i) Make();
  ExpectHeard("1 ");
}

// A seek's flush meets a stop: whichever comes second must not leave downstream flushing.
TEST_F(OutputQueue, AFlushMeanwhileIsEndedForDownstream) {
  onSample = [&](int) {
    WaitForFlush();
    return S_OK;
  };
  for (DWORD round = 0; round < 20; ++round) {
    m_sink->Clear();
    Make();
    for (int mark = 1; mark <= 3; ++mark) Send(mark);
    Thread seek;
    ASSERT_EQ(seek.Start([&] {
      // Before the end, while it waits for the thread, and while it flushes downstream itself.
      SleepMilliseconds(round * 3);
      m_queue->BeginFlush();
      m_queue->EndFlush();
    }),
              S_OK);
    COutputQueue::End(std::span(&m_queue, 1));
    seek.Join();
    EXPECT_FALSE(m_sink->Pin()->IsFlushing()) << "round " << round;
    EXPECT_EQ(m_sink->CountOf(SinkEvent::Kind::kBeginFlush), m_sink->CountOf(SinkEvent::Kind::kEndFlush));
  }
  // The same, where the end has come and gone while downstream is being told of the flush.
  onSample = [](int) { return S_OK; };
  m_sink->BeforeEachCall([&](SinkCall call) {
    if (call == SinkCall::kBeginFlush) COutputQueue::End(std::span(&m_queue, 1));
    return S_OK;
  });
  Make();
  Send(1);
  for (int flush = 0; flush < 2; ++flush) {
    m_queue->BeginFlush();
    m_queue->EndFlush();
    EXPECT_FALSE(m_sink->Pin()->IsFlushing()) << "nobody would end it, whose queue has ended";
    m_sink->BeforeEachCall(nullptr);
  }
}

}  // namespace
}  // namespace tarvex::test
