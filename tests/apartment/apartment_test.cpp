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
  const auto source =
      SourceFilter::FromBytes(MakeMovie({.audios = 0, .frames = 1000, .frameSize = 10000}));  // is read ahead
  source->BeforeEachCall(ask);
  const ComPtr<IBaseFilter> splitter = CreateSplitter();
  ASSERT_EQ(source->Pin()->Connect(AllPins(splitter.Get()).front().Get(), nullptr), S_OK);
  const auto sink = SinkFilter::Create(SinkKind::kCounting);
  sink->OnSample([&](IMediaSample*) { ask(); });
  const ComPtr<IPin> pin = AllPins(splitter.Get()).back();
  ASSERT_EQ(pin->Connect(sink->Pin(), nullptr), S_OK);
  ASSERT_EQ(sink->Pause(), S_OK);
  ASSERT_TRUE(SUCCEEDED(splitter->Pause()));
  EXPECT_TRUE(sink->WaitForEnd(kPatience));
  sink->Stop();
  EXPECT_TRUE(SUCCEEDED(splitter->Stop()));
  EXPECT_GE(answers.size(), 4U);  // ours, the worker, who reads ahead, and the queue
  for (const auto& [thread, answer] : answers) EXPECT_EQ(answer, S_OK) << std::hex << answer;
  pin->Disconnect();
  sink->Pin()->Disconnect();
  source->Pin()->Disconnect();
}

}  // namespace
}  // namespace tarvex::test
