#include "tests/pages/page_picture.h"

#include <zlib.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <type_traits>
#include <vector>

#include "tests/support/source_dir.h"
#include "tests/support/test_system.h"

namespace tarvex::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

struct Deleter {
  void operator()(HDC context) const noexcept { DeleteDC(context); }
  void operator()(HBITMAP bitmap) const noexcept { DeleteObject(bitmap); }
};
using Context = std::unique_ptr<std::remove_pointer_t<HDC>, Deleter>;
using Bitmap = std::unique_ptr<std::remove_pointer_t<HBITMAP>, Deleter>;

void Append(Bytes& out, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) out.push_back(static_cast<std::uint8_t>(value >> shift));
}

void AppendChunk(Bytes& png, std::string name, const Bytes& data) {
  Append(png, static_cast<std::uint32_t>(data.size()));
  Bytes body(name.begin(), name.end());
  body.insert(body.end(), data.begin(), data.end());
  png.insert(png.end(), body.begin(), body.end());
  Append(png, static_cast<std::uint32_t>(crc32(0, body.data(), static_cast<uInt>(body.size()))));
}

// `rows`: for each row a zero, which is the filter, and its pixels in RGB.
Bytes Png(std::uint32_t width, std::uint32_t height, const Bytes& rows) {
  Bytes header;
  Append(header, width);
  Append(header, height);
  header.insert(header.end(), {8, 2, 0, 0, 0});  // eight bits of RGB
  uLongf size = compressBound(static_cast<uLong>(rows.size()));
  Bytes data(size);
  if (compress2(data.data(), &size, rows.data(), static_cast<uLong>(rows.size()), 9) != Z_OK) return {};
  data.resize(size);
  Bytes png = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  AppendChunk(png, "IHDR", header);
  AppendChunk(png, "IDAT", data);
  AppendChunk(png, "IEND", {});
  return png;
}

// From `corner` of what the window's context, or the screen's for null, shows.
Picture Copy(HWND window, POINT corner, int width, int height) {
  const auto release = [window](HDC context) { ReleaseDC(window, context); };
  const std::unique_ptr<std::remove_pointer_t<HDC>, decltype(release)> source(GetDC(window), release);
  const Context memory(CreateCompatibleDC(source.get()));
  const Bitmap bitmap(CreateCompatibleBitmap(source.get(), width, height));
  HGDIOBJ former = SelectObject(memory.get(), bitmap.get());
  BitBlt(memory.get(), 0, 0, width, height, source.get(), corner.x, corner.y, SRCCOPY);
  SelectObject(memory.get(), former);
  BITMAPINFO wanted{};
  wanted.bmiHeader.biSize = sizeof wanted.bmiHeader;
  wanted.bmiHeader.biWidth = width;
  wanted.bmiHeader.biHeight = -height;
  wanted.bmiHeader.biPlanes = 1;
  wanted.bmiHeader.biBitCount = 32;
  Picture picture{width, height, Bytes(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4)};
  GetDIBits(memory.get(), bitmap.get(), 0, static_cast<UINT>(height), picture.pixels.data(), &wanted, DIB_RGB_COLORS);
  return picture;
}

std::string PathOf(const std::string& name) {
  const char* folder = std::getenv("TARVEX_PICTURES");
  return SystemPath((folder != nullptr ? std::string(folder) : SourceDir() + "/build/test-logs") + "/" + name + ".png");
}

}  // namespace

Picture WindowPicture(HWND window) {
  RECT rect{};
  GetClientRect(window, &rect);
  return Copy(window, {}, rect.right, rect.bottom);
}

Picture ScreenPicture(HWND window) {
  RECT rect{};
  POINT corner{};
  GetClientRect(window, &rect);
  ClientToScreen(window, &corner);
  return Copy(nullptr, corner, rect.right, rect.bottom);
}

void KeepPicture(const Picture& picture, const std::string& name) {
  const auto width = static_cast<std::size_t>(picture.width);
  Bytes rows;
  for (std::size_t at = 0; at < picture.pixels.size(); at += 4) {
    if (at / 4 % width == 0) rows.push_back(0);
    rows.insert(rows.end(), {picture.pixels[at + 2], picture.pixels[at + 1], picture.pixels[at]});
  }
  const Bytes png = Png(static_cast<std::uint32_t>(picture.width), static_cast<std::uint32_t>(picture.height), rows);
  std::ofstream file(PathOf(name), std::ios::binary);
  file.write(reinterpret_cast<const char*>(png.data()), static_cast<std::streamsize>(png.size()));
  if (!file.flush()) throw std::runtime_error("cannot write " + PathOf(name));
}

}  // namespace tarvex::test
