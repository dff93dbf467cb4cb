// An image of a page: an icon resource of the module in a static control, at the size that the control has
// on its monitor. Owned by the page, used on its thread.
#pragma once

#include <memory>
#include <type_traits>

#include "framework/platform/platform.h"

namespace tarvex {

class IconImage {
 public:
  IconImage(HINSTANCE module, int resourceId) noexcept : m_module(module), m_resourceId(resourceId) {}

  /// Shows the image in `control`, loaded again only when another size fits now. Without effect when the system
  /// refuses.
  void ShowIn(HWND control) noexcept;
  /// Drops the image. To be called when the control is gone or about to go.
  void Drop() noexcept;

 private:
  struct Destroyer {
    void operator()(HICON icon) const noexcept { DestroyIcon(icon); }
  };

  HINSTANCE m_module;
  int m_resourceId;
  std::unique_ptr<std::remove_pointer_t<HICON>, Destroyer> m_icon;
  int m_side = 0;  // pixels
};

}  // namespace tarvex
