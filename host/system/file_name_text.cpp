#include "host/system/file_name_text.h"

#include "framework/unicode.h"

namespace tarvex::host {

std::string NarrowFileName(WideView name) {
  std::string out;
  while (!name.empty()) {
    const Utf16Step step = ReadUtf16(name);
    AppendUtf8(out, step.character);
    name.remove_prefix(step.length);
  }
  return out;
}

WideString WideFileName(std::string_view name) {
  WideString out;
  while (!name.empty()) {
    const Utf8Step step = ReadGeneralisedUtf8(name);
    AppendUtf16(out, step.valid ? step.character : kReplacementCharacter);
    name.remove_prefix(step.length);
  }
  return out;
}

}  // namespace tarvex::host
