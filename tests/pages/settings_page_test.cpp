// The settings page over a real filter and, for what a filter does not do on demand, over a made-up one.
#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <optional>
#include <type_traits>
#include <vector>

#include "filter/interface_ids.h"
#include "framework/bstr.h"
#include "framework/thread.h"
#include "include/tarvex/chapter_entry.h"
#include "include/tarvex/class_ids.h"
#include "pages/resource_ids.h"
#include "tests/pages/page_frame.h"
#include "tests/pages/page_picture.h"
#include "tests/support/source_dir.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"
#include "tests/support/test_system.h"

namespace tarvex::test {
namespace {

constexpr int kAnnexB = TARVEX_SETTINGS_ANNEX_B;
constexpr int kSeparatePins = TARVEX_SETTINGS_SEPARATE_PINS;
constexpr int kChapters = TARVEX_SETTINGS_CHAPTERS;

/// A filter's settings as the page meets them, with the answers that a test wants.
class FakeConfig final : public UnknownImpl<IModuleConfig> {
 public:
  struct Chapter {
    const wchar_t* name;
    LONGLONG start;
    LONGLONG end;
  };
  struct Write {
    GUID parameter;
    VARIANT value;
  };

  FakeConfig() : UnknownImpl("FakeConfig", nullptr) {}

  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) override {
    if (iid == IID_IModuleConfig) return GiveInterface(static_cast<IModuleConfig*>(this), out);
    return CUnknown::NonDelegatingQueryInterface(iid, out);
  }
  HRESULT STDMETHODCALLTYPE GetClassID(CLSID* /*pClassID*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE IsDirty() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Load(IStream* /*pStm*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Save(IStream* /*pStm*/, BOOL /*fClearDirty*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetSizeMax(ULARGE_INTEGER* /*pcbSize*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reserved1() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reserved2() override { return E_NOTIMPL; }

  HRESULT STDMETHODCALLTYPE SetValue(const GUID* parameter, const VARIANT* value) override {
    writes.push_back({*parameter, *value});
    return writeResult;
  }
  HRESULT STDMETHODCALLTYPE GetValue(const GUID* parameter, VARIANT* value) override {
    if (*parameter != paramChapterList) {
      value->vt = VT_BOOL;
      value->boolVal = setting;
      return readResult;
    }
    if (value->vt == VT_UINT) {
      value->ulVal = static_cast<ULONG>(chapters.size());
      return S_OK;
    }
    auto* out = static_cast<ChapterEntry*>(value->byref);
    if (FAILED(chapterResult)) return chapterResult;
    for (const Chapter& chapter : chapters) *out++ = {BStr(chapter.name).Detach(), chapter.start, chapter.end};
    return S_OK;
  }

  std::vector<Chapter> chapters;
  std::vector<Write> writes;
  VARIANT_BOOL setting = 0;
  HRESULT readResult = S_OK;
  HRESULT chapterResult = S_OK;
  HRESULT writeResult = S_OK;
};

/// Reads the page's message, as a user would, and closes it. A box that never comes leaves the text empty.
class BoxReader {
 public:
  BoxReader() {
    EXPECT_EQ(m_thread.Start([this] { Read(); }), S_OK);
  }
  ~BoxReader() { m_thread.Join(); }
  BoxReader(const BoxReader&) = delete;
  BoxReader& operator=(const BoxReader&) = delete;

  const std::wstring& Text() {
    m_thread.Join();
    return m_text;
  }

 private:
  void Read() {
    for (DWORD waited = 0; waited < kPatience; waited += 20, SleepMilliseconds(20)) {
      HWND box = FindWindowW(L"#32770", L"Tarvex Matroska Splitter");
      HWND text = box != nullptr ? GetDlgItem(box, 0xFFFF) : nullptr;
      if (text == nullptr) continue;
      m_text = TextOf(text);
      PostMessageW(box, WM_COMMAND, IDOK, 0);
      return;
    }
  }

  std::wstring m_text;
  Thread m_thread;
};

class SettingsPage : public testing::Test {
 protected:
  void TearDown() override { EXPECT_TRUE(ModuleBecomesIdle()) << "something of the module is left"; }
  static void DoubleClick(const PageFrame& frame, int line) {
    HWND list = frame.Control(kChapters);
    RECT rect{};
    SendMessageW(list, LB_GETITEMRECT, static_cast<WPARAM>(line), reinterpret_cast<LPARAM>(&rect));
    const LPARAM point = MAKELPARAM(rect.left + 5, rect.top + 5);
    constexpr UINT kDoubleClick[] = {WM_LBUTTONDOWN, WM_LBUTTONUP, WM_LBUTTONDBLCLK, WM_LBUTTONUP};
    for (const UINT message : kDoubleClick) {
      SendMessageW(list, message, 0, point);
    }
  }
};

/// The page of a splitter that has the sample file open.
class OpenedSettingsPage : public SettingsPage {
 protected:
  void SetUp() override {
    ASSERT_EQ(m_graph->Open(SourceDir() + "/tests/data/sample.mkv"), S_OK);
    m_frame.emplace(CLSID_MatroskaSettingsPage);
    ASSERT_EQ(m_frame->Open(m_graph->Splitter()), S_OK);
  }
  void TearDown() override {
    m_frame.reset();
    m_graph.reset();
    SettingsPage::TearDown();
  }
  int Value(const GUID& parameter) {
    VARIANT value{};
    EXPECT_EQ(QueryFor<IModuleConfig>(m_graph->Splitter())->GetValue(&parameter, &value), S_OK);
    return value.boolVal;
  }

  // Connects the first output pin to the platform's renderer of nothing, through which a graph seeks and runs.
  ComPtr<IPin> RenderNothing() {
    // {C1F400A4-3F08-11D3-9F0B-006008039E37}
    constexpr GUID kNullRenderer = {0xC1F400A4, 0x3F08, 0x11D3, {0x9F, 0x0B, 0x00, 0x60, 0x08, 0x03, 0x9E, 0x37}};
    ComPtr<IBaseFilter> renderer;
    EXPECT_EQ(CoCreateInstance(kNullRenderer, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter, renderer.PutVoid()),
              S_OK);
    EXPECT_EQ(m_graph->Graph()->AddFilter(renderer.Get(), L"Renderer"), S_OK);
    ComPtr<IPin> input = AllPins(renderer.Get()).front();
    EXPECT_EQ(m_graph->Graph()->ConnectDirect(m_graph->OutputPins().front().Get(), input.Get(), nullptr), S_OK);
    return input;
  }

  std::optional<TestGraph> m_graph{std::in_place};
  std::optional<PageFrame> m_frame;
};

TEST_F(OpenedSettingsPage, ShowsTheSettingsAndTheChapters) {
  EXPECT_EQ(TextOf(m_frame->Window()), L"Property");
  EXPECT_EQ(TextOf(m_frame->Control(1004)), L"Annex B output for H264/AVC");
  EXPECT_EQ(TextOf(m_frame->Control(1008)), L"Make separate pins for all streams");
  EXPECT_NE(FindWindowExW(m_frame->Dialog(), nullptr, L"Button", L"Chapters"), nullptr);
  EXPECT_FALSE(m_frame->IsChecked(1004));
  EXPECT_FALSE(m_frame->IsChecked(1008));
  EXPECT_EQ(SendMessageW(m_frame->Control(1006), LB_GETCOUNT, 0, 0), 2);
  EXPECT_EQ(LineOf(m_frame->Control(1006), 0), L"First half - (00:00:00 - 00:00:02)");
  EXPECT_EQ(LineOf(m_frame->Control(1006), 1), L"Second half - (00:00:02 - 00:00:05)");
  EXPECT_EQ(m_frame->Page()->IsPageDirty(), S_FALSE);
  m_frame->Paint();
  KeepPicture(WindowPicture(m_frame->Window()), "settings-page");
}

TEST_F(OpenedSettingsPage, ClicksReachTheFilterWhenTheyAreApplied) {
  const std::size_t pins = m_graph->OutputPins().size();
  m_frame->Click(kAnnexB);
  EXPECT_EQ(m_frame->Page()->IsPageDirty(), S_OK);
  EXPECT_EQ(m_frame->Site().Dirty(), 1);
  m_frame->Click(kSeparatePins);
  EXPECT_EQ(m_frame->Site().Dirty(), 2);
  EXPECT_EQ(Value(paramAnnexBOutput), 0);
  EXPECT_EQ(m_frame->Page()->Apply(), S_OK);
  EXPECT_EQ(m_frame->Page()->IsPageDirty(), S_FALSE);
  EXPECT_EQ(Value(paramAnnexBOutput), 1);
  EXPECT_EQ(Value(paramSeparatePins), 1);
  EXPECT_GT(m_graph->OutputPins().size(), pins);

  ASSERT_EQ(m_frame->Page()->Deactivate(), S_OK);
  ASSERT_EQ(m_frame->Activate(), S_OK);
  EXPECT_TRUE(m_frame->IsChecked(kAnnexB));
  EXPECT_TRUE(m_frame->IsChecked(kSeparatePins));
}

TEST_F(OpenedSettingsPage, WhileItPlaysNothingIsChangedAndTheUserLearnsWhy) {
  const ComPtr<IPin> input = RenderNothing();
  const auto control = ComPtr<IGraphBuilder>(m_graph->Graph()).Query<IMediaControl>();
  ASSERT_GE(control->Pause(), S_OK);
  m_frame->Click(kAnnexB);
  m_frame->Click(kSeparatePins);
  BoxReader box;
  EXPECT_EQ(m_frame->Page()->Apply(), VFW_E_NOT_STOPPED);
  EXPECT_NE(box.Text().find(L"Nothing was changed."), std::wstring::npos) << "no box";
  EXPECT_NE(box.Text().find(L"only while playback is stopped"), std::wstring::npos);
  EXPECT_EQ(Value(paramAnnexBOutput), 0);
  EXPECT_EQ(Value(paramSeparatePins), 0);

  EXPECT_GE(control->Stop(), S_OK);
  EXPECT_EQ(m_frame->Page()->Apply(), S_OK) << "it is still to be applied";
  EXPECT_EQ(Value(paramAnnexBOutput), 1);
  EXPECT_EQ(Value(paramSeparatePins), 1);
}

TEST_F(OpenedSettingsPage, DoubleClickOnAChapterMovesThePosition) {
  const ComPtr<IPin> input = RenderNothing();
  const ComPtr<IPin> output = m_graph->OutputPins().front();

  DoubleClick(*m_frame, 1);
  LONGLONG position = 0;
  LONGLONG stop = 0;
  EXPECT_EQ(output.Query<IMediaSeeking>()->GetPositions(&position, &stop), S_OK);
  EXPECT_EQ(position, 25000000);
  EXPECT_EQ(m_frame->Page()->IsPageDirty(), S_FALSE);
  input->Disconnect();
  output->Disconnect();
}

TEST_F(SettingsPage, ChapterTimesAreWrittenInHoursMinutesAndSeconds) {
  const auto config = MakeCom<FakeConfig>();
  config->chapters = {{L"Intro", 0, 95000000}, {L"Later", 36000000000, 359999 * 10000000LL}, {L"", 0, 0}};
  PageFrame frame(CLSID_MatroskaSettingsPage);
  ASSERT_EQ(frame.Open(config.Get()), S_OK);
  EXPECT_EQ(LineOf(frame.Control(kChapters), 0), L"Intro - (00:00:00 - 00:00:09)");
  EXPECT_EQ(LineOf(frame.Control(kChapters), 1), L"Later - (01:00:00 - 99:59:59)");
  EXPECT_EQ(LineOf(frame.Control(kChapters), 2), L" - (00:00:00 - 00:00:00)");
}

TEST_F(SettingsPage, BoxesAreWrittenAsOnesAndTheJumpAtOnce) {
  const auto config = MakeCom<FakeConfig>();
  config->chapters = {{L"One", 7, 8}, {L"Two", 9, 10}};
  config->setting = VARIANT_TRUE;
  PageFrame frame(CLSID_MatroskaSettingsPage);
  ASSERT_EQ(frame.Open(config.Get()), S_OK);
  EXPECT_TRUE(frame.IsChecked(kAnnexB));
  EXPECT_EQ(frame.Page()->Apply(), S_OK);
  EXPECT_TRUE(config->writes.empty()) << "nothing was changed";

  SendMessageW(frame.Dialog(), WM_COMMAND, MAKEWPARAM(kChapters, LBN_DBLCLK), 0);
  EXPECT_TRUE(config->writes.empty()) << "no chapter is selected";
  DoubleClick(frame, 1);
  SendMessageW(frame.Control(kChapters), WM_KEYDOWN, VK_UP, 0);
  SendMessageW(frame.Control(kChapters), WM_KEYDOWN, VK_SPACE, 0);
  frame.Click(kAnnexB);
  frame.Click(kAnnexB);
  ASSERT_EQ(frame.Page()->Apply(), S_OK);
  ASSERT_EQ(config->writes.size(), 4U);
  for (const std::size_t k : {0U, 1U}) {
    EXPECT_EQ(config->writes[k].parameter, paramPosition);
    EXPECT_EQ(config->writes[k].value.vt, VT_I8);
    EXPECT_EQ(config->writes[k].value.llVal, k == 0 ? 9 : 7) << "two by mouse, one by keyboard";
  }
  EXPECT_EQ(config->writes[2].parameter, paramAnnexBOutput);
  EXPECT_EQ(config->writes[3].parameter, paramSeparatePins);
  for (const std::size_t k : {2U, 3U}) {
    EXPECT_EQ(config->writes[k].value.vt, VT_BOOL);
    EXPECT_EQ(config->writes[k].value.boolVal, 1);
  }
}

TEST_F(SettingsPage, FailuresOfTheFilterArePassedOn) {
  const auto config = MakeCom<FakeConfig>();
  config->chapters = {{L"One", 0, 1}};
  config->chapterResult = E_OUTOFMEMORY;
  PageFrame frame(CLSID_MatroskaSettingsPage);
  EXPECT_EQ(frame.Open(config.Get()), E_OUTOFMEMORY);
  EXPECT_EQ(frame.Dialog(), nullptr);

  config->chapterResult = S_OK;
  config->setting = 1;
  config->readResult = E_FAIL;
  ASSERT_EQ(frame.Activate(), S_OK);
  EXPECT_FALSE(frame.IsChecked(kAnnexB)) << "what cannot be read is not shown";
  frame.Click(kAnnexB);
  config->writeResult = E_ACCESSDENIED;
  ASSERT_EQ(frame.Page()->Deactivate(), S_OK);
  EXPECT_EQ(frame.Page()->Apply(), E_ACCESSDENIED) << "with nobody to tell";
  EXPECT_EQ(frame.Page()->IsPageDirty(), S_OK) << "to be applied once more";
  EXPECT_EQ(config->writes.size(), 1U) << "the second setting is not written after a failure";
}

// What Windows does to a dialog that comes to a monitor of another density: its controls get other fonts and
// sizes, and then it learns of it.
TEST_F(SettingsPage, OnADenserMonitorTheListScrollsFurther) {
  const auto config = MakeCom<FakeConfig>();
  config->chapters = {{L"A name that is longer than the list is wide, so that it has to be scrolled", 0, 1}};
  PageFrame frame(CLSID_MatroskaSettingsPage);
  ASSERT_EQ(frame.Open(config.Get()), S_OK);
  HWND list = frame.Control(kChapters);
  const LRESULT before = SendMessageW(list, LB_GETHORIZONTALEXTENT, 0, 0);
  LOGFONTW size{};
  // NOLINTNEXTLINE(performance-no-int-to-ptr): messages answer with handles as integers
  GetObjectW(reinterpret_cast<HGDIOBJ>(SendMessageW(list, WM_GETFONT, 0, 0)), sizeof size, &size);
  size.lfHeight *= 2;
  const std::unique_ptr<std::remove_pointer_t<HFONT>, decltype(&DeleteObject)> font(CreateFontIndirectW(&size),
                                                                                    &DeleteObject);
  SendMessageW(list, WM_SETFONT, reinterpret_cast<WPARAM>(font.get()), FALSE);
  frame.ChangeDensity();
  EXPECT_GT(SendMessageW(list, LB_GETHORIZONTALEXTENT, 0, 0), before * 3 / 2);
}

TEST_F(SettingsPage, CallsOutOfTurnAreRefused) {
  const auto config = MakeCom<FakeConfig>();
  const auto stranger = MakeCom<PageSite>();
  PageFrame frame(CLSID_MatroskaSettingsPage);
  std::array<IUnknown*, 2> objects = {nullptr, nullptr};
  EXPECT_EQ(frame.Activate(), E_UNEXPECTED) << "without an object";
  EXPECT_EQ(frame.Page()->SetObjects(1, objects.data()), E_POINTER);
  objects[0] = stranger->Owner();
  EXPECT_EQ(frame.Page()->SetObjects(1, objects.data()), E_NOINTERFACE);
  EXPECT_EQ(frame.Page()->SetObjects(2, objects.data()), E_UNEXPECTED);
  EXPECT_EQ(frame.Page()->Show(SW_SHOW), E_UNEXPECTED);
  EXPECT_EQ(frame.Page()->Deactivate(), E_UNEXPECTED);
  EXPECT_EQ(frame.Page()->Apply(), E_UNEXPECTED);
  ASSERT_EQ(frame.Open(config.Get()), S_OK);
  EXPECT_EQ(frame.Activate(), E_UNEXPECTED) << "twice";
  EXPECT_EQ(frame.Page()->SetPageSite(stranger.Get()), E_UNEXPECTED) << "a second site";
}

TEST_F(SettingsPage, TabGoesThroughThePageAndThenOut) {
  const auto config = MakeCom<FakeConfig>();
  PageFrame frame(CLSID_MatroskaSettingsPage);
  ASSERT_EQ(frame.Open(config.Get()), S_OK);
  const auto press = [&](WPARAM key) {
    MSG message{GetFocus(), WM_KEYDOWN, key, 1, 0, {}};
    return frame.Page()->TranslateAccelerator(&message);
  };
  SetFocus(frame.Control(kAnnexB));
  EXPECT_EQ(press(VK_TAB), S_OK);
  EXPECT_EQ(GetFocus(), frame.Control(kSeparatePins));
  EXPECT_EQ(press(VK_RETURN), S_FALSE) << "the frame's OK button";
  EXPECT_EQ(press(VK_ESCAPE), S_FALSE);
  EXPECT_EQ(press(VK_TAB), S_OK);
  EXPECT_EQ(GetFocus(), frame.Control(kChapters));
  EXPECT_EQ(press(VK_TAB), S_FALSE) << "on to the frame's buttons";
}

}  // namespace
}  // namespace tarvex::test
