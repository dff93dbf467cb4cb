// The about page: the filter's title, the module's version and two images. Made by the class factory for a
// frame; everything on the thread of the frame's window.
#pragma once

#include "framework/base_property_page.h"
#include "pages/icon_image.h"

namespace tarvex {

class CAboutPropPage final : public CBasePropertyPage {
 public:
  /// For the class factory. May throw std::bad_alloc.
  static CUnknown* CreateInstance(IUnknown* outer, HRESULT* result);

 private:
  explicit CAboutPropPage(IUnknown* outer);

  HRESULT OnActivate() override;
  HRESULT OnDeactivate() override;
  void OnDensityChange() override;
  INT_PTR OnReceiveMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) override;

  void ShowImages(HWND window) noexcept;

  IconImage m_logo;
  IconImage m_file;
};

}  // namespace tarvex
