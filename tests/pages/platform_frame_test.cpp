// Both pages in the platform's own property frame, as mkvhost opens it from the filter's list of pages.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include "tests/pages/page_frame.h"
#include "tests/support/patience.h"
#include "tests/support/source_dir.h"
#include "tests/support/test_system.h"

// After windows.h, which it depends on.
#include <commctrl.h>

namespace tarvex::test {
namespace {

// A visible control with this number, in whichever page it is: a dialog in one of the frame's.
HWND FindControl(HWND frame, int id) {
  HWND sheet = nullptr;
  while ((sheet = FindWindowExW(frame, sheet, L"#32770", nullptr)) != nullptr) {
    HWND control = GetDlgItem(FindWindowExW(sheet, nullptr, L"#32770", nullptr), id);
    if (IsWindowVisible(control)) return control;
  }
  return nullptr;
}

LONG CentreOf(HWND window) {
  RECT rect{};
  GetWindowRect(window, &rect);
  return (rect.left + rect.right) / 2;
}

// Of whichever process: a window with this in its title and a page in it.
HWND FindFrame(const wchar_t* title) {
  HWND frame = nullptr;
  while ((frame = FindWindowExW(nullptr, frame, nullptr, nullptr)) != nullptr) {
    if (TextOf(frame).find(title) != std::wstring::npos && FindControl(frame, 1004) != nullptr) break;
  }
  return frame;
}

TEST(PlatformFrame, OfTheHostShowsBothPages) {
  GetDesktopWindow();  // starts Wine's desktop, which would keep the host's pipe open if it came with the host
  const std::string module = " --module " + SystemPath(TARVEX_MODULE_PATH);
  const std::string film = ' ' + SystemPath(SourceDir() + "/tests/data/sample.mkv");
  FILE* host = _popen((SystemPath(TARVEX_HOST_PATH) + " settings --annexb" + module + film + " 2>&1").c_str(), "rt");
  ASSERT_NE(host, nullptr);
  HWND frame = nullptr;
  EXPECT_TRUE(Eventually([&] { return (frame = FindFrame(L"Tarvex Matroska Splitter")) != nullptr; }));
  const auto control = [&frame](int id) { return FindControl(frame, id); };
  EXPECT_EQ(SendMessageW(control(1006), LB_GETCOUNT, 0, 0), 2);
  SendMessageW(frame, PSM_SETCURSEL, 1, 0);
  EXPECT_TRUE(Eventually([&] { return control(1002) != nullptr; })) << "the about page";
  EXPECT_EQ(TextOf(control(1001)), L"Tarvex Matroska Splitter");
  const auto logoIsAboveTitle = [&] { return std::abs(CentreOf(control(1003)) - CentreOf(control(1001))) <= 1; };
  EXPECT_TRUE(Eventually(logoIsAboveTitle)) << "the page is wider than the frame shows";
  PostMessageW(frame, WM_COMMAND, IDOK, 0);
  std::string said(200, '\0');
  said.resize(std::fread(said.data(), 1, said.size(), host));
  EXPECT_EQ(_pclose(host), 0);
  EXPECT_EQ(said, "Annex B output: on\nseparate pins: off\n");
}

}  // namespace
}  // namespace tarvex::test
