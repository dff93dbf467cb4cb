// The module registered for real, in the registry of the Wine prefix or the test machine: which entries
// there are, that they go again, and that the graph builder finds the filter through them. Every test
// ends with the module registered, as ./test found it.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "framework/com_ptr.h"
#include "include/tarvex/class_ids.h"
#include "tests/registration/registry_view.h"
#include "tests/support/source_dir.h"
#include "tests/support/test_system.h"

namespace tarvex::test {

namespace {

const std::wstring kAsyncReader = L"{E436EBB5-524F-11CE-9F53-0020AF0BA770}";
const std::wstring kMatroskaStream = L"{1AC0BEBD-4D2B-45AD-BCEB-F2C41C5E3788}";
const std::wstring kStreamKey = L"Media Type\\{E436EB83-524F-11CE-9F53-0020AF0BA770}\\" + kMatroskaStream;
const std::wstring kNullKey = L"Media Type\\{00000000-0000-0000-0000-000000000000}\\" + kMatroskaStream;
constexpr std::array kExtensions = {L".mkv", L".mka", L".mks", L".webm"};

std::wstring Text(const GUID& guid) {
  std::array<wchar_t, 39> text{};
  StringFromGUID2(guid, text.data(), static_cast<int>(text.size()));
  return text.data();
}

std::wstring ClassKey(const GUID& clsid = CLSID_MatroskaSplitter) { return L"CLSID\\" + Text(clsid); }

// The category of all DirectShow filters.
std::wstring InstanceKey() {
  return L"CLSID\\{083863F1-70DE-11D0-BD40-00A0C911CE86}\\Instance\\" + Text(CLSID_MatroskaSplitter);
}

std::wstring ExtensionKey(const wchar_t* extension) { return std::wstring(L"Media Type\\Extensions\\") + extension; }

struct LibraryDeleter {
  void operator()(HMODULE library) const noexcept { FreeLibrary(library); }
};

class Registration : public ::testing::Test {
 protected:
  void SetUp() override {
    m_module.reset(LoadLibraryA(TARVEX_MODULE_PATH));
    ASSERT_TRUE(m_module);
  }
  void TearDown() override { EXPECT_EQ(Register(), S_OK); }

  HRESULT Register() { return Call("DllRegisterServer"); }
  HRESULT Unregister() { return Call("DllUnregisterServer"); }

 private:
  HRESULT Call(const char* name) {
    using Function = HRESULT(STDAPICALLTYPE*)();
    // By way of a function type without arguments, which may become any other.
    const auto function =
        reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(m_module.get(), name)));
    return function == nullptr ? E_NOTIMPL : function();
  }

  std::unique_ptr<std::remove_pointer_t<HMODULE>, LibraryDeleter> m_module;
};

void ExpectStreamType() {
  EXPECT_EQ(ValueCount(kStreamKey), 2U);
  EXPECT_EQ(TextValue(kStreamKey, L"0"), L"0,4,,1A45DFA3");
  EXPECT_EQ(TextValue(kStreamKey, L"Source Filter"), kAsyncReader);
}

void ExpectFilter() {
  EXPECT_EQ(TextValue(ClassKey(), L""), L"Tarvex Matroska Splitter");
  EXPECT_EQ(TextValue(ClassKey() + L"\\InprocServer32", L"ThreadingModel"), L"Both");
  EXPECT_TRUE(TextValue(ClassKey() + L"\\InprocServer32", L"").value_or(std::wstring()).ends_with(L"tarvex.dll"));
  EXPECT_EQ(TextValue(InstanceKey(), L"FriendlyName"), L"Tarvex Matroska Splitter");
  EXPECT_EQ(TextValue(InstanceKey(), L"CLSID"), Text(CLSID_MatroskaSplitter));
  EXPECT_EQ(TextValue(ClassKey(CLSID_MatroskaSettingsPage), L""), L"MKV Splitter property page");
  EXPECT_EQ(TextValue(ClassKey(CLSID_MatroskaAboutPage), L""), L"MKV Splitter about page");
}

// The published form begins with a version and the merit.
std::uint32_t RegisteredMerit() {
  const std::vector<std::uint8_t> data = BytesValue(InstanceKey(), L"FilterData");
  std::uint32_t merit = 0;
  if (data.size() >= 8) std::memcpy(&merit, data.data() + 4, sizeof merit);
  return merit;
}

