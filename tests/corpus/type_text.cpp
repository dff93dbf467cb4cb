// See type_text.h.
#include "tests/corpus/type_text.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cstdint>
#include <span>

#include "framework/com_ptr.h"
#include "framework/media_type.h"

namespace tarvex::test {
namespace {

std::string Text(const GUID& guid) {
  const std::span d(guid.Data4);
  const std::string rest = fmt::format("-{:04X}-{:04X}-{:02X}-{:02X}", guid.Data2, guid.Data3,
                                       fmt::join(d.first(2), ""), fmt::join(d.subspan(2), ""));
  return fmt::format("{:08X}{}", guid.Data1, rest == "-0000-0010-8000-00AA00389B71" ? "" : rest);
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
      text += fmt::format("{:02X}", *at++);
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
  return fmt::format("{} {} {} {:d} {:d} {} {}{}", Text(type->majortype), Text(type->subtype), Text(type->formattype),
                     type->bFixedSizeSamples, type->bTemporalCompression, type->lSampleSize,
                     Text({type->pbFormat, type->cbFormat}), type->pUnk == nullptr ? "" : " with pUnk");
}

}  // namespace tarvex::test
