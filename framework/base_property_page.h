// The base of a property page: IPropertyPage over one dialog that lives inside the window of a frame.
// Windows only. Made by the class factory for a frame, which owns it and calls it on the thread of its
// window; a page belongs to that one thread.
#pragma once

#include "framework/com_ptr.h"
#include "framework/unknown.h"

namespace tarvex {

/// A frame calls SetPageSite, SetObjects and Activate, in this order; what is called out of turn gets
/// E_UNEXPECTED. Derived classes override what the On... operations say, which may throw.
class CBasePropertyPage : public UnknownImpl<IPropertyPage> {
 public:
  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) override;

  // IPropertyPage
  /// E_UNEXPECTED for a second site; null takes the present one away.
  HRESULT STDMETHODCALLTYPE SetPageSite(IPropertyPageSite* pPageSite) override;
  /// Makes and shows the dialog. A failure of OnActivate is returned, and there is no dialog then.
  HRESULT STDMETHODCALLTYPE Activate(HWND hWndParent, LPCRECT pRect, BOOL bModal) override;
  HRESULT STDMETHODCALLTYPE Deactivate() override;
  /// The size is that of the dialog in pixels, on the monitor of the thread's active window, or on the first one
  /// without such a window. The caller frees the title.
  HRESULT STDMETHODCALLTYPE GetPageInfo(PROPPAGEINFO* pPageInfo) override;
  /// One object, or none; E_UNEXPECTED for several.
  HRESULT STDMETHODCALLTYPE SetObjects(ULONG cObjects, IUnknown** ppUnk) override;
  HRESULT STDMETHODCALLTYPE Show(UINT nCmdShow) override;
  HRESULT STDMETHODCALLTYPE Move(LPCRECT pRect) override;
  HRESULT STDMETHODCALLTYPE IsPageDirty() override { return m_dirty ? S_OK : S_FALSE; }
  /// Does nothing on a page that is not dirty. After a failure the page is still dirty.
  HRESULT STDMETHODCALLTYPE Apply() override;
  HRESULT STDMETHODCALLTYPE Help(LPCOLESTR /*pszHelpDir*/) override { return E_NOTIMPL; }
  /// S_OK for a key that the dialog used. The keys of the frame are left to it: Enter, Escape, F1, what is
  /// pressed with Ctrl or Alt, and Tab on the way out of the page.
  HRESULT STDMETHODCALLTYPE TranslateAccelerator(MSG* pMsg) override;

 protected:
  /// `dialogId` and `titleId` are numbers of resources of this module.
  CBasePropertyPage(const char* name, IUnknown* outer, int dialogId, int titleId);
  ~CBasePropertyPage() override;

  /// The page is to show `object`.
  virtual HRESULT OnConnect(IUnknown* object);
  /// The page is to let go of it. May be called without a connection.
  virtual HRESULT OnDisconnect();
  /// The dialog exists and is not shown yet: fill its controls.
  virtual HRESULT OnActivate();
  /// The dialog is about to go.
  virtual HRESULT OnDeactivate();
  /// Write what the user changed to the object.
  virtual HRESULT OnApplyChanges();
  /// The dialog is on a monitor of another density now; its controls and fonts have their new sizes. Measure again what
  /// else is in pixels.
  virtual void OnDensityChange();
  /// A message to the dialog, after its creation. The answer is a dialog procedure's: FALSE when the
  /// message was not handled, which is all that the base itself says.
  virtual INT_PTR OnReceiveMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

  /// The user changed something: sets the dirty flag and tells the site.
  void SetPageDirty();
  /// The dialog; null while the page is not active.
  HWND Window() const noexcept { return m_window; }
  HWND Control(int id) const noexcept { return GetDlgItem(m_window, id); }
  /// The module that this code is in, and with it the page's resources.
  static HINSTANCE Module() noexcept;

 private:
  static INT_PTR CALLBACK DialogProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
  static CBasePropertyPage* PageFrom(LONG_PTR stored) noexcept;
  INT_PTR OnInitDialog(HWND window) noexcept;
  HRESULT CreatePageWindow(HWND parent);
  void DestroyPageWindow() noexcept;
  void FitIntoParent() noexcept;
  void TakeNewDensity();
  bool IsKeyForPage(const MSG& message) const noexcept;
  bool TabLeavesPage() const noexcept;

  const int m_dialogId;
  const int m_titleId;
  ComPtr<IPropertyPageSite> m_site;
  HWND m_window = nullptr;
  SIZE m_designSize{};  // pixels, as the template asks for
  bool m_connected = false;
  bool m_dirty = false;
};

}  // namespace tarvex
