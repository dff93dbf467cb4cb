// The registry entries of the Matroska stream type.
#include "module/stream_type_keys.h"

#include <string>

#include "framework/platform/platform.h"
#include "framework/registry_key.h"
#include "include/tarvex/class_ids.h"

namespace tarvex {

namespace {

// At offset 0, four bytes, no mask: the EBML signature.
constexpr wchar_t kCheckBytes[] = L"0,4,,1A45DFA3";

// {E436EBB5-524F-11CE-9F53-0020AF0BA770}: the platform's asynchronous file source.
constexpr GUID kAsyncReader = {0xE436EBB5, 0x524F, 0x11CE, {0x9F, 0x53, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};

std::wstring StreamTypeKeyName(const GUID& majorType) {
  return L"Media Type\\" + RegistryName(majorType) + L"\\" + RegistryName(MEDIASUBTYPE_MatroskaStream);
}

// An entry for an extension names a source of its own and wins over the check bytes.
void DeleteExtensionKeys() {
  for (const wchar_t* extension : {L".mkv", L".mka", L".mks", L".webm"}) {
    static_cast<void>(DeleteRegistryTree(HKEY_CLASSES_ROOT, std::wstring(L"Media Type\\Extensions\\") + extension));
  }
}

}  // namespace

void WriteStreamTypeKeys() noexcept try {
  RegistryKey key;
  if (SUCCEEDED(key.Create(HKEY_CLASSES_ROOT, StreamTypeKeyName(MEDIATYPE_Stream)))) {
    static_cast<void>(key.SetText(L"0", kCheckBytes));
    static_cast<void>(key.SetText(L"Source Filter", RegistryName(kAsyncReader)));
  }
  // The same entry without a major type would be found first.
  static_cast<void>(DeleteRegistryTree(HKEY_CLASSES_ROOT, StreamTypeKeyName(GUID_NULL)));
  DeleteExtensionKeys();
} catch (...) {
  return;  // lack of memory; see the header
}

void DeleteStreamTypeKeys() noexcept try {
  static_cast<void>(DeleteRegistryTree(HKEY_CLASSES_ROOT, StreamTypeKeyName(MEDIATYPE_Stream)));
} catch (...) {
  return;  // lack of memory; see the header
}

}  // namespace tarvex
