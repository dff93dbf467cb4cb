// Saved settings: the version's text, and what a damaged one does.
#include "framework/persist_stream.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "framework/com_ptr.h"
#include "tests/filter/memory_stream.h"

namespace tarvex::test {
namespace {

class Settings : public CPersistStream {
 public:
  BYTE value = 3;
  DWORD version = 0;

 private:
  DWORD GetSoftwareVersion() override { return version; }
  HRESULT WriteToStream(IStream* stream) override { return WriteExact(stream, &value, 1); }
  HRESULT ReadFromStream(IStream* stream) override { return ReadExact(stream, &value, 1); }
};

/// A version as twelve wide characters, and a value of 9.
std::vector<std::uint8_t> Saved(const std::string& version) {
  std::vector<std::uint8_t> bytes;
  for (const char letter : version) {
    bytes.push_back(static_cast<std::uint8_t>(letter));
    bytes.push_back(0);
  }
  bytes.push_back(9);
  return bytes;
}

TEST(PersistStream, VersionIsPaddedWithZerosAndReadBack) {
  Settings settings;
  settings.version = 305;
  const auto stream = MakeCom<MemoryStream>(Saved("00000000305 "));
  ASSERT_EQ(settings.Load(stream.Get()), S_OK);
  EXPECT_EQ(settings.value, 9);
  stream->bytes.clear();
  settings.SetDirty(true);
  ASSERT_EQ(settings.Save(stream.Get(), FALSE), S_OK);
  EXPECT_EQ(settings.IsDirty(), S_OK) << "the caller did not ask to clear it";
  EXPECT_EQ(stream->bytes, Saved("00000000305 "));
}

TEST(PersistStream, DamagedVersionChangesNothing) {
  for (const char* version : {"00000000001 ", "0000000000x ", "000000000000", "99999999999 "}) {
    Settings settings;
    settings.SetDirty(true);
    EXPECT_TRUE(FAILED(settings.Load(MakeCom<MemoryStream>(Saved(version)).Get()))) << version;
    EXPECT_EQ(settings.value, 3) << version;
    EXPECT_EQ(settings.IsDirty(), S_OK) << version;
  }
}

}  // namespace
}  // namespace tarvex::test
