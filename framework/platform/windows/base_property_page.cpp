// Property pages over the system's dialogs.
#include "framework/base_property_page.h"

#include <algorithm>
#include <string_view>

#include "framework/co_task_mem.h"
#include "framework/com_boundary.h"

namespace tarvex {

namespace {

HRESULT LastError() noexcept {
  const HRESULT result = HRESULT_FROM_WIN32(GetLastError());
  return FAILED(result) ? result : E_FAIL;
}

// A string resource, where it lies in the module.
std::wstring_view ResourceText(HINSTANCE module, int id) {
  const wchar_t* text = nullptr;
  // With no room given the call stores a pointer to the text instead of the text.
  const int length = LoadStringW(module, static_cast<UINT>(id), reinterpret_cast<LPWSTR>(&text), 0);
  return length > 0 ? std::wstring_view(text, static_cast<std::size_t>(length)) : std::wstring_view();
}

INT_PTR CALLBACK IgnoreMessages(HWND /*window*/, UINT /*message*/, WPARAM /*wParam*/, LPARAM /*lParam*/) noexcept {
  return FALSE;
}

SIZE SizeOf(HWND window) noexcept {
  RECT rect{};
  GetWindowRect(window, &rect);
  return {rect.right - rect.left, rect.bottom - rect.top};
}

// Only a dialog can turn the template's units into pixels, so one is made and never shown. It has the density of its
// parent.
HRESULT MeasureDialog(HINSTANCE module, int id, HWND parent, SIZE& size) noexcept {
  HWND window = CreateDialogParamW(module, MAKEINTRESOURCEW(id), parent, &IgnoreMessages, 0);
  if (window == nullptr) return LastError();
  size = SizeOf(window);
  DestroyWindow(window);
  return S_OK;
}

// Posted to the dialog by itself: the frame has finished its own layout.
constexpr UINT kFitIntoParent = WM_APP;

// WM_DPICHANGED_AFTERPARENT, which came with Windows 10. The dialog gives its controls their new sizes while it
// handles this, so ours comes after it.
constexpr UINT kDensityChanges = 0x02E3;
constexpr UINT kDensityHasChanged = WM_APP + 1;

bool IsDown(int key) noexcept { return GetKeyState(key) < 0; }

}  // namespace

CBasePropertyPage::CBasePropertyPage(const char* name, IUnknown* outer, int dialogId, int titleId)
    : UnknownImpl(name, outer), m_dialogId(dialogId), m_titleId(titleId) {}

CBasePropertyPage::~CBasePropertyPage() { DestroyPageWindow(); }

HRESULT CBasePropertyPage::NonDelegatingQueryInterface(REFIID iid, void** out) {
  if (iid == IID_IPropertyPage) return GiveInterface(static_cast<IPropertyPage*>(this), out);
  return CUnknown::NonDelegatingQueryInterface(iid, out);
}

HINSTANCE CBasePropertyPage::Module() noexcept {
  static const int anchor = 0;
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     reinterpret_cast<LPCWSTR>(&anchor), &module);
  return module;
}

HRESULT CBasePropertyPage::OnConnect(IUnknown* /*object*/) { return S_OK; }
HRESULT CBasePropertyPage::OnDisconnect() { return S_OK; }
HRESULT CBasePropertyPage::OnActivate() { return S_OK; }
HRESULT CBasePropertyPage::OnDeactivate() { return S_OK; }
HRESULT CBasePropertyPage::OnApplyChanges() { return S_OK; }
void CBasePropertyPage::OnDensityChange() {}

INT_PTR CBasePropertyPage::OnReceiveMessage(HWND /*window*/, UINT /*message*/, WPARAM /*wParam*/, LPARAM /*lParam*/) {
  return FALSE;
}

HRESULT CBasePropertyPage::SetPageSite(IPropertyPageSite* pPageSite) {
  if (pPageSite != nullptr && m_site) return E_UNEXPECTED;
  m_site = ComPtr<IPropertyPageSite>(pPageSite);
  return S_OK;
}

