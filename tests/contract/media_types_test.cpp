// The media types that pins offer and accept.
#include "include/tarvex/class_ids.h"
#include "tests/contract/contract_fixture.h"

namespace tarvex::test {
namespace {

using MediaTypes = OpenedTest;

ComPtr<IEnumMediaTypes> ListOf(IPin* pin) {
  ComPtr<IEnumMediaTypes> list;
  EXPECT_EQ(pin->EnumMediaTypes(list.Put()), S_OK);
  return list;
}

TEST_F(MediaTypes, TheInputPinOffersTheMatroskaStreamAlone) {
  const ComPtr<IPin> pin = Graph().InputPin();
  const CMediaType type = TypeOf(pin.Get());
  EXPECT_EQ(type.majortype, MEDIATYPE_Stream);
  EXPECT_EQ(type.subtype, MEDIASUBTYPE_MatroskaStream);
  EXPECT_EQ(type.formattype, GUID_NULL);
  EXPECT_EQ(type.cbFormat, 0U);
  EXPECT_EQ(ListOf(pin.Get())->Skip(2), S_FALSE);
}

TEST_F(MediaTypes, TheInputPinAcceptsAnyType) {
  const CMediaType type(MEDIATYPE_Video);
  EXPECT_EQ(Graph().InputPin()->QueryAccept(&type), S_OK);
}

TEST_F(MediaTypes, AnOutputPinOffersOneType) {
  for (const ComPtr<IPin>& pin : Graph().OutputPins()) {
    const ComPtr<IEnumMediaTypes> list = ListOf(pin.Get());
    AM_MEDIA_TYPE* types[4] = {};
    ULONG fetched = 0;
    EXPECT_EQ(list->Next(4, types, &fetched), S_FALSE);
    EXPECT_EQ(fetched, 1U);
    for (ULONG k = 0; k < fetched; ++k) DeleteMediaType(types[k]);
    EXPECT_EQ(list->Next(1, types, nullptr), S_FALSE);
    EXPECT_EQ(list->Reset(), S_OK);
    EXPECT_EQ(list->Skip(1), S_OK);
    ComPtr<IEnumMediaTypes> clone;
    ASSERT_EQ(list->Clone(clone.Put()), S_OK);
    EXPECT_EQ(clone->Next(1, types, nullptr), S_FALSE);
  }
}

TEST_F(MediaTypes, AnOutputPinAcceptsItsOwnTypeAlone) {
  for (const ComPtr<IPin>& pin : Graph().OutputPins()) {
    CMediaType type = TypeOf(pin.Get());
    EXPECT_EQ(pin->QueryAccept(&type), S_OK);
    ASSERT_GT(type.cbFormat, 0U);
    type.pbFormat[type.cbFormat - 1] ^= 1U;
    EXPECT_EQ(pin->QueryAccept(&type), S_FALSE);
    type.pbFormat[type.cbFormat - 1] ^= 1U;
    type.lSampleSize += 1;
    EXPECT_EQ(pin->QueryAccept(&type), S_FALSE);
  }
}

TEST_F(MediaTypes, AConnectionHasTheOfferedType) {
  for (const ComPtr<IPin>& pin : Graph().OutputPins()) {
    CMediaType type;
    EXPECT_EQ(pin->ConnectionMediaType(&type), VFW_E_NOT_CONNECTED);
  }
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  for (const ComPtr<IPin>& pin : Graph().OutputPins()) {
    CMediaType type;
    ASSERT_EQ(pin->ConnectionMediaType(&type), S_OK);
    EXPECT_TRUE(type == TypeOf(pin.Get()));
    CMediaType atPeer;
    ASSERT_EQ(PeerOf(pin.Get())->ConnectionMediaType(&atPeer), S_OK);
    EXPECT_TRUE(type == atPeer);
  }
}

}  // namespace
}  // namespace tarvex::test
