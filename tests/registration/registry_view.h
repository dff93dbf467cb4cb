// The registry as a test looks at it: keys below HKEY_CLASSES_ROOT, by their full name. Free functions;
// one thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tarvex::test {

bool KeyExists(const std::wstring& name);
/// Number of values of a key; 0 when there is no such key.
unsigned ValueCount(const std::wstring& name);
/// A REG_SZ value; nothing when it is missing or of another type. An empty `value` is the default value.
std::optional<std::wstring> TextValue(const std::wstring& name, const wchar_t* value);
/// A REG_BINARY value, empty when it is missing.
std::vector<std::uint8_t> BytesValue(const std::wstring& name, const wchar_t* value);
/// Makes a key with one text value, for what registration is to replace.
void MakeKey(const std::wstring& name, const wchar_t* value, const std::wstring& text);
void DeleteKey(const std::wstring& name);

}  // namespace tarvex::test
