// The manifest of mkvhost, as the system reads it.
#include <gtest/gtest.h>

#include <cstring>
#include <string_view>

#include "framework/text_conversion.h"

namespace tarvex::host::test {
namespace {

WideString Setting(HANDLE context, const wchar_t* name) {
  WideString text(64, L'\0');
  SIZE_T size = 0;
  const wchar_t* const space = L"http://schemas.microsoft.com/SMI/2016/WindowsSettings";
  return QueryActCtxSettingsW(0, context, space, name, text.data(), text.size(), &size) ? text.c_str() : L"(none)";
}

// Published identifiers of Windows 7, 8, 8.1, and 10, which is 11's as well. Elements have grown with Windows
// 10, so they are looked for wherever they lie.
TEST(HostManifest, AsksForNoRightsAndKnowsLongPathsDensitiesAndTheVersionsOfWindows) {
  const WideString program = WideFromUtf8(TARVEX_HOST_PATH);
  ACTCTXW wanted{};
  wanted.cbSize = sizeof wanted;
  wanted.dwFlags = ACTCTX_FLAG_RESOURCE_NAME_VALID;
  wanted.lpSource = program.c_str();
  wanted.lpResourceName = MAKEINTRESOURCEW(1);
  HANDLE context = CreateActCtxW(&wanted);
  ASSERT_NE(context, INVALID_HANDLE_VALUE) << GetLastError();
  ACTIVATION_CONTEXT_RUN_LEVEL_INFORMATION level{};
  EXPECT_TRUE(QueryActCtxW(0, context, nullptr, RunlevelInformationInActivationContext, &level, sizeof level, nullptr));
  EXPECT_EQ(level.RunLevel, ACTCTX_RUN_LEVEL_AS_INVOKER);
  EXPECT_EQ(level.UiAccess, 0U);
  EXPECT_EQ(Setting(context, L"longPathAware"), L"true");
  EXPECT_EQ(Setting(context, L"dpiAwareness"), L"PerMonitorV2");
  std::string room(512, '\0');
  EXPECT_TRUE(QueryActCtxW(0, context, nullptr, CompatibilityInformationInActivationContext, room.data(), room.size(),
                           nullptr));
  ReleaseActCtx(context);
  EXPECT_EQ(room[0], 4) << "versions";
  for (const wchar_t* text : {L"{35138B9A-5D96-4FBD-8E2D-A2440225F93A}", L"{4A2F28E3-53B9-4441-BA9C-D69D4A4A6E38}",
                              L"{1F676C76-80E1-4239-95BB-83D0F6D0DA78}", L"{8E0F7A12-BFB3-4FE8-B9A5-48FD50A15A9A}"}) {
    GUID version{};
    EXPECT_EQ(IIDFromString(text, &version), S_OK);
    EXPECT_NE(room.find(std::string_view{reinterpret_cast<const char*>(&version), sizeof version}), std::string::npos);
  }
}

}  // namespace
}  // namespace tarvex::host::test
