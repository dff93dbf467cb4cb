// A single-threaded host without a graph, the only one in the process that is in an apartment: whatever our threads
// call can use COM there, and no thread leaves anything of it behind.
#include <gtest/gtest.h>

#include <map>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "framework/thread.h"
#include "tests/support/movie.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"
#include "tests/support/test_system.h"

namespace tarvex::test {
namespace {

// Long enough to be read ahead.
constexpr MovieShape kLongMovie = {.frames = 1000, .frameSize = 10000};

/// What a thread is answered that enters no apartment itself.
HRESULT AnswerToABareThread() {
  HRESULT answer = S_OK;
  std::thread([&answer] { answer = MakeComObject(); }).join();
  return answer;
}

/// What each thread that called out was answered by COM.
class Answers {
 public:
  void Ask() {
    const HRESULT answer = MakeComObject();
    const std::lock_guard hold(m_mutex);
    HRESULT& ofThread = m_answers.try_emplace(std::this_thread::get_id(), S_OK).first->second;
    if (answer != S_OK) ofThread = answer;
  }
  void ExpectAllFrom(std::size_t atLeast) {
    const std::lock_guard hold(m_mutex);
    EXPECT_GE(m_answers.size(), atLeast);
    for (const auto& [thread, answer] : m_answers) EXPECT_EQ(answer, S_OK) << std::hex << answer;
  }

 private:
  std::mutex m_mutex;
  std::map<std::thread::id, HRESULT> m_answers;
};

class SingleThreadedHost : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)));
    ASSERT_EQ(AnswerToABareThread(), CO_E_NOTINITIALIZED) << "somebody else makes an apartment for all";
  }
  void TearDown() override {
    EXPECT_TRUE(ModuleBecomesIdle());
    EXPECT_EQ(AnswerToABareThread(), CO_E_NOTINITIALIZED) << "a thread that has ended is still in its apartment";
    CoUninitialize();
  }
};

void PlayByHand(SourceFilter& source, IBaseFilter& splitter, const std::vector<ComPtr<SinkFilter>>& sinks) {
  for (const auto& sink : sinks) ASSERT_TRUE(SUCCEEDED(sink->Pause()));
  ASSERT_TRUE(SUCCEEDED(splitter.Pause()));
  ASSERT_TRUE(SUCCEEDED(source.Pause()));
  for (const auto& sink : sinks) EXPECT_TRUE(sink->WaitForEnd(kPatience));
  for (const auto& sink : sinks) sink->Stop();
  EXPECT_TRUE(SUCCEEDED(splitter.Stop()));
  source.Stop();
}

TEST_F(SingleThreadedHost, ReadersAndReceiversCanUseCom) {
  Answers answers;
  const auto source = SourceFilter::FromBytes(MakeMovie(kLongMovie));
  source->BeforeEachCall([&answers] {
    answers.Ask();
    return S_OK;
  });
  const ComPtr<IBaseFilter> splitter = CreateSplitter();
  std::vector<ComPtr<IPin>> pins = AllPins(splitter.Get());
  ASSERT_EQ(source->Pin()->Connect(pins.front().Get(), nullptr), S_OK);
  pins = AllPins(splitter.Get());
  std::vector<ComPtr<SinkFilter>> sinks;
  for (const auto& pin : pins) {
    if (DirectionOf(pin.Get()) != PINDIR_OUTPUT) continue;
    sinks.push_back(SinkFilter::Create(SinkKind::kCounting));
    sinks.back()->OnSample([&answers](IMediaSample*) { answers.Ask(); });
    ASSERT_EQ(pin->Connect(sinks.back()->Pin(), nullptr), S_OK);
  }
  PlayByHand(*source, *splitter, sinks);
  answers.ExpectAllFrom(1 + 1 + 1 + sinks.size());  // ours, the worker, who reads ahead, and the queues
  for (const auto& pin : pins) pin->Disconnect();
  for (const auto& sink : sinks) sink->Pin()->Disconnect();
  source->Pin()->Disconnect();
}

TEST_F(SingleThreadedHost, AThreadThatThrowsLeavesItsApartment) {
  Thread thread;
  ASSERT_EQ(thread.Start([] { throw std::runtime_error("thrown on purpose"); }), S_OK);
  thread.Join();
}

}  // namespace
}  // namespace tarvex::test
