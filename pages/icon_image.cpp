#include "pages/icon_image.h"

#include <algorithm>
#include <utility>

namespace tarvex {

namespace {

// The images are drawn for the usual scalings, all of them multiples of this; a control's size comes from
// its font and is a pixel or two off.
constexpr int kStep = 8;

int SideFor(HWND control) noexcept {
  RECT rect{};
  GetClientRect(control, &rect);
  const LONG room = std::min(rect.right, rect.bottom);
  return std::max(static_cast<int>((room + kStep / 2) / kStep * kStep), kStep);
}

}  // namespace

void IconImage::ShowIn(HWND control) noexcept {
  const int side = SideFor(control);
  if (control == nullptr || side == m_side) return;
  decltype(m_icon) icon(static_cast<HICON>(
      LoadImageW(m_module, MAKEINTRESOURCEW(m_resourceId), IMAGE_ICON, side, side, LR_DEFAULTCOLOR)));
  if (!icon) return;
  SendMessageW(control, STM_SETICON, reinterpret_cast<WPARAM>(icon.get()), 0);
  m_icon = std::move(icon);  // not before the control has let go of the former one
  m_side = side;
}

void IconImage::Drop() noexcept {
  m_icon.reset();
  m_side = 0;
}

}  // namespace tarvex
