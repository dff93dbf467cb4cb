// The registry entries of the Matroska stream type.
#include "module/stream_type_keys.h"

#include <array>
#include <string>

#include "framework/platform/platform.h"
#include "include/tarvex/class_ids.h"
#include "module/registry_key.h"

namespace tarvex {

namespace {

// At offset 0, four bytes, no mask: the EBML signature.
constexpr wchar_t kCheckBytes[] = L"0,4,,1A45DFA3";

// {E436EBB5-524F-11CE-9F53-0020AF0BA770}: the platform's asynchronous file source.
constexpr GUID kAsyncReader = {0xE436EBB5, 0x524F, 0x11CE, {0x9F, 0x53, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};

std::wstring GuidText(const GUID& guid) {
  std::array<wchar_t, 39> text{};  // braces, digits and the end
  StringFromGUID2(guid, text.data(), static_cast<int>(text.size()));
  return text.data();
}

std::wstring StreamTypeKeyName(const GUID& majorType) {
  return L"Media Type\\" + GuidText(majorType) + L"\\" + GuidText(MEDIASUBTYPE_MatroskaStream);
}

// An entry for an extension names a source of its own and wins over the check bytes.
void DeleteExtensionKeys() {
  const CRegistryKey extensions = CRegistryKey::Open(HKEY_CLASSES_ROOT, L"Media Type\\Extensions");
  for (const wchar_t* extension : {L".mkv", L".mka", L".mks", L".webm"}) extensions.DeleteSubkey(extension);
}

}  // namespace

void WriteStreamTypeKeys() noexcept try {
  const CRegistryKey key = CRegistryKey::Create(HKEY_CLASSES_ROOT, StreamTypeKeyName(MEDIATYPE_Stream).c_str());
  key.SetString(L"0", kCheckBytes);
  key.SetString(L"Source Filter", GuidText(kAsyncReader));
  // The same entry without a major type would be found first.
  CRegistryKey(HKEY_CLASSES_ROOT).DeleteSubkey(StreamTypeKeyName(GUID_NULL).c_str());
  DeleteExtensionKeys();
} catch (...) {
  return;  // lack of memory; see the header
}

void DeleteStreamTypeKeys() noexcept try {
  CRegistryKey(HKEY_CLASSES_ROOT).DeleteSubkey(StreamTypeKeyName(MEDIATYPE_Stream).c_str());
} catch (...) {
  return;  // lack of memory; see the header
}

}  // namespace tarvex
