// Pictures of windows, for people to look at. Thread of the window, or any other of its process.
#pragma once

#include <string>

#include "framework/platform/platform.h"

namespace tarvex::test {

/// Writes what the window shows now, without its border and title, to NAME.png. Throws std::runtime_error.
void KeepPicture(HWND window, const std::string& name);

}  // namespace tarvex::test
