// See type_text.h.
#include "tests/corpus/type_text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <span>

#include "framework/com_ptr.h"
#include "framework/media_type.h"

namespace tarvex::test {
namespace {

std::string Printed(const char* format, auto... values) {
  std::array<char, 40> text{};
  std::snprintf(text.data(), text.size(), format, values...);
  return text.data();
}

std::string Text(const GUID& guid) {
  const std::uint8_t* d = guid.Data4;
  const std::string rest = Printed("-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X", guid.Data2, guid.Data3, d[0], d[1],
                                   d[2], d[3], d[4], d[5], d[6], d[7]);
  return Printed("%08X", static_cast<unsigned>(guid.Data1)) + (rest == "-0000-0010-8000-00AA00389B71" ? "" : rest);
}

std::string Text(std::span<const std::uint8_t> block) {
  constexpr std::ptrdiff_t kShortestRun = 8;
  std::string text;
  for (auto at = block.begin(); at != block.end();) {
    const auto end = std::find_if(at, block.end(), [](std::uint8_t byte) { return byte != 0; });
    if (end - at >= kShortestRun) {
      text += '[' + std::to_string(end - at) + ']';
      at = end;
    } else {
      text += Printed("%02X", *at++);
    }
  }
  return text.empty() ? "-" : text;
}

}  // namespace

std::string OfferedType(IPin* pin) {
  ComPtr<IEnumMediaTypes> list;
  AM_MEDIA_TYPE* type = nullptr;
  if (FAILED(pin->EnumMediaTypes(list.Put())) || list->Next(1, &type, nullptr) != S_OK) return {};
  const MediaTypePtr owner(type);
  return Text(type->majortype) + ' ' + Text(type->subtype) + ' ' + Text(type->formattype) + ' ' +
         std::to_string(type->bFixedSizeSamples) + ' ' + std::to_string(type->bTemporalCompression) + ' ' +
         std::to_string(type->lSampleSize) + ' ' + Text({type->pbFormat, type->cbFormat}) +
         (type->pUnk == nullptr ? "" : " with pUnk");
}

}  // namespace tarvex::test
