#include "pages/about_prop_page.h"

#include "pages/resource_ids.h"
#include "pages/version_line.h"

namespace tarvex {

namespace {

void CentreHorizontally(HWND page, HWND control) noexcept {
  RECT room{};
  RECT rect{};
  if (!GetClientRect(page, &room) || !GetWindowRect(control, &rect)) return;
  MapWindowPoints(nullptr, page, reinterpret_cast<POINT*>(&rect), 2);
  const int width = rect.right - rect.left;
  MoveWindow(control, (room.right - width) / 2, rect.top, width, rect.bottom - rect.top, TRUE);
}

}  // namespace

CUnknown* CAboutPropPage::CreateInstance(IUnknown* outer, HRESULT* /*result*/) { return new CAboutPropPage(outer); }

CAboutPropPage::CAboutPropPage(IUnknown* outer)
    : CBasePropertyPage("Tarvex Matroska Splitter About Page", outer, TARVEX_DIALOG_ABOUT, TARVEX_TITLE_ABOUT),
      m_logo(Module(), TARVEX_IMAGE_LOGO),
      m_file(Module(), TARVEX_IMAGE_FILE) {}

HRESULT CAboutPropPage::OnActivate() {
  SetDlgItemTextW(Window(), TARVEX_ABOUT_TITLE, L"Tarvex Matroska Splitter");
  SetDlgItemTextW(Window(), TARVEX_ABOUT_VERSION, VersionLine(Module()).c_str());
  ShowImages(Window());
  return S_OK;
}

HRESULT CAboutPropPage::OnDeactivate() {
  m_logo.Drop();
  m_file.Drop();
  return S_OK;
}

void CAboutPropPage::OnDensityChange() {
  CentreHorizontally(Window(), Control(TARVEX_ABOUT_LOGO));
  ShowImages(Window());
}

// On another monitor the controls may have other sizes.
void CAboutPropPage::ShowImages(HWND window) noexcept {
  m_logo.ShowIn(GetDlgItem(window, TARVEX_ABOUT_LOGO));
  m_file.ShowIn(GetDlgItem(window, TARVEX_ABOUT_FILE));
}

INT_PTR CAboutPropPage::OnReceiveMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_SIZE) {
    CentreHorizontally(window, GetDlgItem(window, TARVEX_ABOUT_LOGO));
    ShowImages(window);
  }
  return CBasePropertyPage::OnReceiveMessage(window, message, wParam, lParam);
}

}  // namespace tarvex
