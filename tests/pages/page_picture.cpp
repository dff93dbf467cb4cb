#include "tests/pages/page_picture.h"

#include <cstdlib>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <type_traits>

#include "tests/support/source_dir.h"
#include "tests/support/test_system.h"

namespace tarvex::test {
namespace {

struct Deleter {
  void operator()(HDC context) const noexcept { DeleteDC(context); }
  void operator()(HBITMAP bitmap) const noexcept { DeleteObject(bitmap); }
};

BITMAPINFO FormOf(int width, int height) {
  BITMAPINFO form{};
  form.bmiHeader = {sizeof form.bmiHeader, width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};  // rows from the top
  return form;
}

}  // namespace

Picture PictureOf(HWND window, bool onScreen) {
  RECT rect{};
  POINT corner{};
  GetClientRect(window, &rect);
  if (onScreen) ClientToScreen(window, &corner);
  HWND shown = onScreen ? nullptr : window;
  const auto release = [shown](HDC context) { ReleaseDC(shown, context); };
  const std::unique_ptr<std::remove_pointer_t<HDC>, decltype(release)> source(GetDC(shown), release);
  const std::unique_ptr<std::remove_pointer_t<HDC>, Deleter> memory(CreateCompatibleDC(source.get()));
  const std::unique_ptr<std::remove_pointer_t<HBITMAP>, Deleter> bitmap(
      CreateCompatibleBitmap(source.get(), rect.right, rect.bottom));
  HGDIOBJ former = SelectObject(memory.get(), bitmap.get());
  BitBlt(memory.get(), 0, 0, rect.right, rect.bottom, source.get(), corner.x, corner.y, SRCCOPY);
  SelectObject(memory.get(), former);
  Picture picture{rect.right, rect.bottom, {}};
  picture.pixels.resize(static_cast<std::size_t>(rect.right) * static_cast<std::size_t>(rect.bottom) * 4);
  BITMAPINFO form = FormOf(rect.right, rect.bottom);
  GetDIBits(memory.get(), bitmap.get(), 0, static_cast<UINT>(rect.bottom), picture.pixels.data(), &form,
            DIB_RGB_COLORS);
  return picture;
}

void KeepPicture(const Picture& picture, const std::string& name) {
  const char* folder = std::getenv("TARVEX_PICTURES");
  const std::string path = folder != nullptr ? std::string(folder) : SourceDir() + "/build/test-logs";
  const BITMAPINFO form = FormOf(picture.width, picture.height);
  BITMAPFILEHEADER header{0x4D42, 0, 0, 0, sizeof header + sizeof form.bmiHeader};  // "BM"
  header.bfSize = header.bfOffBits + static_cast<DWORD>(picture.pixels.size());
  std::ofstream file(SystemPath(path + "/" + name + ".bmp"), std::ios::binary);
  file.write(reinterpret_cast<const char*>(&header), sizeof header);
  file.write(reinterpret_cast<const char*>(&form.bmiHeader), sizeof form.bmiHeader);
  file.write(reinterpret_cast<const char*>(picture.pixels.data()), static_cast<std::streamsize>(picture.pixels.size()));
  if (!file.flush()) throw std::runtime_error("cannot write " + name);
}

}  // namespace tarvex::test
