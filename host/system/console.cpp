#include "host/system/console.h"

#include <fmt/format.h>

#include <algorithm>

#include "framework/text_conversion.h"
#include "host/system/host_error.h"
#include "host/system/text_escape.h"

namespace tarvex::host {

namespace {

constexpr std::size_t kPiece = 16384;  // wide characters that a console takes at once

bool IsConsole(HANDLE handle) noexcept {
  DWORD mode = 0;
  return GetConsoleMode(handle, &mode) != FALSE;
}

bool WriteConsoleText(HANDLE handle, std::string_view text) {
  const WideString wide = WideFromUtf8(text);
  for (std::size_t done = 0; done < wide.size();) {
    const auto length = static_cast<DWORD>(std::min(kPiece, wide.size() - done));
    DWORD written = 0;
    if (!WriteConsoleW(handle, wide.data() + done, length, &written, nullptr) || written == 0) return false;
    done += written;
  }
  return true;
}

bool WriteBytes(HANDLE handle, std::string_view text) noexcept {
  while (!text.empty()) {
    const auto length = static_cast<DWORD>(std::min<std::size_t>(text.size(), 1u << 20));
    DWORD written = 0;
    if (!WriteFile(handle, text.data(), length, &written, nullptr) || written == 0) return false;
    text.remove_prefix(written);
  }
  return true;
}

bool Write(DWORD stream, std::string_view text) {
  HANDLE handle = GetStdHandle(stream);
  return IsConsole(handle) ? WriteConsoleText(handle, text) : WriteBytes(handle, text);
}

}  // namespace

void WriteOutput(std::string_view text) {
  if (!Write(STD_OUTPUT_HANDLE, text)) {
    throw HostError(ExitCode::kPlayback, fmt::format("cannot write the output (error {})", GetLastError()));
  }
}

void WriteError(std::string_view text) noexcept {
  try {
    Write(STD_ERROR_HANDLE, "mkvhost: " + EscapeForTerminal(text) + '\n');
  } catch (...) {
    WriteBytes(GetStdHandle(STD_ERROR_HANDLE), "mkvhost: out of memory\n");
  }
}

bool OutputIsTerminal() noexcept { return IsConsole(GetStdHandle(STD_OUTPUT_HANDLE)); }

int TerminalWidth() noexcept {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &info)) return 80;
  return std::max<int>(info.srWindow.Right - info.srWindow.Left + 1, 20);
}

}  // namespace tarvex::host
