// The manifest of mkvhost, as the system reads it.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>

#include "framework/text_conversion.h"
#include "tests/host/host_process.h"

namespace tarvex::host::test {
namespace {

class HostManifest : public testing::Test {
 protected:
  void SetUp() override {
    const WideString program = WideFromUtf8(TARVEX_HOST_PATH);
    ACTCTXW wanted{};
    wanted.cbSize = sizeof wanted;
    wanted.dwFlags = ACTCTX_FLAG_RESOURCE_NAME_VALID;
    wanted.lpSource = program.c_str();
    wanted.lpResourceName = MAKEINTRESOURCEW(1);
    m_context = CreateActCtxW(&wanted);
    ASSERT_NE(m_context, INVALID_HANDLE_VALUE) << GetLastError();
  }
  void TearDown() override { ReleaseActCtx(m_context); }

  WideString Setting(const wchar_t* year, const wchar_t* name) const {
    const WideString space = WideString(L"http://schemas.microsoft.com/SMI/") + year + L"/WindowsSettings";
    std::array<wchar_t, 64> text{};
    SIZE_T size = 0;
    if (!QueryActCtxSettingsW(0, m_context, space.c_str(), name, text.data(), text.size(), &size)) return L"(none)";
    return text.data();
  }

  HANDLE m_context = INVALID_HANDLE_VALUE;
};

TEST_F(HostManifest, AsksForNoRightsAndKnowsLongPathsAndDensities) {
  ACTIVATION_CONTEXT_RUN_LEVEL_INFORMATION level{};
  ASSERT_TRUE(
      QueryActCtxW(0, m_context, nullptr, RunlevelInformationInActivationContext, &level, sizeof level, nullptr));
  EXPECT_EQ(level.RunLevel, ACTCTX_RUN_LEVEL_AS_INVOKER);
  EXPECT_EQ(level.UiAccess, 0U);
  EXPECT_EQ(Setting(L"2016", L"longPathAware"), L"true");
  EXPECT_EQ(Setting(L"2016", L"dpiAwareness"), L"PerMonitorV2");
}

// Published identifiers of Windows 7, 8, 8.1, and 10, which is 11's as well. Elements have grown with Windows
// 10, so they are looked for wherever they lie.
TEST_F(HostManifest, NamesTheVersionsOfWindows) {
  constexpr GUID kVersions[] = {{0x35138B9A, 0x5D96, 0x4FBD, {0x8E, 0x2D, 0xA2, 0x44, 0x02, 0x25, 0xF9, 0x3A}},
                                {0x4A2F28E3, 0x53B9, 0x4441, {0xBA, 0x9C, 0xD6, 0x9D, 0x4A, 0x4A, 0x6E, 0x38}},
                                {0x1F676C76, 0x80E1, 0x4239, {0x95, 0xBB, 0x83, 0xD0, 0xF6, 0xD0, 0xDA, 0x78}},
                                {0x8E0F7A12, 0xBFB3, 0x4FE8, {0xB9, 0xA5, 0x48, 0xFD, 0x50, 0xA1, 0x5A, 0x9A}}};
  std::string room(512, '\0');
  ASSERT_TRUE(QueryActCtxW(0, m_context, nullptr, CompatibilityInformationInActivationContext, room.data(), room.size(),
                           nullptr));
  DWORD count = 0;
  std::memcpy(&count, room.data(), sizeof count);
  EXPECT_EQ(count, std::size(kVersions));
  for (const GUID& version : kVersions) {
    EXPECT_NE(room.find(std::string_view{reinterpret_cast<const char*>(&version), sizeof version}), std::string::npos);
  }
}

}  // namespace
}  // namespace tarvex::host::test
