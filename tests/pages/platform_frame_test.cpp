// Both pages in the platform's own property frame, opened as hosts do, from the filter's list of pages; and
// by mkvhost.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <vector>

#include "framework/co_task_mem.h"
#include "framework/thread.h"
#include "include/tarvex/class_ids.h"
#include "tests/host/host_process.h"
#include "tests/pages/page_frame.h"
#include "tests/pages/page_picture.h"
#include "tests/support/splitter_module.h"
#include "tests/support/test_graph.h"

// After windows.h, which it depends on.
#include <commctrl.h>

namespace tarvex::test {
namespace {

/// Makes a class of the module under test known to COM, whatever is registered.
class PageClass {
 public:
  explicit PageClass(REFCLSID clsid) {
    ComPtr<IUnknown> factory;
    EXPECT_EQ(GetClassObject(clsid, IID_IUnknown, factory.PutVoid()), S_OK);
    EXPECT_EQ(CoRegisterClassObject(clsid, factory.Get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &m_registration),
              S_OK);
  }
  ~PageClass() { CoRevokeClassObject(m_registration); }
  PageClass(const PageClass&) = delete;
  PageClass& operator=(const PageClass&) = delete;

 private:
  DWORD m_registration = 0;
};

/// The frame, on a thread of its own that it blocks until it is closed.
class FrameThread {
 public:
  explicit FrameThread(IUnknown* object) : m_object(object) {
    EXPECT_EQ(m_thread.Start([this] { Show(); }), S_OK);
  }
  ~FrameThread() {
    if (HWND frame = Frame()) PostMessageW(frame, WM_COMMAND, IDCANCEL, 0);
    m_thread.Join();
  }
  FrameThread(const FrameThread&) = delete;
  FrameThread& operator=(const FrameThread&) = delete;

  HRESULT Close() {
    PostMessageW(Frame(), WM_COMMAND, IDCANCEL, 0);
    EXPECT_TRUE(m_thread.JoinFor(kPatience));
    return m_result;
  }
  /// Null until it is there.
  HWND Frame() const {
    HWND frame = nullptr;
    const auto take = [](HWND window, LPARAM context) -> BOOL {
      if (IsWindowVisible(window)) *reinterpret_cast<HWND*>(context) = window;
      return TRUE;
    };
    if (const DWORD id = m_threadId) EnumThreadWindows(id, take, reinterpret_cast<LPARAM>(&frame));
    return frame;
  }

 private:
  void Show() {
    m_threadId = GetCurrentThreadId();
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    ShowPages();
    CoUninitialize();
  }

  void ShowPages() {
    const PageClass settings(CLSID_MatroskaSettingsPage);
    const PageClass about(CLSID_MatroskaAboutPage);
    CAUUID pages{};
    m_result = QueryFor<ISpecifyPropertyPages>(m_object)->GetPages(&pages);
    CoTaskMem<GUID> ids;
    *ids.Put() = pages.pElems;
    if (SUCCEEDED(m_result)) {
      m_result = OleCreatePropertyFrame(nullptr, 20, 20, L"Tarvex Matroska Splitter", 1, &m_object, pages.cElems,
                                        ids.Get(), LOCALE_USER_DEFAULT, 0, nullptr);
    }
  }

  IUnknown* m_object;
  std::atomic<DWORD> m_threadId{0};
  HRESULT m_result = E_FAIL;
  CThread m_thread;
};

// Repeats the question until the answer is yes or the patience ends.
bool Eventually(const std::function<bool()>& question) {
  for (DWORD waited = 0; waited < kPatience; waited += 20) {
    if (question()) return true;
    SleepMilliseconds(20);
  }
  return false;
}

// A visible control with this number, in whichever page it is.
HWND FindControl(HWND frame, int id) {
  struct Search {
    int id;
    HWND found;
  } search{id, nullptr};
  EnumChildWindows(
      frame,
      [](HWND window, LPARAM context) -> BOOL {
        auto* wanted = reinterpret_cast<Search*>(context);
        if (GetDlgCtrlID(window) == wanted->id && IsWindowVisible(window)) wanted->found = window;
        return wanted->found == nullptr;
      },
      reinterpret_cast<LPARAM>(&search));
  return search.found;
}

LONG CentreOf(HWND window) {
  RECT rect{};
  GetWindowRect(window, &rect);
  return (rect.left + rect.right) / 2;
}

void KeepPictureOf(HWND frame, const char* name) {
  RedrawWindow(frame, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_UPDATENOW | RDW_ALLCHILDREN);
  SleepMilliseconds(200);  // for the thread of the frame to paint
  KeepPicture(WindowPicture(frame), name);
}

TEST(PlatformFrame, ShowsBothPages) {
  {
    TestGraph graph;
    ASSERT_EQ(graph.Open(TARVEX_SOURCE_DIR "/tests/data/sample.mkv"), S_OK);
    FrameThread frame(graph.Splitter());
    const auto control = [&frame](int id) { return FindControl(frame.Frame(), id); };
    ASSERT_TRUE(Eventually([&] { return control(1006) != nullptr; })) << "the settings page";
    EXPECT_EQ(SendMessageW(control(1006), LB_GETCOUNT, 0, 0), 2);
    KeepPictureOf(frame.Frame(), "settings-frame");
    SendMessageW(frame.Frame(), PSM_SETCURSEL, 1, 0);
    ASSERT_TRUE(Eventually([&] { return control(1002) != nullptr; })) << "the about page";
    EXPECT_EQ(TextOf(control(1001)), L"Tarvex Matroska Splitter");
    const auto logoIsAboveTitle = [&] { return std::abs(CentreOf(control(1003)) - CentreOf(control(1001))) <= 1; };
    EXPECT_TRUE(Eventually(logoIsAboveTitle)) << "the page is wider than the frame shows";
    KeepPictureOf(frame.Frame(), "about-frame");
    EXPECT_EQ(frame.Close(), S_OK);
  }
  EXPECT_TRUE(ModuleBecomesIdle());
}

// Of whichever process: a window with this in its title and a page in it.
HWND FindFrame(const wchar_t* title) {
  HWND frame = nullptr;
  while ((frame = FindWindowExW(nullptr, frame, nullptr, nullptr)) != nullptr) {
    if (TextOf(frame).find(title) != std::wstring::npos && FindControl(frame, 1004) != nullptr) break;
  }
  return frame;
}

TEST(PlatformFrame, IsWhatTheHostShows) {
  host::test::HostResult result;
  CThread host;
  const HRESULT started = host.Start([&result] {
    const auto file = host::test::SourcePath("tests/data/sample.mkv");
    result = host::test::RunHostWithModule({L"settings", file});
  });
  ASSERT_EQ(started, S_OK);
  HWND frame = nullptr;
  EXPECT_TRUE(Eventually([&] { return (frame = FindFrame(L"Tarvex Matroska Splitter")) != nullptr; }));
  PostMessageW(frame, WM_COMMAND, IDOK, 0);
  host.Join();
  EXPECT_EQ(result.code, 0U) << result.errors;
  EXPECT_NE(result.output.find("Annex B output: off"), std::string::npos) << result.output;
}

}  // namespace
}  // namespace tarvex::test
