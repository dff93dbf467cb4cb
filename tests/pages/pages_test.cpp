// The about page, and the settings page over a splitter that has the sample file open.
#include <iostream>

#include "filter/interface_ids.h"
#include "framework/thread.h"
#include "include/tarvex/class_ids.h"
#include "pages/chapter_line.h"
#include "pages/resource_ids.h"
#include "tests/pages/page_frame.h"
#include "tests/support/graph_test.h"
#include "tests/support/source_dir.h"

namespace tarvex::test {
namespace {

constexpr int kAnnexB = TARVEX_SETTINGS_ANNEX_B;
constexpr int kSeparatePins = TARVEX_SETTINGS_SEPARATE_PINS;
constexpr int kChapters = TARVEX_SETTINGS_CHAPTERS;
constexpr LONGLONG kStop = 40'000'000;  // which a jump leaves
constexpr std::size_t kCommon = 3;      // pins of the sample, one for each kind of its streams
constexpr std::size_t kSeparate = 4;    // and one for each stream
// {C1F400A4-3F08-11D3-9F0B-006008039E37}: the platform's renderer of nothing
constexpr GUID kNullRenderer = {0xC1F400A4, 0x3F08, 0x11D3, {0x9F, 0x0B, 0x00, 0x60, 0x08, 0x03, 0x9E, 0x37}};

int IconWidth(HWND control) {
  // NOLINTNEXTLINE(performance-no-int-to-ptr): messages answer with handles as integers
  const auto icon = reinterpret_cast<HICON>(SendMessageW(control, STM_GETICON, 0, 0));
  ICONINFO info{};
  BITMAP bitmap{};
  if (!GetIconInfo(icon, &info)) return 0;
  GetObjectW(info.hbmMask, sizeof bitmap, &bitmap);
  DeleteObject(info.hbmColor);
  DeleteObject(info.hbmMask);
  return bitmap.bmWidth;
}

// installed.sh compares the widths of both pages at two densities.
TEST(AboutPage, ShowsTheTitleTheVersionAndTwoImages) {
  const auto splitter = CreateSplitter();
  PageFrame frame(CLSID_MatroskaAboutPage);
  ASSERT_EQ(frame.Open(splitter.Get()), S_OK);
  EXPECT_EQ(TextOf(frame.Window()), L"About");
  EXPECT_EQ(TextOf(frame.Control(1002)), L"Version " TARVEX_FILE_VERSION);
  ASSERT_EQ(frame.Page()->Deactivate(), S_OK);
  ASSERT_EQ(frame.Activate(), S_OK) << "on a second visit";
  std::cout << "about page " << frame.Width() << " wide\n";
  // Of a denser monitor the dialog learns when the controls have their new sizes.
  for (const int id : {1003, 1005}) {
    HWND control = frame.Control(id);
    const int usual = IconWidth(control);
    ASSERT_GT(usual, 0);
    RECT rect{};
    GetWindowRect(control, &rect);
    SetWindowPos(control, nullptr, 0, 0, (rect.right - rect.left) * 2, (rect.bottom - rect.top) * 2,
                 SWP_NOMOVE | SWP_NOZORDER);
    frame.ChangeDensity();
    EXPECT_NEAR(IconWidth(control), usual * 2, 8) << "images come in steps of eight pixels";
  }
}

class SettingsPage : public GraphTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(Graph().Open(SourceDir() + "/tests/data/sample.mkv"), S_OK);
    ASSERT_EQ(m_frame->Open(Splitter()), S_OK);
  }
  void TearDown() override {
    m_frame.reset();
    GraphTest::TearDown();
  }

  void ExpectSettings(int annexB, std::size_t pins) {
    VARIANT value{};
    EXPECT_EQ(Ask<IModuleConfig>()->GetValue(&paramAnnexBOutput, &value), S_OK);
    EXPECT_EQ(value.boolVal, annexB);
    EXPECT_EQ(Graph().OutputPins().size(), pins);
  }

  LONGLONG Position() {
    LONGLONG position = -1;
    LONGLONG stop = -1;
    Output(0).Query<IMediaSeeking>()->GetPositions(&position, &stop);
    EXPECT_EQ(stop, kStop);
    return position;
  }

