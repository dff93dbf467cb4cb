#include "pages/version_line.h"

#include <cstddef>
#include <cstring>
#include <optional>
#include <span>

namespace tarvex {

namespace {

std::span<const std::byte> VersionResource(HMODULE module) {
  HRSRC found = FindResourceW(module, MAKEINTRESOURCEW(VS_VERSION_INFO), VS_FILE_INFO);
  HGLOBAL loaded = found != nullptr ? LoadResource(module, found) : nullptr;
  const void* bytes = loaded != nullptr ? LockResource(loaded) : nullptr;
  if (bytes == nullptr) return {};
  return {static_cast<const std::byte*>(bytes), SizeofResource(module, found)};
}

// Published layout: three 16-bit fields, the key "VS_VERSION_INFO" with its end, padding to a multiple of
// four, and the fixed part.
std::optional<VS_FIXEDFILEINFO> FixedPart(std::span<const std::byte> resource) {
  constexpr std::size_t kOffset = (3 * sizeof(WORD) + sizeof L"VS_VERSION_INFO" + 3) / 4 * 4;
  VS_FIXEDFILEINFO info{};
  if (resource.size() < kOffset + sizeof info) return std::nullopt;
  std::memcpy(&info, resource.data() + kOffset, sizeof info);
  if (info.dwSignature != VS_FFI_SIGNATURE) return std::nullopt;
  return info;
}

}  // namespace

WideString VersionLine(HMODULE module) {
  const auto info = FixedPart(VersionResource(module));
  if (!info) return {};
  WideString line = L"Version ";
  line += std::to_wstring(HIWORD(info->dwFileVersionMS)) + L'.' + std::to_wstring(LOWORD(info->dwFileVersionMS)) + L'.';
  return line + std::to_wstring(HIWORD(info->dwFileVersionLS)) + L'.' + std::to_wstring(LOWORD(info->dwFileVersionLS));
}

}  // namespace tarvex
