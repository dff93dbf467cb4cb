// The about page: texts, version and images.
#include <gtest/gtest.h>

#include <iostream>

#include "include/tarvex/class_ids.h"
#include "tests/pages/page_frame.h"
#include "tests/support/splitter_module.h"

namespace tarvex::test {
namespace {

constexpr int kLogo = 1003;
constexpr int kFile = 1005;

class AboutPage : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(m_frame.Open(m_splitter.Get()), S_OK); }

  int IconWidth(int id) const {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): messages answer with handles as integers
    const auto icon = reinterpret_cast<HICON>(SendMessageW(m_frame.Control(id), STM_GETICON, 0, 0));
    ICONINFO info{};
    BITMAP bitmap{};
    if (!GetIconInfo(icon, &info)) return 0;
    GetObjectW(info.hbmMask, sizeof bitmap, &bitmap);
    DeleteObject(info.hbmColor);
    DeleteObject(info.hbmMask);
    return bitmap.bmWidth;
  }

  ComPtr<IBaseFilter> m_splitter = CreateSplitter();
  PageFrame m_frame{CLSID_MatroskaAboutPage};
};

// installed.sh compares the page's width at two densities.
TEST_F(AboutPage, ShowsTheTitleTheVersionAndTwoImages) {
  EXPECT_EQ(TextOf(m_frame.Window()), L"About");
  EXPECT_EQ(TextOf(m_frame.Control(1002)), L"Version " TARVEX_FILE_VERSION);
  ASSERT_EQ(m_frame.Page()->Deactivate(), S_OK);
  ASSERT_EQ(m_frame.Activate(), S_OK) << "on a second visit";
  std::cout << "about page " << m_frame.Width() << " wide\n";
  // Of a denser monitor the dialog learns when the controls have their new sizes.
  for (const int id : {kLogo, kFile}) {
    const int usual = IconWidth(id);
    ASSERT_GT(usual, 0);
    RECT rect{};
    GetWindowRect(m_frame.Control(id), &rect);
    SetWindowPos(m_frame.Control(id), nullptr, 0, 0, (rect.right - rect.left) * 2, (rect.bottom - rect.top) * 2,
                 SWP_NOMOVE | SWP_NOZORDER);
    m_frame.ChangeDensity();
    EXPECT_NEAR(IconWidth(id), usual * 2, 8) << "images come in steps of eight pixels";
  }
}

}  // namespace
}  // namespace tarvex::test
