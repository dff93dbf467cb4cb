// See block_order.h.
#include "tests/seeking/block_order.h"

#include <bit>

namespace tarvex::test {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::uint64_t kSegment = 0x18538067;
constexpr std::uint64_t kCluster = 0x1F43B675;
constexpr std::uint64_t kBlockGroup = 0xA0;
constexpr std::uint64_t kBlock = 0xA1;
constexpr std::uint64_t kSimpleBlock = 0xA3;

class Reader {
 public:
  explicit Reader(Bytes file) : m_file(file) {}

  /// False when something is not as simple as expected.
  bool Walk(std::size_t from, std::size_t end) {
    for (std::size_t at = from; at < end;) {
      std::size_t position = at;
      const std::uint64_t id = Number(position, false);
      std::uint64_t size = Number(position, true);
      if (m_broken) return false;
      if (size == kUnknown && (id == kSegment || id == kCluster)) size = end - position;
      if (size > end - position) return false;
      const std::size_t next = position + static_cast<std::size_t>(size);
      if (!Visit(id, at, position, next)) return false;
      at = next;
    }
    return true;
  }

  std::vector<BlockPlace> blocks;

 private:
  static constexpr std::uint64_t kUnknown = ~std::uint64_t{0};

  bool Visit(std::uint64_t id, std::size_t start, std::size_t data, std::size_t end) {
    // A Cluster of unknown size is left through the next one, which then seems to lie inside.
    if (id == kCluster) m_cluster = start;
    if (id == kSegment || id == kCluster || id == kBlockGroup) return Walk(data, end);
    if (id == kBlock || id == kSimpleBlock) AddBlock(data);
    return !m_broken;
  }

  void AddBlock(std::size_t at) {
    BlockPlace place{m_cluster, Number(at, true), 1};
    if (m_broken || at + 4 > m_file.size()) return;
    if ((m_file[at + 2] & 0x06) != 0) place.frames = m_file[at + 3] + std::size_t{1};
    blocks.push_back(place);
  }

  // A variable-length number; an identifier keeps its marker.
  std::uint64_t Number(std::size_t& at, bool withoutMarker) {
    const auto length = at < m_file.size() ? static_cast<std::size_t>(std::countl_zero(m_file[at])) + 1 : 9;
    if (length > 8 || length > m_file.size() - at) return m_broken = true, 0;
    std::uint64_t value = 0;
    for (std::size_t k = 0; k < length; ++k) value = value << 8 | m_file[at + k];
    at += length;
    const std::uint64_t marker = std::uint64_t{1} << (7 * length);
    if (!withoutMarker) return value;
    return value == 2 * marker - 1 ? kUnknown : value - marker;
  }

  Bytes m_file;
  std::uint64_t m_cluster = 0;
  bool m_broken = false;
};

}  // namespace

std::vector<BlockPlace> BlockOrder(Bytes file) {
  Reader reader(file);
  if (!reader.Walk(0, file.size())) return {};
  return reader.blocks;
}

}  // namespace tarvex::test