  std::optional<PageFrame> m_frame{CLSID_MatroskaSettingsPage};
};

TEST_F(SettingsPage, ShowsTheSettingsAndTheChapters) {
  EXPECT_EQ(TextOf(m_frame->Window()), L"Property");
  EXPECT_EQ(TextOf(m_frame->Control(kAnnexB)), L"Annex B output for H264/AVC");
  EXPECT_EQ(TextOf(m_frame->Control(kSeparatePins)), L"Make separate pins for all streams");
  EXPECT_EQ(LineOf(m_frame->Control(kChapters), 0), L"First half - (00:00:00 - 00:00:02)");
  EXPECT_EQ(LineOf(m_frame->Control(kChapters), 1), L"Second half - (00:00:02 - 00:00:05)");
  EXPECT_EQ(LineOf(m_frame->Control(kChapters), 2), L"(no such line)");
  EXPECT_EQ(ChapterLine(L"Later", 36'000'000'000, 359'999 * 10'000'000LL), L"Later - (01:00:00 - 99:59:59)");
  std::cout << "settings page " << m_frame->Width() << " wide\n";
}

TEST_F(SettingsPage, ClicksReachTheFilterWhenTheyAreApplied) {
  EXPECT_EQ(m_frame->Page()->IsPageDirty(), S_FALSE);
  EXPECT_FALSE(m_frame->IsChecked(kAnnexB) || m_frame->IsChecked(kSeparatePins));
  m_frame->Click(kAnnexB);
  m_frame->Click(kSeparatePins);
  EXPECT_EQ(m_frame->Page()->IsPageDirty(), S_OK);
  EXPECT_EQ(m_frame->Site().Dirty(), 2);
  ExpectSettings(0, kCommon);
  EXPECT_EQ(m_frame->Page()->Apply(), S_OK);
  EXPECT_EQ(m_frame->Page()->IsPageDirty(), S_FALSE);
  ExpectSettings(1, kSeparate);

  m_frame->Click(kSeparatePins);
  ASSERT_EQ(m_frame->Page()->Deactivate(), S_OK);
  EXPECT_EQ(m_frame->Page()->Apply(), S_OK) << "a frame may apply what it shows no more";
  ExpectSettings(1, kCommon);
  ASSERT_EQ(m_frame->Activate(), S_OK);
  EXPECT_EQ(m_frame->Activate(), E_UNEXPECTED) << "twice";
  EXPECT_TRUE(m_frame->IsChecked(kAnnexB));
  EXPECT_FALSE(m_frame->IsChecked(kSeparatePins));
  ASSERT_EQ(m_frame->Page()->SetObjects(0, nullptr), S_OK);
  EXPECT_EQ(m_frame->Page()->Apply(), E_UNEXPECTED) << "without an object";
}

TEST_F(SettingsPage, WhileItPlaysNothingIsChangedAndTheUserLearnsWhy) {
  ASSERT_EQ(Graph().ConnectSinks(SinkKind::kCounting), S_OK);
  ASSERT_GE(Graph().Pause(), S_OK);
  m_frame->Click(kAnnexB);
  m_frame->Click(kSeparatePins);
  std::wstring said;
  Thread user;  // reads the message and closes it
  ASSERT_EQ(user.Start([&said] {
    Eventually([&said] {
      HWND box = FindWindowW(L"#32770", L"Tarvex Matroska Splitter");
      said = TextOf(GetDlgItem(box, 0xFFFF));
      return !said.empty() && PostMessageW(box, WM_COMMAND, IDOK, 0);
    });
  }),
            S_OK);
  EXPECT_EQ(m_frame->Page()->Apply(), VFW_E_NOT_STOPPED);
  user.Join();
  EXPECT_EQ(said.substr(0, 20), L"Nothing was changed.");
  EXPECT_NE(said.find(L"only while playback is stopped"), std::wstring::npos);
  ExpectSettings(0, kCommon);
  EXPECT_GE(Graph().Stop(), S_OK);
  EXPECT_EQ(m_frame->Page()->Apply(), S_OK) << "it is still to be applied";
  ExpectSettings(1, kSeparate);
}

