// The smallest frame for one property page: a window, a site that counts, and the calls in the order in
// which frames make them. A value on the stack of one test.
#pragma once

#include <string>

#include "framework/com_ptr.h"
#include "framework/unknown.h"

namespace tarvex::test {

class PageSite final : public UnknownImpl<IPropertyPageSite> {
 public:
  PageSite() : UnknownImpl("PageSite", nullptr) {}
  int Dirty() const noexcept { return m_dirty; }

  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) override {
    if (iid == IidOf<IPropertyPageSite>()) return GiveInterface(static_cast<IPropertyPageSite*>(this), out);
    return CUnknown::NonDelegatingQueryInterface(iid, out);
  }
  HRESULT STDMETHODCALLTYPE OnStatusChange(DWORD flags) override {
    m_dirty += (flags & PROPPAGESTATUS_DIRTY) != 0 ? 1 : 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetLocaleID(LCID* /*pLocaleID*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetPageContainer(IUnknown** /*ppUnk*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE TranslateAccelerator(MSG* /*pMsg*/) override { return S_FALSE; }

 private:
  int m_dirty = 0;
};

class PageFrame {
 public:
  /// A frame around a new page of the module under test, which is not told anything yet.
  explicit PageFrame(REFCLSID page);
  ~PageFrame();
  PageFrame(const PageFrame&) = delete;
  PageFrame& operator=(const PageFrame&) = delete;

  /// Gives the page its site and `object`, and shows it; what Activate answered.
  HRESULT Open(IUnknown* object);
  HRESULT Activate();
  /// Tells the dialog what Windows tells it on a monitor of another density, and has it take its time.
  void ChangeDensity();

  IPropertyPage* Page() const noexcept { return m_page.Get(); }
  PageSite& Site() const noexcept { return *m_site; }
  HWND Window() const noexcept { return m_window; }
  int Width() const noexcept {
    RECT rect{};
    GetClientRect(m_window, &rect);
    return rect.right;
  }
  /// Null while the page has none.
  HWND Dialog() const noexcept { return FindWindowExW(m_window, nullptr, L"#32770", nullptr); }
  HWND Control(int id) const noexcept { return GetDlgItem(Dialog(), id); }
  bool IsChecked(int id) const noexcept { return SendMessageW(Control(id), BM_GETCHECK, 0, 0) == BST_CHECKED; }
  void Click(int id) const noexcept { SendMessageW(Control(id), BM_CLICK, 0, 0); }

 private:
  ComPtr<IPropertyPage> m_page;
  ComPtr<PageSite> m_site;
  HWND m_window = nullptr;
};

std::wstring TextOf(HWND window);
/// The line of a list box.
std::wstring LineOf(HWND list, int index);

}  // namespace tarvex::test
