// The enumerators of pins and media types.
#include <gtest/gtest.h>

#include "tests/framework/fakes.h"

namespace tarvex::test {
namespace {

class PinEnumerator : public ::testing::Test {
 protected:
  PinEnumerator() {
    filter->Add<CBasePin>(nullptr);
    first = filter->Add(new TestOutputPin(*filter, OLESTR("First")));
    filter->Add<CBasePin>(nullptr);
    second = filter->Add(new TestOutputPin(*filter, OLESTR("Second")));
    EXPECT_EQ(filter->EnumPins(pins.Put()), S_OK);
  }

  ComPtr<TestFilter> filter = MakeCom<TestFilter>();
  TestOutputPin* first;
  TestOutputPin* second;
  ComPtr<IEnumPins> pins;
};

TEST_F(PinEnumerator, PassesOverEmptyEntries) {
  IPin* found[3] = {};
  ULONG fetched = 0;
  EXPECT_EQ(pins->Next(3, found, &fetched), S_FALSE);
  ASSERT_EQ(fetched, 2u);
  EXPECT_EQ(ComPtr<IPin>::Attach(found[0]).Get(), first);
  EXPECT_EQ(ComPtr<IPin>::Attach(found[1]).Get(), second);
}

TEST_F(PinEnumerator, SkipCountsPinsNotEntries) {
  EXPECT_EQ(pins->Skip(1), S_OK);
  ComPtr<IPin> pin;
  EXPECT_EQ(pins->Next(1, pin.Put(), nullptr), S_OK);
  EXPECT_EQ(pin.Get(), second);
  EXPECT_EQ(pins->Skip(1), S_FALSE);
}

TEST_F(PinEnumerator, ChangedPinsAreNoticedUntilReset) {
  filter->Add(new TestOutputPin(*filter, OLESTR("Third")));
  ComPtr<IPin> pin;
  ComPtr<IEnumPins> clone;
  EXPECT_EQ(pins->Next(1, pin.Put(), nullptr), VFW_E_ENUM_OUT_OF_SYNC);
  EXPECT_EQ(pins->Skip(1), VFW_E_ENUM_OUT_OF_SYNC);
  EXPECT_EQ(pins->Clone(clone.Put()), VFW_E_ENUM_OUT_OF_SYNC);
  EXPECT_EQ(pins->Reset(), S_OK);
  EXPECT_EQ(pins->Next(1, pin.Put(), nullptr), S_OK);
}

TEST_F(PinEnumerator, CloneGoesOnFromTheSamePlaceByItself) {
  ComPtr<IEnumPins> clone;
  ASSERT_EQ(pins->Skip(1), S_OK);
  ASSERT_EQ(pins->Clone(clone.Put()), S_OK);
  ASSERT_EQ(pins->Skip(1), S_OK);
  ComPtr<IPin> pin;
  EXPECT_EQ(clone->Next(1, pin.Put(), nullptr), S_OK);
  EXPECT_EQ(pin.Get(), second);
}

TEST_F(PinEnumerator, SeveralWithoutACountAreRefused) {
  IPin* found[2] = {};
  EXPECT_EQ(pins->Next(2, found, nullptr), E_INVALIDARG);
}

TEST_F(PinEnumerator, PinsAreFoundByTheirIdentifier) {
  LPWSTR id = nullptr;
  ASSERT_EQ(second->QueryId(&id), S_OK);
  ComPtr<IPin> pin;
  EXPECT_EQ(filter->FindPin(id, pin.Put()), S_OK);
  EXPECT_EQ(pin.Get(), second);
  CoTaskMemFree(id);
  EXPECT_EQ(filter->FindPin(OLESTR("Secon"), pin.Put()), VFW_E_NOT_FOUND);
  EXPECT_FALSE(pin);
}

class TypeEnumerator : public ::testing::Test {
 protected:
  TypeEnumerator() {
    pin = filter->Add(new VersionedPin(*filter));
    pin->types = {TypeOf(MEDIATYPE_Video, 1), TypeOf(MEDIATYPE_Video, 2)};
    EXPECT_EQ(pin->EnumMediaTypes(types.Put()), S_OK);
  }

  class VersionedPin : public TestOutputPin {
   public:
    using TestOutputPin::TestOutputPin;
    void Change() { IncrementTypeVersion(); }
  };

  ComPtr<TestFilter> filter = MakeCom<TestFilter>();
  VersionedPin* pin;
  ComPtr<IEnumMediaTypes> types;
};

TEST_F(TypeEnumerator, GivesCopiesInOrderAndEnds) {
  AM_MEDIA_TYPE* records[3] = {};
  ULONG fetched = 0;
  EXPECT_EQ(types->Next(3, records, &fetched), S_FALSE);
  ASSERT_EQ(fetched, 2u);
  EXPECT_EQ(MediaTypePtr(records[0])->pbFormat[0], 1);
  EXPECT_EQ(MediaTypePtr(records[1])->pbFormat[0], 2);
  EXPECT_EQ(types->Skip(1), S_FALSE);
}

TEST_F(TypeEnumerator, ChangedListIsNoticedUntilReset) {
  pin->Change();
  AM_MEDIA_TYPE* record = nullptr;
  EXPECT_EQ(types->Next(1, &record, nullptr), VFW_E_ENUM_OUT_OF_SYNC);
  types->Reset();
  EXPECT_EQ(types->Next(1, &record, nullptr), S_OK);
  DeleteMediaType(record);
}

TEST_F(TypeEnumerator, PinThatLeftItsFilterIsNotAsked) {
  filter->RemoveAll();
  AM_MEDIA_TYPE* record = nullptr;
  EXPECT_EQ(types->Next(1, &record, nullptr), VFW_E_ENUM_OUT_OF_SYNC);
}

}  // namespace
}  // namespace tarvex::test
