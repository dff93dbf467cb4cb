// Connecting: every refusal in its order, and what a failure half way leaves.
#include <gtest/gtest.h>

#include "tests/framework/fakes.h"

namespace tarvex::test {
namespace {

class Connection : public ::testing::Test {
 protected:
  Connection()
      : output(upstream->Add(new TestOutputPin(*upstream))), input(downstream->Add(new TestInputPin(*downstream))) {}
  ~Connection() override {
    upstream->Stop();
    downstream->Stop();
    output->Disconnect();
    input->Disconnect();
  }
  void ExpectUnconnected() {
    ComPtr<IPin> peer;
    EXPECT_EQ(output->ConnectedTo(peer.Put()), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(input->ConnectedTo(peer.Put()), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(output->GetDeliveryBuffer(nullptr, nullptr, nullptr, 0), VFW_E_NO_ALLOCATOR);
  }

  ComPtr<TestFilter> upstream = MakeCom<TestFilter>();
  ComPtr<TestFilter> downstream = MakeCom<TestFilter>();
  TestOutputPin* output;
  TestInputPin* input;
};

TEST_F(Connection, BothSidesKnowPeerAndType) {
  ASSERT_EQ(output->Connect(input, nullptr), S_OK);
  ComPtr<IPin> peer;
  EXPECT_EQ(output->ConnectedTo(peer.Put()), S_OK);
  EXPECT_EQ(peer.Get(), input);
  EXPECT_EQ(input->ConnectedTo(peer.Put()), S_OK);
  EXPECT_EQ(peer.Get(), output);
  AM_MEDIA_TYPE record{};
  EXPECT_EQ(input->ConnectionMediaType(&record), S_OK);
  EXPECT_EQ(TypeOf(MEDIATYPE_Video), record);
  FreeMediaType(record);
}

TEST_F(Connection, NullArguments) {
  const CMediaType type = TypeOf(MEDIATYPE_Video);
  EXPECT_EQ(output->Connect(nullptr, nullptr), E_POINTER);
  EXPECT_EQ(input->ReceiveConnection(nullptr, &type), E_POINTER);
  EXPECT_EQ(input->ReceiveConnection(output, nullptr), E_POINTER);
}

TEST_F(Connection, ConnectedPinRefusesBeforeAnythingElse) {
  ASSERT_EQ(output->Connect(input, nullptr), S_OK);
  ASSERT_EQ(upstream->Pause(), S_OK);
  const CMediaType wrong = TypeOf(MEDIATYPE_Audio);
  EXPECT_EQ(output->Connect(input, nullptr), VFW_E_ALREADY_CONNECTED);
  EXPECT_EQ(input->ReceiveConnection(output, &wrong), VFW_E_ALREADY_CONNECTED);
}

TEST_F(Connection, ActiveFilterRefuses) {
  const CMediaType type = TypeOf(MEDIATYPE_Video);
  upstream->Pause();
  EXPECT_EQ(output->Connect(input, &type), VFW_E_NOT_STOPPED);
  upstream->Stop();
  downstream->Pause();
  EXPECT_EQ(output->Connect(input, &type), VFW_E_NOT_STOPPED);
  downstream->Stop();
  ASSERT_EQ(output->Connect(input, nullptr), S_OK);
  upstream->Pause();
  EXPECT_EQ(output->Disconnect(), VFW_E_NOT_STOPPED);
}

TEST_F(Connection, SameDirectionIsRefused) {
  auto* other = upstream->Add(new TestOutputPin(*upstream, OLESTR("Other")));
  const CMediaType type = TypeOf(MEDIATYPE_Video);
  EXPECT_EQ(output->Connect(other, &type), VFW_E_INVALID_DIRECTION);
  EXPECT_EQ(output->Connect(other, nullptr), VFW_E_INVALID_DIRECTION);
  ExpectUnconnected();
}

TEST_F(Connection, TypeNobodyAcceptsIsRefused) {
  input->accepts = [](const CMediaType&) { return false; };
  const CMediaType type = TypeOf(MEDIATYPE_Video);
  EXPECT_EQ(output->Connect(input, nullptr), VFW_E_NO_ACCEPTABLE_TYPES);
  EXPECT_EQ(output->Connect(input, &type), VFW_E_TYPE_NOT_ACCEPTED);
  const CMediaType other = TypeOf(MEDIATYPE_Audio);
  EXPECT_EQ(output->Connect(input, &other), VFW_E_TYPE_NOT_ACCEPTED);
  ExpectUnconnected();
}

TEST_F(Connection, ReceiversTypesComeBeforeOurOwn) {
  output->types = {TypeOf(MEDIATYPE_Video, 1), TypeOf(MEDIATYPE_Video, 2)};
  input->types = {TypeOf(MEDIATYPE_Audio, 3), TypeOf(MEDIATYPE_Video, 2)};
  ASSERT_EQ(output->Connect(input, nullptr), S_OK);
  EXPECT_EQ(output->CurrentMediaType(), TypeOf(MEDIATYPE_Video, 2));
}

TEST_F(Connection, PartialTypeChoosesAmongOurs) {
  output->types = {TypeOf(MEDIATYPE_Video, 1), TypeOf(MEDIATYPE_Audio, 2)};
  const CMediaType audio(MEDIATYPE_Audio);
  ASSERT_EQ(output->Connect(input, &audio), S_OK);
  EXPECT_EQ(output->CurrentMediaType(), TypeOf(MEDIATYPE_Audio, 2));
}

TEST_F(Connection, FailureOfTheReceiversCompletionUndoesBothSides) {
  input->completeResult = E_ACCESSDENIED;
  EXPECT_EQ(output->Connect(input, nullptr), E_ACCESSDENIED);
  EXPECT_EQ(output->breaks, 1);
  ExpectUnconnected();
  input->completeResult = S_OK;
  EXPECT_EQ(output->Connect(input, nullptr), S_OK);
}

TEST_F(Connection, FailureOfOurCompletionDisconnectsTheReceiver) {
  class Stubborn : public TestOutputPin {
   public:
    using TestOutputPin::TestOutputPin;
    HRESULT DecideBufferSize(IMemAllocator*, ALLOCATOR_PROPERTIES*) override { return E_OUTOFMEMORY; }
  };
  output = upstream->Add(new Stubborn(*upstream));
  EXPECT_EQ(output->Connect(input, nullptr), E_OUTOFMEMORY);
  ExpectUnconnected();
}

TEST_F(Connection, DisconnectTwiceSaysSo) {
  ASSERT_EQ(output->Connect(input, nullptr), S_OK);
  EXPECT_EQ(output->Disconnect(), S_OK);
  EXPECT_EQ(output->Disconnect(), S_FALSE);
  AM_MEDIA_TYPE record{};
  EXPECT_EQ(output->ConnectionMediaType(&record), VFW_E_NOT_CONNECTED);
}

TEST_F(Connection, InputPinTakesSamplesOnlyWhileItCan) {
  Downstream down;
  const auto sample = ComPtr<IMediaSample>::Attach(down.Sample(1));
  EXPECT_EQ(input->Receive(sample.Get()), VFW_E_NOT_CONNECTED);
  EXPECT_EQ(down.input->Receive(sample.Get()), S_OK);
  down.input->BeginFlush();
  EXPECT_EQ(down.input->Receive(sample.Get()), S_FALSE);
  down.input->EndFlush();
  down.filter->Stop();
  EXPECT_EQ(down.input->Receive(sample.Get()), VFW_E_WRONG_STATE);
}

}  // namespace
}  // namespace tarvex::test
