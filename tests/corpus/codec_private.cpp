// See codec_private.h.
#include "tests/corpus/codec_private.h"

#include <bit>

namespace tarvex::test {
namespace {

struct Size {
  std::uint64_t value = 0;
  std::size_t length = 0;  ///< 0 when there is none
};

Size ReadSize(Bytes bytes) {
  if (bytes.empty() || bytes[0] == 0) return {};
  const auto length = static_cast<std::size_t>(std::countl_zero(bytes[0])) + 1;
  if (length > bytes.size()) return {};
  std::uint64_t value = bytes[0] & (0xFFU >> length);
  for (std::size_t k = 1; k < length; ++k) value = value << 8U | bytes[k];
  return {value, length};
}

}  // namespace

std::vector<std::uint8_t> FindCodecPrivate(Bytes file, const Blob& blob) {
  for (std::size_t at = 0; at + 2 < file.size(); ++at) {
    if (file[at] != 0x63 || file[at + 1] != 0xA2) continue;
    const Size size = ReadSize(file.subspan(at + 2));
    const std::size_t data = at + 2 + size.length;
    if (size.length == 0 || size.value != blob.size || file.size() - data < blob.size) continue;
    const Bytes found = file.subspan(data, static_cast<std::size_t>(blob.size));
    if (Sha1Of(found) == blob.sha1) return {found.begin(), found.end()};
  }
  return {};
}

}  // namespace tarvex::test