TEST_F(SettingsPage, ADoubleClickOrTheSpaceBarMovesThePosition) {
  // Without something behind a pin that can seek the platform's graph cannot.
  ComPtr<IBaseFilter> renderer;
  ASSERT_EQ(CoCreateInstance(kNullRenderer, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter, renderer.PutVoid()), S_OK);
  ASSERT_EQ(Graph().Graph()->AddFilter(renderer.Get(), L"Renderer"), S_OK);
  const ComPtr<IPin> rendering = AllPins(renderer.Get()).front();
  ASSERT_EQ(Graph().Graph()->ConnectDirect(Output(0).Get(), rendering.Get(), nullptr), S_OK);
  LONGLONG stop = kStop;
  EXPECT_EQ(Output(0).Query<IMediaSeeking>()->SetPositions(nullptr, AM_SEEKING_AbsolutePositioning, &stop, 0), S_OK);
  HWND list = m_frame->Control(kChapters);
  SendMessageW(m_frame->Dialog(), WM_COMMAND, MAKEWPARAM(kChapters, LBN_DBLCLK), 0);
  EXPECT_EQ(Position(), 0) << "no chapter is selected";
  RECT rect{};
  SendMessageW(list, LB_GETITEMRECT, 1, reinterpret_cast<LPARAM>(&rect));
  for (const UINT message : {WM_LBUTTONDOWN, WM_LBUTTONUP, WM_LBUTTONDBLCLK, WM_LBUTTONUP}) {
    SendMessageW(list, message, 0, MAKELPARAM(rect.left + 5, rect.top + 5));
  }
  EXPECT_EQ(Position(), 25'000'000);
  SendMessageW(list, WM_KEYDOWN, VK_UP, 0);
  EXPECT_EQ(Position(), 25'000'000);
  SendMessageW(list, WM_KEYDOWN, VK_SPACE, 0);
  EXPECT_EQ(Position(), 0);
  EXPECT_EQ(m_frame->Page()->IsPageDirty(), S_FALSE);
  rendering->Disconnect();
}

// What Windows does to a dialog that comes to a monitor of another density: its controls get other fonts and
// sizes, and then it learns of it.
TEST_F(SettingsPage, OnADenserMonitorTheListScrollsFurther) {
  HWND list = m_frame->Control(kChapters);
  const LRESULT before = SendMessageW(list, LB_GETHORIZONTALEXTENT, 0, 0);
  LOGFONTW size{};
  // NOLINTNEXTLINE(performance-no-int-to-ptr): messages answer with handles as integers
  GetObjectW(reinterpret_cast<HGDIOBJ>(SendMessageW(list, WM_GETFONT, 0, 0)), sizeof size, &size);
  size.lfHeight *= 2;
  HFONT font = CreateFontIndirectW(&size);
  SendMessageW(list, WM_SETFONT, reinterpret_cast<WPARAM>(font), FALSE);
  m_frame->ChangeDensity();
  EXPECT_GT(before, 0);
  EXPECT_GT(SendMessageW(list, LB_GETHORIZONTALEXTENT, 0, 0), before * 3 / 2);
  m_frame.reset();
  DeleteObject(font);
}

TEST_F(SettingsPage, TabGoesThroughThePageAndThenOut) {
  const auto press = [&](WPARAM key) {
    MSG message{GetFocus(), WM_KEYDOWN, key, 1, 0, {}};
    return m_frame->Page()->TranslateAccelerator(&message);
  };
  SetFocus(m_frame->Control(kAnnexB));
  EXPECT_EQ(press(VK_TAB), S_OK);
  EXPECT_EQ(GetFocus(), m_frame->Control(kSeparatePins));
  EXPECT_EQ(press(VK_RETURN), S_FALSE) << "the frame's OK button";
  EXPECT_EQ(press(VK_ESCAPE), S_FALSE);
  EXPECT_EQ(press(VK_TAB), S_OK);
  EXPECT_EQ(GetFocus(), m_frame->Control(kChapters));
  EXPECT_EQ(press(VK_TAB), S_FALSE) << "on to the frame's buttons";
}

}  // namespace
}  // namespace tarvex::test
