// The about page: texts, version and images.
#include <gtest/gtest.h>

#include "include/tarvex/class_ids.h"
#include "tests/pages/page_frame.h"
#include "tests/pages/page_picture.h"
#include "tests/support/splitter_module.h"

namespace tarvex::test {
namespace {

RECT RectOf(const CPageFrame& frame, int id) {
  RECT rect{};
  GetWindowRect(frame.Control(id), &rect);
  MapWindowPoints(nullptr, frame.Dialog(), reinterpret_cast<POINT*>(&rect), 2);
  return rect;
}

TEST(AboutPage, ShowsTheTitleTheVersionAndTwoImages) {
  {
    const ComPtr<IBaseFilter> splitter = CreateSplitter();
    CPageFrame frame(CLSID_MatroskaAboutPage);
    ASSERT_EQ(frame.Open(splitter.Get()), S_OK);
    EXPECT_EQ(TextOf(frame.Window()), L"About");
    EXPECT_EQ(TextOf(frame.Control(1001)), L"Tarvex Matroska Splitter");
    EXPECT_EQ(TextOf(frame.Control(1002)), L"Version " TARVEX_FILE_VERSION);
    for (const int image : {1003, 1005}) EXPECT_NE(SendMessageW(frame.Control(image), STM_GETICON, 0, 0), 0);
    frame.Paint();
    KeepPicture(WindowPicture(frame.Window()), "about-page");
  }
  EXPECT_TRUE(ModuleBecomesIdle());
}

TEST(AboutPage, KeepsTheLogoCentred) {
  const ComPtr<IBaseFilter> splitter = CreateSplitter();
  CPageFrame frame(CLSID_MatroskaAboutPage);
  ASSERT_EQ(frame.Open(splitter.Get()), S_OK);
  const RECT before = RectOf(frame, 1003);
  for (const int width : {700, 401}) {
    frame.Resize(width, 400);
    const RECT after = RectOf(frame, 1003);
    EXPECT_EQ(after.left, (width - (before.right - before.left)) / 2);
    EXPECT_EQ(after.top, before.top);
    EXPECT_EQ(after.right - after.left, before.right - before.left);
    EXPECT_EQ(after.bottom - after.top, before.bottom - before.top);
  }
}

}  // namespace
}  // namespace tarvex::test
