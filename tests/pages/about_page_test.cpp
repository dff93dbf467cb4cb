// The about page: texts, version and images.
#include <gtest/gtest.h>

#include "include/tarvex/class_ids.h"
#include "tests/pages/page_frame.h"
#include "tests/pages/page_picture.h"
#include "tests/support/splitter_module.h"

namespace tarvex::test {
namespace {

RECT RectOf(const PageFrame& frame, int id) {
  RECT rect{};
  GetWindowRect(frame.Control(id), &rect);
  MapWindowPoints(nullptr, frame.Dialog(), reinterpret_cast<POINT*>(&rect), 2);
  return rect;
}

TEST(AboutPage, ShowsTheTitleTheVersionAndTwoImages) {
  {
    const ComPtr<IBaseFilter> splitter = CreateSplitter();
    PageFrame frame(CLSID_MatroskaAboutPage);
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
  PageFrame frame(CLSID_MatroskaAboutPage);
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

int WidthOf(HICON icon) {
  ICONINFO info{};
  BITMAP bitmap{};
  if (!GetIconInfo(icon, &info)) return 0;
  GetObjectW(info.hbmColor != nullptr ? info.hbmColor : info.hbmMask, sizeof bitmap, &bitmap);
  if (info.hbmColor != nullptr) DeleteObject(info.hbmColor);
  DeleteObject(info.hbmMask);
  return bitmap.bmWidth;
}

// The controls have their new sizes before the dialog learns of the other density.
TEST(AboutPage, OnADenserMonitorItsImagesAreLarger) {
  const ComPtr<IBaseFilter> splitter = CreateSplitter();
  PageFrame frame(CLSID_MatroskaAboutPage);
  ASSERT_EQ(frame.Open(splitter.Get()), S_OK);
  for (const int id : {1003, 1005}) {
    HWND image = frame.Control(id);
    const RECT rect = RectOf(frame, id);
    const auto icon = [image] {
      // NOLINTNEXTLINE(performance-no-int-to-ptr): messages answer with handles as integers
      return reinterpret_cast<HICON>(SendMessageW(image, STM_GETICON, 0, 0));
    };
    const int before = WidthOf(icon());
    SetWindowPos(image, nullptr, 0, 0, (rect.right - rect.left) * 2, (rect.bottom - rect.top) * 2,
                 SWP_NOMOVE | SWP_NOZORDER);
    frame.ChangeDensity();
    EXPECT_NEAR(WidthOf(icon()), before * 2, 8) << "images come in steps of eight pixels";
  }
}

}  // namespace
}  // namespace tarvex::test
