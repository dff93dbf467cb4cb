// What of the output queue's contract no graph shows at will: batches, a flush from the queue's own thread, and one
// that meets the end. Downstream is a sink that runs.
#include "framework/output_queue.h"

#include <gtest/gtest.h>

#include <string>

#include "framework/mem_allocator.h"
#include "tests/support/patience.h"
#include "tests/support/sink_filter.h"
#include "tests/support/source_filter.h"

namespace tarvex::test {
namespace {

class OutputQueue : public ::testing::Test {
 protected:
  void SetUp() override {
    const CMediaType type(MEDIATYPE_Stream);
    ASSERT_EQ(m_source->Pin()->Connect(m_sink->Pin(), &type), S_OK);
    m_sink->AnswerWith([this](IMediaSample* sample) { return onSample(sample->GetActualDataLength()); });
    ASSERT_EQ(m_sink->Pause(), S_OK);
    ALLOCATOR_PROPERTIES request{64, 64, 1, 0};
    ALLOCATOR_PROPERTIES actual{};
    ASSERT_EQ(m_allocator->SetProperties(&request, &actual), S_OK);
    ASSERT_EQ(m_allocator->Commit(), S_OK);
  }
  void TearDown() override {
    m_queue.reset();
    m_sink->Stop();
    m_source->Pin()->Disconnect();
    m_sink->Pin()->Disconnect();
  }

  /// As an output pin makes it: with its own thread and exact batches, which are sent anyway.
  void Make(LONG batchSize = 200) {
    HRESULT result = S_OK;
    m_queue = std::make_shared<COutputQueue>(m_sink->Pin(), &result, batchSize, 4);
    ASSERT_EQ(result, S_OK);
    m_sink->Clear();
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
    EXPECT_TRUE(Eventually([&] { return Heard() == expected && m_queue->IsIdle(); })) << Heard();
  }

  std::function<HRESULT(LONG)> onSample = [](LONG) { return S_OK; };  // the answer is Receive's
  ComPtr<SourceFilter> m_source = SourceFilter::FromBytes({});
  ComPtr<SinkFilter> m_sink = SinkFilter::Create(SinkKind::kCounting);
  ComPtr<CMemAllocator> m_allocator = MakeCom<CMemAllocator>();
  std::shared_ptr<COutputQueue> m_queue;
};

TEST_F(OutputQueue, KeepsSamplesUntilTheirBatchIsFullAndEverythingInOrder) {
  Make(3);
  Put(1);
  Put(2);
  SleepMilliseconds(20);
  EXPECT_TRUE(Heard().empty());
  Put(3);
  ExpectHeard("1 2 3 ");
  Put(4);
  m_queue->NewSegment(7, 100, 1.0);
  Put(5);
  m_queue->EOS();
  ExpectHeard("1 2 3 4 segment 5 end ");
}

TEST_F(OutputQueue, AFlushFromItsOwnThreadDropsWaitingSamplesAndEndsARefusal) {
  onSample = [&](LONG mark) {
    if (mark == 20) Send(21);  // is dropped with the refusal
    if (mark != 1) return mark == 20 ? S_FALSE : S_OK;
    EXPECT_EQ(Send(2), S_OK);
    m_queue->BeginFlush();
    EXPECT_EQ(Send(3), S_FALSE);
    m_queue->EndFlush();
    EXPECT_EQ(Send(9), S_OK);
    return E_FAIL;  // belongs to the time before the flush: must not refuse the sample after it
  };
  Make();
  Send(1);
  ExpectHeard("1 flush flushed 9 ");
  Send(20);
  ExpectHeard("1 flush flushed 9 20 ");
  EXPECT_EQ(Send(10), S_FALSE);
  m_queue->EOS();  // passes
  ExpectHeard("1 flush flushed 9 20 end ");
}

// A seek's flush meets a stop: whichever comes second must not leave downstream flushing.
TEST_F(OutputQueue, AFlushMeanwhileIsEndedForDownstream) {
  onSample = [&](LONG) {
    Eventually([this] { return m_sink->CountOf(SinkEvent::Kind::kBeginFlush) != 0; });
    return S_OK;
  };
  for (DWORD round = 0; round < 20; ++round) {
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
  onSample = [](LONG) { return S_OK; };
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
  Make();
  m_queue->BeginFlush();
  m_queue.reset();
  EXPECT_FALSE(m_sink->Pin()->IsFlushing());
}

}  // namespace
}  // namespace tarvex::test
