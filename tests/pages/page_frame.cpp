#include "tests/pages/page_frame.h"

#include <stdexcept>

#include "framework/co_task_mem.h"
#include "tests/support/splitter_module.h"

namespace tarvex::test {
namespace {

ComPtr<IPropertyPage> CreatePage(REFCLSID clsid) {
  ComPtr<IClassFactory> factory;
  ComPtr<IPropertyPage> page;
  HRESULT result = GetClassObject(clsid, IID_IClassFactory, factory.PutVoid());
  if (SUCCEEDED(result)) result = factory->CreateInstance(nullptr, IidOf<IPropertyPage>(), page.PutVoid());
  if (FAILED(result)) throw std::runtime_error("the module makes no such page");
  return page;
}

}  // namespace

// A program that says nothing of densities is shown at one it never had.
PageFrame::PageFrame(REFCLSID page) : m_page(CreatePage(page)), m_site(MakeCom<PageSite>()) {
  SetProcessDPIAware();
  PROPPAGEINFO info{};
  if (FAILED(m_page->GetPageInfo(&info))) throw std::runtime_error("the page does not say what it is");
  CoTaskMem<OLECHAR> title;
  *title.Put() = info.pszTitle;
  // Shown without being activated: an X server without a window manager makes Wine wait for one otherwise.
  m_window = CreateWindowExW(WS_EX_CONTROLPARENT | WS_EX_TOOLWINDOW, L"STATIC", title.Get(), WS_POPUP | WS_CLIPCHILDREN,
                             40, 40, info.size.cx, info.size.cy, nullptr, nullptr, nullptr, nullptr);
  ShowWindow(m_window, SW_SHOWNOACTIVATE);
}

PageFrame::~PageFrame() {
  m_page->Deactivate();
  m_page->SetObjects(0, nullptr);
  m_page->SetPageSite(nullptr);
  DestroyWindow(m_window);
}

HRESULT PageFrame::Open(IUnknown* object) {
  HRESULT result = m_page->SetPageSite(m_site.Get());
  if (SUCCEEDED(result)) result = m_page->SetObjects(1, &object);
  return FAILED(result) ? result : Activate();
}

HRESULT PageFrame::Activate() {
  RECT rect{};
  GetClientRect(m_window, &rect);
  return m_page->Activate(m_window, &rect, FALSE);
}

void PageFrame::ChangeDensity() {
  constexpr UINT kDensityChanges = 0x02E3;  // WM_DPICHANGED_AFTERPARENT
  SendMessageW(Dialog(), kDensityChanges, 0, 0);
  MSG message{};
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
}

std::wstring TextOf(HWND window) {
  std::wstring text(256, L'\0');
  text.resize(static_cast<std::size_t>(GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
  return text;
}

std::wstring LineOf(HWND list, int index) {
  const LRESULT length = SendMessageW(list, LB_GETTEXTLEN, static_cast<WPARAM>(index), 0);
  if (length < 0) return L"(no such line)";
  std::wstring line(static_cast<std::size_t>(length) + 1, L'\0');
  SendMessageW(list, LB_GETTEXT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(line.data()));
  line.resize(static_cast<std::size_t>(length));
  return line;
}

}  // namespace tarvex::test
