#include "tests/pages/page_picture.h"

#include <zlib.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <type_traits>
#include <vector>

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

// Four bytes for a pixel, blue first, top row first.
Bytes PixelsOf(HWND window, const BITMAPINFO& info) {
  const auto release = [window](HDC context) { ReleaseDC(window, context); };
  const std::unique_ptr<std::remove_pointer_t<HDC>, decltype(release)> source(GetDC(window), release);
  const LONG width = info.bmiHeader.biWidth;
  const LONG height = -info.bmiHeader.biHeight;
  const Context memory(CreateCompatibleDC(source.get()));
  const Bitmap bitmap(CreateCompatibleBitmap(source.get(), width, height));
  HGDIOBJ former = SelectObject(memory.get(), bitmap.get());
  BitBlt(memory.get(), 0, 0, width, height, source.get(), 0, 0, SRCCOPY);
  SelectObject(memory.get(), former);
  Bytes pixels(static_cast<std::size_t>(width * height) * 4);
  BITMAPINFO wanted = info;
  GetDIBits(memory.get(), bitmap.get(), 0, static_cast<UINT>(height), pixels.data(), &wanted, DIB_RGB_COLORS);
  return pixels;
}

std::string PathOf(const std::string& name) {
  const char* folder = std::getenv("TARVEX_PICTURES");
  return SystemPath((folder != nullptr ? std::string(folder) : TARVEX_SOURCE_DIR "/build/test-logs") + "/" + name +
                    ".png");
}

}  // namespace

void KeepPicture(HWND window, const std::string& name) {
  RECT rect{};
  GetClientRect(window, &rect);
  BITMAPINFO info{};
  info.bmiHeader.biSize = sizeof info.bmiHeader;
  info.bmiHeader.biWidth = rect.right;
  info.bmiHeader.biHeight = -rect.bottom;
  info.bmiHeader.biPlanes = 1;
  info.bmiHeader.biBitCount = 32;
  const Bytes pixels = PixelsOf(window, info);
  Bytes rows;
  for (std::size_t at = 0; at < pixels.size(); at += 4) {
    if (at / 4 % static_cast<std::size_t>(info.bmiHeader.biWidth) == 0) rows.push_back(0);
    rows.insert(rows.end(), {pixels[at + 2], pixels[at + 1], pixels[at]});
  }
  const Bytes png = Png(static_cast<std::uint32_t>(info.bmiHeader.biWidth),
                        static_cast<std::uint32_t>(-info.bmiHeader.biHeight), rows);
  std::ofstream file(PathOf(name), std::ios::binary);
  file.write(reinterpret_cast<const char*>(png.data()), static_cast<std::streamsize>(png.size()));
  if (!file.flush()) throw std::runtime_error("cannot write " + PathOf(name));
}

}  // namespace tarvex::test