std::vector<std::wstring> ClassesIn(IGraphBuilder* graph) {
  std::vector<std::wstring> classes;
  ComPtr<IEnumFilters> filters;
  if (FAILED(graph->EnumFilters(filters.Put()))) return classes;
  ComPtr<IBaseFilter> filter;
  while (filters->Next(1, filter.Put(), nullptr) == S_OK) {
    CLSID clsid{};
    if (SUCCEEDED(filter->GetClassID(&clsid))) classes.push_back(Text(clsid));
  }
  return classes;
}

bool Holds(const std::vector<std::wstring>& classes, const std::wstring& wanted) {
  return std::find(classes.begin(), classes.end(), wanted) != classes.end();
}

}  // namespace

TEST_F(Registration, WritesTheStreamTypeAndTheFilter) {
  ASSERT_EQ(Unregister(), S_OK);
  ASSERT_EQ(Register(), S_OK);
  ExpectStreamType();
  ExpectFilter();
  EXPECT_EQ(RegisteredMerit(), 0x00600000U);
}

TEST_F(Registration, RemovesEntriesThatWouldHideIt) {
  MakeKey(kNullKey, L"Source Filter", L"{00000000-0000-0000-0000-000000000001}");
  for (const wchar_t* extension : kExtensions) MakeKey(ExtensionKey(extension), L"Source Filter", kAsyncReader);
  MakeKey(ExtensionKey(L".tarvextest"), L"Source Filter", kAsyncReader);
  ASSERT_EQ(Register(), S_OK);
  EXPECT_FALSE(KeyExists(kNullKey));
  for (const wchar_t* extension : kExtensions) EXPECT_FALSE(KeyExists(ExtensionKey(extension)));
  EXPECT_TRUE(KeyExists(ExtensionKey(L".tarvextest"))) << "the entries of others stay";
  DeleteKey(ExtensionKey(L".tarvextest"));
}

TEST_F(Registration, TwiceLeavesOneSetOfEntries) {
  ASSERT_EQ(Register(), S_OK);
  ASSERT_EQ(Register(), S_OK);
  ExpectStreamType();
  ExpectFilter();
}

TEST_F(Registration, UnregisteringRemovesWhatWasWrittenAndRestoresNothing) {
  MakeKey(ExtensionKey(L".mkv"), L"Source Filter", kAsyncReader);
  ASSERT_EQ(Register(), S_OK);
  ASSERT_EQ(Unregister(), S_OK);
  EXPECT_FALSE(KeyExists(kStreamKey));
  for (const GUID& clsid : {CLSID_MatroskaSplitter, CLSID_MatroskaSettingsPage, CLSID_MatroskaAboutPage}) {
    EXPECT_FALSE(KeyExists(ClassKey(clsid)));
  }
  EXPECT_FALSE(KeyExists(InstanceKey()));
  EXPECT_FALSE(KeyExists(ExtensionKey(L".mkv")));
}

TEST_F(Registration, RenderFileChoosesTheReaderAndTheSplitterWhateverTheExtension) {
  ASSERT_EQ(Register(), S_OK);
  for (const wchar_t* extension : kExtensions) {
    const std::filesystem::path file = std::wstring(L"tarvex-render-test") + extension;
    std::filesystem::copy_file(std::filesystem::path(SourceDir() + "/tests/data/sample.mkv"), file,
                               std::filesystem::copy_options::overwrite_existing);
    {
      const ComPtr<IGraphBuilder> graph = CreateFilterGraph();
      // The subtitles find no renderer, which makes it a partial success.
      const HRESULT result = graph->RenderFile(std::filesystem::absolute(file).c_str(), nullptr);
      EXPECT_TRUE(SUCCEEDED(result)) << std::hex << result;
      const std::vector<std::wstring> classes = ClassesIn(graph.Get());
      EXPECT_TRUE(Holds(classes, kAsyncReader));
      EXPECT_TRUE(Holds(classes, Text(CLSID_MatroskaSplitter)));
    }
    std::filesystem::remove(file);
  }
}

}  // namespace tarvex::test
