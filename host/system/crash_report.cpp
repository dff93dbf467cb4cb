#include "host/system/crash_report.h"

#include <fmt/format.h>

#include <iterator>

#include "framework/platform/platform.h"
#include "host/system/exit_code.h"

namespace tarvex::host {

namespace {

// The file name of the module that holds this address, cut to ASCII.
void NameModule(const void* address, char (&name)[MAX_PATH]) noexcept {
  HMODULE module = nullptr;
  constexpr DWORD kFlags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  if (!GetModuleHandleExW(kFlags, static_cast<LPCWSTR>(address), &module)) return;
  wchar_t path[MAX_PATH] = {};
  if (GetModuleFileNameW(module, path, MAX_PATH) == 0) return;
  const wchar_t* last = path;
  for (const wchar_t* letter = path; *letter != 0; ++letter) {
    if (*letter == L'\\') last = letter + 1;
  }
  for (std::size_t i = 0; last[i] != 0; ++i)
    name[i] = last[i] > 0x20 && last[i] < 0x7F ? static_cast<char>(last[i]) : '?';
}

// The heap may be what is broken, so nothing here takes memory from it.
LONG WINAPI Report(EXCEPTION_POINTERS* exception) {
  const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
  char name[MAX_PATH] = "unknown code";
  NameModule(record.ExceptionAddress, name);
  char text[MAX_PATH + 64] = {};
  const auto result = fmt::format_to_n(text, std::size(text), "mkvhost: crashed with 0x{:08X} in {}\n",
                                       static_cast<unsigned>(record.ExceptionCode), static_cast<const char*>(name));
  DWORD written = 0;
  const auto length = static_cast<DWORD>(result.out - text);
  WriteFile(GetStdHandle(STD_ERROR_HANDLE), text, length, &written, nullptr);
  TerminateProcess(GetCurrentProcess(), static_cast<UINT>(ExitCode::kInternal));
  return EXCEPTION_EXECUTE_HANDLER;
}

}  // namespace

void ReportCrashes() noexcept { SetUnhandledExceptionFilter(&Report); }

}  // namespace tarvex::host
