// A single-threaded host without a graph, the only one in the process that is in an apartment: whatever our threads
// call can use COM there, and no thread leaves anything of it behind.
#include <gtest/gtest.h>

#include <map>
#include <mutex>
#include <thread>

#include "tests/support/film.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"
#include "tests/support/test_system.h"

namespace tarvex::test {
namespace {

/// What a thread is answered that enters no apartment itself.
HRESULT AnswerToABareThread() {
  HRESULT answer = S_OK;
  std::thread([&answer] { answer = MakeComObject(); }).join();
  return answer;
}

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

TEST_F(SingleThreadedHost, ReadersAndReceiversCanUseCom) {
  std::mutex mutex;
  std::map<std::thread::id, HRESULT> answers;  // what each thread that called out was answered by COM
  const auto ask = [&] {
    const HRESULT answer = MakeComObject();
    const std::lock_guard hold(mutex);
    HRESULT& ofThread = answers.try_emplace(std::this_thread::get_id(), S_OK).first->second;
    if (answer != S_OK) ofThread = answer;
    return S_OK;
  };
  const auto source = SourceFilter::FromBytes(MakeMovie({.frames = 1000, .frameSize = 10000}));  // is read ahead
  source->BeforeEachCall(ask);
  const ComPtr<IBaseFilter> splitter = CreateSplitter();
  ASSERT_EQ(source->Pin()->Connect(AllPins(splitter.Get()).front().Get(), nullptr), S_OK);
  std::vector<ComPtr<SinkFilter>> sinks;
  const std::vector<ComPtr<IPin>> pins = AllPins(splitter.Get());
  for (std::size_t k = 1; k < pins.size(); ++k) {
    sinks.push_back(SinkFilter::Create(SinkKind::kCounting));
    sinks.back()->OnSample([&](IMediaSample*) { ask(); });
    ASSERT_EQ(pins[k]->Connect(sinks.back()->Pin(), nullptr), S_OK);
    ASSERT_EQ(sinks.back()->Pause(), S_OK);
  }
  ASSERT_TRUE(SUCCEEDED(splitter->Pause()));
  for (const auto& sink : sinks) EXPECT_TRUE(sink->WaitForEnd(kPatience));
  for (const auto& sink : sinks) sink->Stop();
  EXPECT_TRUE(SUCCEEDED(splitter->Stop()));
  EXPECT_GE(answers.size(), 1 + 1 + 1 + sinks.size());  // ours, the worker, who reads ahead, and the queues
  for (const auto& [thread, answer] : answers) EXPECT_EQ(answer, S_OK) << std::hex << answer;
  for (const auto& pin : pins) pin->Disconnect();
  for (const auto& sink : sinks) sink->Pin()->Disconnect();
  source->Pin()->Disconnect();
}

}  // namespace
}  // namespace tarvex::test
