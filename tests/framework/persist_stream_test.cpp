// Saved settings: the exact bytes, and what a damaged stream does.
#include "framework/persist_stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "framework/com_ptr.h"
#include "framework/unknown.h"

namespace tarvex::test {
namespace {

/// A stream over bytes; only what persistence uses.
class ByteStream : public CUnknownImpl<IStream> {
 public:
  explicit ByteStream(std::vector<BYTE> content = {})
      : CUnknownImpl("ByteStream", nullptr), bytes(std::move(content)) {}

  HRESULT STDMETHODCALLTYPE Read(void* pv, ULONG cb, ULONG* pcbRead) override {
    const auto count = std::min<std::size_t>(cb, bytes.size() - m_position);
    if (count != 0) std::memcpy(pv, bytes.data() + m_position, count);
    m_position += count;
    if (pcbRead != nullptr) *pcbRead = static_cast<ULONG>(count);
    return count == cb ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Write(const void* pv, ULONG cb, ULONG* pcbWritten) override {
    const auto* data = static_cast<const BYTE*>(pv);
    bytes.insert(bytes.end(), data, data + cb);
    if (pcbWritten != nullptr) *pcbWritten = cb;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER, DWORD, ULARGE_INTEGER*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*, ULARGE_INTEGER*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Commit(DWORD) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Revert() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Stat(STATSTG*, DWORD) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Clone(IStream**) override { return E_NOTIMPL; }

  std::vector<BYTE> bytes;

 private:
  std::size_t m_position = 0;
};

class Settings : public CPersistStream {
 public:
  BYTE value = 0;
  DWORD version = 0;

 private:
  DWORD GetSoftwareVersion() override { return version; }
  HRESULT WriteToStream(IStream* stream) override { return WriteExact(stream, &value, 1); }
  HRESULT ReadFromStream(IStream* stream) override {
    BYTE read = 0;
    const HRESULT hr = ReadExact(stream, &read, 1);
    if (SUCCEEDED(hr)) value = read;
    return hr;
  }
};

std::vector<BYTE> Utf16(const std::string& text) {
  std::vector<BYTE> bytes;
  for (const char c : text) {
    bytes.push_back(static_cast<BYTE>(c));
    bytes.push_back(0);
  }
  return bytes;
}

TEST(PersistStream, HeaderIsTwelveWideCharacters) {
  Settings settings;
  settings.version = 305;
  settings.value = 0xAB;
  const auto stream = MakeCom<ByteStream>();
  ASSERT_EQ(settings.Save(stream.Get(), TRUE), S_OK);
  auto expected = Utf16("00000000305 ");
  expected.push_back(0xAB);
  EXPECT_EQ(stream->bytes, expected);
  ULARGE_INTEGER size{};
  EXPECT_EQ(settings.GetSizeMax(&size), S_OK);
  EXPECT_EQ(size.QuadPart, 24u);
}

TEST(PersistStream, LoadsWhatItSaved) {
  Settings settings;
  settings.value = 5;
  const auto stream = MakeCom<ByteStream>();
  ASSERT_EQ(settings.Save(stream.Get(), TRUE), S_OK);
  Settings other;
  ASSERT_EQ(other.Load(stream.Get()), S_OK);
  EXPECT_EQ(other.value, 5);
}

TEST(PersistStream, DirtyUntilSavedWithClearing) {
  Settings settings;
  EXPECT_EQ(settings.IsDirty(), S_FALSE);
  settings.SetDirty(true);
  const auto stream = MakeCom<ByteStream>();
  settings.Save(stream.Get(), FALSE);
  EXPECT_EQ(settings.IsDirty(), S_OK);
  settings.Save(stream.Get(), TRUE);
  EXPECT_EQ(settings.IsDirty(), S_FALSE);
}

TEST(PersistStream, DamagedStreamsChangeNothing) {
  const auto with = [](std::vector<BYTE> bytes, BYTE value) {
    bytes.push_back(value);
    return bytes;
  };
  auto shortHeader = Utf16("0000000000");
  auto noValue = Utf16("00000000000 ");
  for (const auto& bytes :
       {std::vector<BYTE>{}, shortHeader, noValue, with(Utf16("00000000001 "), 9), with(Utf16("0000000000x "), 9),
        with(Utf16("000000000000"), 9), with(Utf16("99999999999 "), 9)}) {
    Settings settings;
    settings.value = 3;
    settings.SetDirty(true);
    EXPECT_TRUE(FAILED(settings.Load(MakeCom<ByteStream>(bytes).Get())));
    EXPECT_EQ(settings.value, 3);
    EXPECT_EQ(settings.IsDirty(), S_OK);
  }
}

}  // namespace
}  // namespace tarvex::test
