// The media types that pins offer and accept.
#include "include/tarvex/class_ids.h"
#include "tests/contract/contract_fixture.h"

namespace tarvex::test {
namespace {

using MediaTypes = OpenedTest;

TEST_F(MediaTypes, TheInputPinOffersTheMatroskaStreamAndAcceptsAll) {
  const ComPtr<IPin> pin = Graph().InputPin();
  const CMediaType type = TypeOf(pin.Get());
  EXPECT_EQ(type.majortype, MEDIATYPE_Stream);
  EXPECT_EQ(type.subtype, MEDIASUBTYPE_MatroskaStream);
  EXPECT_EQ(type.formattype, GUID_NULL);
  EXPECT_EQ(type.cbFormat, 0U);
  const CMediaType other(MEDIATYPE_Video);
  EXPECT_EQ(pin->QueryAccept(&other), S_OK);
}

TEST_F(MediaTypes, EveryPinOffersOneType) {
  for (const ComPtr<IPin>& pin : AllPins(Graph().Splitter())) {
    ComPtr<IEnumMediaTypes> list;
    ASSERT_EQ(pin->EnumMediaTypes(list.Put()), S_OK);
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
    EXPECT_EQ(list->Skip(1), S_FALSE);
  }
}

TEST_F(MediaTypes, AnOutputPinAcceptsItsOwnTypeAlone) {
  void (*const changes[])(CMediaType&) = {
      [](CMediaType& type) { type.majortype = GUID_NULL; },
      [](CMediaType& type) { type.subtype = MEDIASUBTYPE_RGB24; },
      [](CMediaType& type) { type.formattype = GUID_NULL; },
      [](CMediaType& type) { type.bFixedSizeSamples = type.bFixedSizeSamples == FALSE ? TRUE : FALSE; },
      [](CMediaType& type) { type.bTemporalCompression = type.bTemporalCompression == FALSE ? TRUE : FALSE; },
      [](CMediaType& type) { type.lSampleSize += 1; },
      [](CMediaType& type) { type.pbFormat[type.cbFormat - 1] ^= 1U; },
      [](CMediaType& type) { type.cbFormat -= 1; },
  };
  for (const ComPtr<IPin>& pin : Graph().OutputPins()) {
    const CMediaType own = TypeOf(pin.Get());
    EXPECT_EQ(pin->QueryAccept(&own), S_OK);
    ASSERT_GT(own.cbFormat, 0U);
    for (const auto& change : changes) {
      CMediaType type(own);
      change(type);
      EXPECT_EQ(pin->QueryAccept(&type), S_FALSE) << "change " << &change - changes;
    }
  }
}

}  // namespace
}  // namespace tarvex::test
