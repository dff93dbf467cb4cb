// The module registered and removed, in the registry of the Wine prefix or the test machine. That its entries are just
// those of tests/packages/entries.txt and that nothing is left, the tests of the packages show; that players find the
// filter through them, those of playback. Ends with the module registered, as ./test found it.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "framework/text_conversion.h"

namespace tarvex::test {
namespace {

using Module = std::unique_ptr<std::remove_pointer_t<HMODULE>, decltype(&FreeLibrary)>;

const std::wstring kOurs =
    L"Media Type\\{e436eb83-524f-11ce-9f53-0020af0ba770}\\{1AC0BEBD-4D2B-45AD-BCEB-F2C41C5E3788}";

bool HasSource(const std::wstring& key) {
  return RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), L"Source Filter", RRF_RT_REG_SZ, nullptr, nullptr, nullptr) ==
         ERROR_SUCCESS;
}

void MakeForeignEntry(const std::wstring& key) {
  const std::wstring reader = L"{E436EBB5-524F-11CE-9F53-0020AF0BA770}";
  RegSetKeyValueW(HKEY_CLASSES_ROOT, key.c_str(), L"Source Filter", REG_SZ, reader.c_str(), 78);
  EXPECT_TRUE(HasSource(key));
}

HRESULT Call(const Module& module, const char* name) {
  const auto function =
      reinterpret_cast<HRESULT(STDAPICALLTYPE*)()>(reinterpret_cast<void*>(GetProcAddress(module.get(), name)));
  return function == nullptr ? E_NOINTERFACE : function();
}

// Whatever is below an extension or has no major type is asked before the filter is.
TEST(Registration, RemovesEntriesThatWouldHideItAndRestoresNone) {
  const Module module(LoadLibraryW(WideFromUtf8(TARVEX_MODULE_PATH).c_str()), &FreeLibrary);
  ASSERT_TRUE(module);
  std::vector<std::wstring> hiding = {
      L"Media Type\\{00000000-0000-0000-0000-000000000000}\\{1AC0BEBD-4D2B-45AD-BCEB-F2C41C5E3788}"};
  for (const wchar_t* extension : {L".mkv", L".mka", L".mks", L".webm"}) {
    hiding.push_back(std::wstring(L"Media Type\\Extensions\\") + extension);
  }
  const std::wstring others = L"Media Type\\Extensions\\.tarvextest";
  for (const std::wstring& key : hiding) MakeForeignEntry(key);
  MakeForeignEntry(others);
  for (const char* step : {"DllRegisterServer", "DllRegisterServer", "DllUnregisterServer", "DllUnregisterServer"}) {
    EXPECT_EQ(Call(module, step), S_OK) << step;
    EXPECT_EQ(HasSource(kOurs), std::string_view(step) == "DllRegisterServer");
    for (const std::wstring& key : hiding) EXPECT_FALSE(HasSource(key));
  }
  EXPECT_TRUE(HasSource(others)) << "the entries of others stay";
  RegDeleteTreeW(HKEY_CLASSES_ROOT, others.c_str());
  EXPECT_EQ(Call(module, "DllRegisterServer"), S_OK);
}

}  // namespace
}  // namespace tarvex::test
