// The module registered by regsvr32, in the registry of the Wine prefix or the test machine: which entries there are,
// and that they go again. Every test ends with the module registered, as ./test found it. That players find the
// filter through these entries is what the tests of playback and of the packages show.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <iostream>
#include <memory>
#include <set>
#include <type_traits>

#include "framework/text_conversion.h"
#include "host/system/file_handle.h"
#include "tests/support/source_dir.h"

namespace tarvex::test {
namespace {

using Lines = std::set<std::string>;

const std::string kClasses = "[HKEY_LOCAL_MACHINE\\Software\\Classes\\";

// All that an installation may leave, one line for each key and each value.
Lines WantedLines() {
  std::ifstream file(SourceDir() + "/tests/packages/entries.txt");
  Lines lines;
  for (std::string line; std::getline(file, line);) lines.insert(line);
  return lines;
}

std::string ValueText(DWORD type, const std::wstring& bytes, DWORD size) {
  if (type == REG_SZ) {
    const std::string text = Utf8FromWide(bytes.c_str());
    return text.ends_with("\\tarvex.dll") ? "\"tarvex.dll\"" : "\"" + text + "\"";
  }
  std::string text = type == REG_BINARY ? "hex" : "type " + std::to_string(type);
  const auto* byte = reinterpret_cast<const BYTE*>(bytes.data());
  for (DWORD at = 0; at < size; ++at) {
    std::array<char, 4> digits{};
    std::snprintf(digits.data(), digits.size(), "%c%02x", at == 0 ? ':' : ',', byte[at]);
    text += digits.data();
  }
  return text;
}

// The lines of this key and of the keys below it.
void AddLines(Lines& lines, const std::string& name) {
  HKEY opened = nullptr;
  RegOpenKeyExW(HKEY_CLASSES_ROOT, WideFromUtf8(name).c_str(), 0, KEY_READ, &opened);
  if (opened == nullptr) return;
  const std::unique_ptr<std::remove_pointer_t<HKEY>, decltype(&RegCloseKey)> key(opened, &RegCloseKey);
  const std::string line = kClasses + name + "]";
  lines.insert(line);
  for (DWORD index = 0;; ++index) {
    std::wstring text(256, L'\0');
    std::wstring bytes(2048, L'\0');
    DWORD length = 256;
    DWORD size = 4096;
    DWORD type = 0;
    if (RegEnumValueW(opened, index, text.data(), &length, nullptr, &type, reinterpret_cast<BYTE*>(bytes.data()),
                      &size) != ERROR_SUCCESS) {
      break;
    }
    const std::string value = length == 0 ? "@" : "\"" + Utf8FromWide(text.c_str()) + "\"";
    lines.insert(line + " " + value + "=" + ValueText(type, bytes, size));
  }
  for (DWORD index = 0;; ++index) {
    std::array<wchar_t, 256> text{};
    if (RegEnumKeyW(opened, index, text.data(), text.size()) != ERROR_SUCCESS) return;
    AddLines(lines, name + "\\" + Utf8FromWide(text.data()));
  }
}

// What there is of the wanted keys, and below them.
Lines FoundLines() {
  Lines lines;
  for (const std::string& line : WantedLines()) {
    if (line.ends_with("]")) AddLines(lines, line.substr(kClasses.size(), line.size() - kClasses.size() - 1));
  }
  return lines;
}

bool Exists(const std::string& name) {
  Lines lines;
  AddLines(lines, name);
  return !lines.empty();
}

void MakeForeignEntry(const std::string& name) {
  const WideString reader = L"{E436EBB5-524F-11CE-9F53-0020AF0BA770}";
  RegSetKeyValueW(HKEY_CLASSES_ROOT, WideFromUtf8(name).c_str(), L"Source Filter", REG_SZ, reader.c_str(), 78);
  EXPECT_TRUE(Exists(name));
}

/// Wine cannot start a program once in thousands of times, and nothing of it has run then. ./test counts these lines.
PROCESS_INFORMATION Start(WideString command) {
  constexpr int kMostStarts = 3;
  PROCESS_INFORMATION created{};
  for (int attempt = 1; attempt <= kMostStarts; ++attempt) {
    STARTUPINFOW start{};
    start.cb = sizeof start;
    if (CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start, &created)) break;
    std::cerr << "started again: regsvr32 does not start: " << GetLastError() << "\n";
  }
  return created;
}

class Registration : public testing::Test {
 protected:
  void TearDown() override { Register(L"/s"); }
  static void Register(const wchar_t* option) {
    constexpr DWORD kPatience = 60000;  // milliseconds
    const PROCESS_INFORMATION created = Start(L"regsvr32 /s \"" + WideFromUtf8(TARVEX_MODULE_PATH) + L"\" " + option);
    const host::FileHandle process(created.hProcess);
    const host::FileHandle thread(created.hThread);
    ASSERT_EQ(WaitForSingleObject(process.Get(), kPatience), WAIT_OBJECT_0);
    DWORD code = 1;
    GetExitCodeProcess(process.Get(), &code);
    ASSERT_EQ(code, 0U);
  }
};

TEST_F(Registration, WritesItsEntriesOnceAndRemovesThem) {
  Register(L"/u");
  EXPECT_EQ(FoundLines(), Lines());
  Register(L"/s");
  EXPECT_EQ(FoundLines(), WantedLines());
  Register(L"/s");
  EXPECT_EQ(FoundLines(), WantedLines());
}

// Whatever is below an extension or has no major type is asked before the filter is.
TEST_F(Registration, RemovesEntriesThatWouldHideItAndRestoresNone) {
  std::vector<std::string> hiding = {
      "Media Type\\{00000000-0000-0000-0000-000000000000}\\{1AC0BEBD-4D2B-45AD-BCEB-F2C41C5E3788}"};
  const std::string others = "Media Type\\Extensions\\.tarvextest";
  for (const char* extension : {".mkv", ".mka", ".mks", ".webm"}) {
    hiding.push_back(std::string("Media Type\\Extensions\\") + extension);
  }
  for (const std::string& name : hiding) MakeForeignEntry(name);
  MakeForeignEntry(others);
  Register(L"/s");
  for (const std::string& name : hiding) EXPECT_FALSE(Exists(name)) << name;
  Register(L"/u");
  for (const std::string& name : hiding) EXPECT_FALSE(Exists(name)) << name;
  EXPECT_TRUE(Exists(others)) << "the entries of others stay";
  RegDeleteTreeW(HKEY_CLASSES_ROOT, WideFromUtf8(others).c_str());
}

}  // namespace
}  // namespace tarvex::test