HRESULT CBasePropertyPage::SetObjects(ULONG cObjects, IUnknown** ppUnk) {
  if (cObjects > 1) return E_UNEXPECTED;
  if (cObjects == 1 && (ppUnk == nullptr || *ppUnk == nullptr)) return E_POINTER;
  return ComBoundary([&] {
    m_connected = false;
    const HRESULT left = OnDisconnect();
    if (cObjects == 0) return left;
    const HRESULT result = OnConnect(*ppUnk);
    m_connected = SUCCEEDED(result);
    return result;
  });
}

HRESULT CBasePropertyPage::Activate(HWND hWndParent, LPCRECT pRect, BOOL /*bModal*/) {
  if (pRect == nullptr) return E_POINTER;
  if (!m_connected || m_window != nullptr) return E_UNEXPECTED;
  HRESULT result = CreatePageWindow(hWndParent);
  if (FAILED(result)) return result;
  Move(pRect);
  result = ComBoundary([this] { return OnActivate(); });
  if (FAILED(result)) {
    DestroyPageWindow();
    return result;
  }
  PostMessageW(m_window, kFitIntoParent, 0, 0);
  return Show(SW_SHOWNORMAL);
}

// Wine's frame activates a page in an area that it makes smaller afterwards, without telling the page.
void CBasePropertyPage::FitIntoParent() noexcept {
  RECT room{};
  GetClientRect(GetParent(m_window), &room);
  const SIZE size = SizeOf(m_window);
  const LONG width = std::min(size.cx, std::max(room.right, m_designSize.cx));
  const LONG height = std::min(size.cy, std::max(room.bottom, m_designSize.cy));
  if (width == size.cx && height == size.cy) return;
  SetWindowPos(m_window, nullptr, 0, 0, width, height, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void CBasePropertyPage::TakeNewDensity() {
  SIZE size{};
  if (SUCCEEDED(MeasureDialog(Module(), m_dialogId, GetParent(m_window), size))) m_designSize = size;
  FitIntoParent();
  OnDensityChange();
}

HRESULT CBasePropertyPage::Deactivate() {
  if (m_window == nullptr) return E_UNEXPECTED;
  const HRESULT result = ComBoundary([this] { return OnDeactivate(); });
  DestroyPageWindow();
  return result;
}

HRESULT CBasePropertyPage::CreatePageWindow(HWND parent) {
  HWND window =
      CreateDialogParamW(Module(), MAKEINTRESOURCEW(m_dialogId), parent, &DialogProc, reinterpret_cast<LPARAM>(this));
  return window != nullptr ? S_OK : LastError();
}

void CBasePropertyPage::DestroyPageWindow() noexcept {
  HWND window = m_window;
  if (window == nullptr) return;
  m_window = nullptr;
  SetWindowLongPtrW(window, DWLP_USER, 0);  // its last messages go to no page
  DestroyWindow(window);
}

INT_PTR CBasePropertyPage::OnInitDialog(HWND window) noexcept {
  m_window = window;
  m_designSize = SizeOf(window);
  SetWindowLongPtrW(window, DWLP_USER, reinterpret_cast<LONG_PTR>(this));
  return FALSE;  // the focus stays where the frame has it
}

CBasePropertyPage* CBasePropertyPage::PageFrom(LONG_PTR stored) noexcept {
  // NOLINTNEXTLINE(performance-no-int-to-ptr): a window keeps pointers as integers
  return reinterpret_cast<CBasePropertyPage*>(stored);
}

// The page outlives the message, whatever the message makes its frame do.
INT_PTR CALLBACK CBasePropertyPage::DialogProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
  if (message == WM_INITDIALOG) return PageFrom(lParam)->OnInitDialog(window);
  const ComPtr<CBasePropertyPage> page(PageFrom(GetWindowLongPtrW(window, DWLP_USER)));
  if (!page) return FALSE;
  if (message == kFitIntoParent) page->FitIntoParent();
  if (message == kDensityChanges) PostMessageW(window, kDensityHasChanged, 0, 0);
  INT_PTR answer = FALSE;
  static_cast<void>(ComBoundary([&] {
    if (message == kDensityHasChanged) page->TakeNewDensity();
    answer = page->OnReceiveMessage(window, message, wParam, lParam);
    return S_OK;
  }));
  // A frame that destroys its window takes the page's with it.
  if (message == WM_NCDESTROY) page->m_window = nullptr;
  return answer;
}

HRESULT CBasePropertyPage::GetPageInfo(PROPPAGEINFO* pPageInfo) {
  if (pPageInfo == nullptr) return E_POINTER;
  return ComBoundary([&] {
    PROPPAGEINFO info{};
    info.cb = sizeof info;
    HWND active = GetActiveWindow();
    const HRESULT result =
        MeasureDialog(Module(), m_dialogId, active != nullptr ? active : GetDesktopWindow(), info.size);
    if (FAILED(result)) return result;
    info.pszTitle = TaskString(ResourceText(Module(), m_titleId)).Detach();
    *pPageInfo = info;
    return S_OK;
  });
}

HRESULT CBasePropertyPage::Show(UINT nCmdShow) {
  if (m_window == nullptr) return E_UNEXPECTED;
  if (nCmdShow != SW_SHOW && nCmdShow != SW_SHOWNORMAL && nCmdShow != SW_HIDE) return E_INVALIDARG;
  ShowWindow(m_window, static_cast<int>(nCmdShow));
  return S_OK;
}

HRESULT CBasePropertyPage::Move(LPCRECT pRect) {
  if (pRect == nullptr) return E_POINTER;
  if (m_window == nullptr) return E_UNEXPECTED;
  const BOOL moved =
      MoveWindow(m_window, pRect->left, pRect->top, pRect->right - pRect->left, pRect->bottom - pRect->top, TRUE);
  return moved ? S_OK : LastError();
}

HRESULT CBasePropertyPage::Apply() {
  if (!m_connected || !m_site) return E_UNEXPECTED;
  if (!m_dirty) return S_OK;
  const HRESULT result = ComBoundary([this] { return OnApplyChanges(); });
  if (SUCCEEDED(result)) m_dirty = false;
  return result;
}

void CBasePropertyPage::SetPageDirty() {
  m_dirty = true;
  if (m_site) m_site->OnStatusChange(PROPPAGESTATUS_DIRTY);
}

HRESULT CBasePropertyPage::TranslateAccelerator(MSG* pMsg) {
  if (pMsg == nullptr) return E_POINTER;
  if (m_window == nullptr) return E_UNEXPECTED;
  if (!IsKeyForPage(*pMsg)) return S_FALSE;
  return IsDialogMessageW(m_window, pMsg) ? S_OK : S_FALSE;
}

bool CBasePropertyPage::IsKeyForPage(const MSG& message) const noexcept {
  if (message.message != WM_KEYDOWN && message.message != WM_KEYUP && message.message != WM_CHAR) return false;
  if (!IsChild(m_window, message.hwnd) || IsDown(VK_CONTROL) || IsDown(VK_MENU)) return false;
  if (message.message != WM_KEYDOWN) return true;
  switch (message.wParam) {
    case VK_RETURN:
    case VK_ESCAPE:
    case VK_CANCEL:
    case VK_F1:
      return false;
    case VK_TAB:
      return !TabLeavesPage();
    default:
      return true;
  }
}

// The dialog by itself would go round its own controls, and Tab would never reach the frame's buttons.
bool CBasePropertyPage::TabLeavesPage() const noexcept {
  HWND first = GetNextDlgTabItem(m_window, nullptr, FALSE);
  HWND edge = IsDown(VK_SHIFT) ? first : GetNextDlgTabItem(m_window, first, TRUE);
  return edge == nullptr || GetFocus() == edge;
}

}  // namespace tarvex
