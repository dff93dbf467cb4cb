#include "host/system/input_file.h"

#include <fmt/format.h>

#include <array>
#include <cstring>

#include "host/system/file_handle.h"
#include "host/system/file_name_text.h"
#include "host/system/host_error.h"

namespace tarvex::host {

namespace {

constexpr std::array<unsigned char, 4> kMagic = {0x1A, 0x45, 0xDF, 0xA3};

bool Exists(const WideString& path) { return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

bool IsFolder(const WideString& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

WideString Absolute(const WideString& path) {
  const DWORD size = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
  if (size == 0) return path;
  WideString full(size, L'\0');
  full.resize(GetFullPathNameW(path.c_str(), size, full.data(), nullptr));
  return full;
}

std::string ReasonOf(DWORD error) {
  switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
    case ERROR_BAD_NETPATH:
      return "no such file";
    case ERROR_ACCESS_DENIED:
      return "access denied";
    case ERROR_SHARING_VIOLATION:
      return "in use by another program";
    default:
      return fmt::format("cannot be read (error {})", error);
  }
}

}  // namespace

bool RunsUnderWine() { return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr; }

WideString FullPath(const std::string& name) {
  const WideString path = WideFileName(name);
  WideString full = Absolute(path);
  const bool looksLikeUnix = path.starts_with(L'/') && !path.starts_with(L"//");
  if (!looksLikeUnix || Exists(full) || !RunsUnderWine()) return full;
  WideString onUnixDrive = Absolute(L"Z:" + path);
  if (Exists(onUnixDrive)) return onUnixDrive;
  return full;
}

void RequireReadable(const WideString& path, const std::string& name) {
  if (IsFolder(path)) throw HostError(ExitCode::kNoSuchFile, name + ": is a folder");
  if (!FileHandle::OpenForReading(path)) throw HostError(ExitCode::kNoSuchFile, name + ": " + ReasonOf(GetLastError()));
}

bool BeginsLikeMatroska(const WideString& path) {
  const FileHandle file = FileHandle::OpenForReading(path);
  std::array<unsigned char, 4> start{};
  DWORD length = 0;
  return file && ReadFile(file.Get(), start.data(), static_cast<DWORD>(start.size()), &length, nullptr) &&
         length == start.size() && start == kMagic;
}

}  // namespace tarvex::host
