// Pictures of windows, for people to look at and for tests to compare. Thread of the window, or any other
// of its process.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "framework/platform/platform.h"

namespace tarvex::test {

/// Four bytes for a pixel, blue first, the fourth without meaning; rows from the top.
struct Picture {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> pixels;
};

/// What the window shows now, without its border and title; or what the screen shows in its place.
Picture PictureOf(HWND window, bool onScreen);

/// Writes NAME.bmp to build/test-logs or to the folder that TARVEX_PICTURES names. Throws std::runtime_error.
void KeepPicture(const Picture& picture, const std::string& name);

}  // namespace tarvex::test
