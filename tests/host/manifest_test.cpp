// The manifest of mkvhost, as the system reads it.
#include <gtest/gtest.h>

#include "framework/text_conversion.h"

namespace tarvex::host::test {
namespace {

WideString Setting(HANDLE context, const wchar_t* name) {
  WideString text(64, L'\0');
  SIZE_T size = 0;
  const wchar_t* const space = L"http://schemas.microsoft.com/SMI/2016/WindowsSettings";
  return QueryActCtxSettingsW(0, context, space, name, text.data(), text.size(), &size) ? text.c_str() : L"(none)";
}

TEST(HostManifest, AsksForNoRightsAndKnowsLongPathsAndDensities) {
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
  ReleaseActCtx(context);
}

}  // namespace
}  // namespace tarvex::host::test
