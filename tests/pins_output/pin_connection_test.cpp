// The pin's identity, its one media type, its allocator, and its life outside its filter.
#include <gtest/gtest.h>

#include "tests/pins_output/pin_rig.h"

namespace tarvex::test {
namespace {

ComPtr<IMediaSeeking> SeekingOf(IPin* pin) { return QueryFor<IMediaSeeking>(pin); }

TEST(PinConnection, SeekingIsAnInterfaceOfThePinItself) {
  AudioRig rig;
  const auto seeking = SeekingOf(rig.pin);
  ASSERT_TRUE(seeking);
  EXPECT_TRUE(IsSameObject(seeking.Get(), static_cast<IPin*>(rig.pin)));
  EXPECT_TRUE(seeking.Query<IPin>());
}

TEST(PinConnection, OffersOneType) {
  AudioRig rig(SinkKind::kRecording, false);
  CMediaType type;
  EXPECT_EQ(rig.pin->GetMediaType(1, &type), VFW_S_NO_MORE_ITEMS);
  EXPECT_EQ(rig.pin->GetMediaType(-1, &type), S_OK);
  EXPECT_TRUE(type == TrackOf(1, MEDIATYPE_Audio).mediaType);
  EXPECT_EQ(rig.pin->GetMediaType(0, &type), S_OK);
}

TEST(PinConnection, AcceptsNoTypeThatDiffersAnywhere) {
  AudioRig rig(SinkKind::kRecording, false);
  CMediaType type = TrackOf(1, MEDIATYPE_Audio).mediaType;
  EXPECT_EQ(rig.pin->CheckMediaType(&type), S_OK);
  type.pbFormat[0] ^= 1;
  EXPECT_EQ(rig.pin->CheckMediaType(&type), S_FALSE);
  EXPECT_EQ(rig.pin->Connect(rig.sink->Pin(), &type), VFW_E_TYPE_NOT_ACCEPTED);
  type = TrackOf(1, MEDIATYPE_Audio).mediaType;
  type.lSampleSize = 9;
  EXPECT_EQ(rig.pin->CheckMediaType(&type), S_FALSE);
}

TEST(PinConnection, PeerGetsOurAllocatorReadOnly) {
  AudioRig rig;
  EXPECT_TRUE(rig.sink->Pin()->IsReadOnly());
  ComPtr<IMemAllocator> allocator;
  ASSERT_EQ(rig.sink->Pin()->GetAllocator(allocator.Put()), S_OK);
  ALLOCATOR_PROPERTIES properties{};
  ASSERT_EQ(allocator->GetProperties(&properties), S_OK);
  EXPECT_EQ(properties.cBuffers, 200);
  EXPECT_EQ(properties.cbBuffer, 52428);
  EXPECT_EQ(properties.cbAlign, 1);
  EXPECT_EQ(properties.cbPrefix, 0);
}

TEST(PinConnection, PeerThatRefusesTheAllocatorStaysUnconnected) {
  class Refusing : public TestInputPin {
   public:
    using TestInputPin::TestInputPin;
    HRESULT STDMETHODCALLTYPE NotifyAllocator(IMemAllocator* /*allocator*/, BOOL /*readOnly*/) override {
      return E_ACCESSDENIED;
    }
  };
  AudioRig rig(SinkKind::kRecording, false);
  const auto filter = MakeCom<TestFilter>();
  auto* input = filter->Add(new Refusing(*filter));
  const CMediaType type = TrackOf(1, MEDIATYPE_Audio).mediaType;
  EXPECT_EQ(rig.pin->Connect(input, &type), E_ACCESSDENIED);
  EXPECT_FALSE(rig.pin->IsConnected());
  EXPECT_FALSE(input->IsConnected());
  EXPECT_EQ(rig.pin->Connect(rig.sink->Pin(), nullptr), S_OK);
}

TEST(PinConnection, ReconnectedPinPlays) {
  AudioRig rig;
  rig.Start();
  EXPECT_TRUE(rig.Send(0));
  rig.Stop();
  rig.sink->Stop();
  EXPECT_EQ(rig.pin->Disconnect(), S_OK);
  EXPECT_EQ(rig.sink->Pin()->Disconnect(), S_OK);
  EXPECT_FALSE(rig.Send(0));
  ASSERT_EQ(rig.pin->Connect(rig.sink->Pin(), nullptr), S_OK);
  rig.sink->Clear();
  rig.Start();
  EXPECT_TRUE(rig.Send(0));
  EXPECT_TRUE(rig.WaitForSamples(1));
}

TEST(PinConnection, TrackChangesOnlyWhileUnconnected) {
  AudioRig rig;
  EXPECT_EQ(rig.pin->SetTrack(TrackOf(2, MEDIATYPE_Audio)), VFW_E_ALREADY_CONNECTED);
  EXPECT_EQ(rig.pin->TrackNumber(), 1U);
  rig.pin->Disconnect();
  rig.sink->Pin()->Disconnect();
  ComPtr<IEnumMediaTypes> types;
  ASSERT_EQ(rig.pin->EnumMediaTypes(types.Put()), S_OK);
  EXPECT_EQ(rig.pin->SetTrack(TrackOf(2, MEDIATYPE_Audio)), S_OK);
  EXPECT_EQ(rig.pin->TrackNumber(), 2U);
  AM_MEDIA_TYPE* record = nullptr;
  EXPECT_EQ(types->Next(1, &record, nullptr), VFW_E_ENUM_OUT_OF_SYNC);
  EXPECT_EQ(types->Reset(), S_OK);
  ASSERT_EQ(types->Next(1, &record, nullptr), S_OK);
  EXPECT_EQ(record->pbFormat[0], 2);
  DeleteMediaType(record);
}

// An application may hold a pin of a file that was closed, and of a filter that is gone.
TEST(PinConnection, PinThatLeftItsFilterTouchesNothing) {
  ComPtr<IMediaSeeking> seeking;
  ComPtr<IPin> pin;
  {
    AudioRig rig(SinkKind::kRecording, false);
    pin = ComPtr<IPin>(rig.pin);
    seeking = SeekingOf(rig.pin);
    rig.upstream->RemoveAll();
    rig.host.pins.clear();
  }
  LONGLONG time = 5;
  double rate = 1;
  const GUID frames = TIME_FORMAT_FRAME;
  EXPECT_EQ(seeking->SetPositions(&time, AM_SEEKING_AbsolutePositioning, &time, AM_SEEKING_AbsolutePositioning),
            VFW_E_NOT_CONNECTED);
  EXPECT_EQ(seeking->GetPositions(&time, &time), VFW_E_NOT_CONNECTED);
  EXPECT_EQ(seeking->GetDuration(&time), VFW_E_NOT_CONNECTED);
  EXPECT_EQ(seeking->GetStopPosition(&time), VFW_E_NOT_CONNECTED);
  EXPECT_EQ(seeking->GetAvailable(&time, &time), VFW_E_NOT_CONNECTED);
  EXPECT_EQ(seeking->ConvertTimeFormat(&time, &frames, 1, nullptr), VFW_E_NOT_CONNECTED);
  EXPECT_EQ(seeking->SetRate(2), VFW_E_NOT_CONNECTED);
  EXPECT_EQ(seeking->GetRate(&rate), VFW_E_NOT_CONNECTED);
  EXPECT_EQ(pin->Disconnect(), VFW_E_NOT_CONNECTED);
}

}  // namespace
}  // namespace tarvex::test
