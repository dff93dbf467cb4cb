// See mutator.h.
#include "fuzz/mutator.h"

#include <matroska/KaxSegment.h>

#include <algorithm>
#include <iterator>
#include <span>

#include "tests/support/ebml_writer.h"

namespace tarvex::fuzz {
namespace {

namespace id = test::id;
using Random = std::mt19937;

void AddMasters(const libebml::EbmlSemanticContext& parent, std::set<std::uint32_t>& masters) {
  for (std::size_t index = 0; index < EBML_CTX_SIZE(parent); ++index) {
    const auto& children = EBML_INFO_CONTEXT(EBML_CTX_IDX_INFO(parent, index));
    const std::uint32_t own = EBML_ID_VALUE(EBML_CTX_IDX_ID(parent, index));
    if (EBML_CTX_SIZE(children) != 0 && masters.insert(own).second) AddMasters(children, masters);
  }
}

std::ptrdiff_t At(std::size_t position) { return static_cast<std::ptrdiff_t>(position); }

/// What a size is turned into: nothing, everything, nearly right, or nonsense.
std::uint64_t OtherSize(std::uint64_t size, std::size_t fileSize, Random& random) {
  const std::uint64_t sizes[] = {0,
                                 size + 1 + random() % 16,
                                 size - std::min<std::uint64_t>(size, 1 + random() % 16),
                                 random() % (fileSize + 1),
                                 ~std::uint64_t{0},  // all ones: unknown
                                 std::uint64_t{random()} << random() % 28};
  return sizes[random() % std::size(sizes)];
}

}  // namespace

const std::set<std::uint32_t>& MasterIds() {
  static const auto masters = [] {
    std::set<std::uint32_t> all = {id::kEbml, id::kSegment};
    AddMasters(EBML_CLASS_CONTEXT(libmatroska::KaxSegment), all);
    return all;
  }();
  return masters;
}

// Masters are gone into, so that the list is flat; what is no element is passed byte by byte.
Mutator::Mutator(Bytes file) : m_file(std::move(file)) {
  for (std::size_t at = 0; at < m_file.size();) {
    const auto header = ParseElementHeader(std::span(m_file).subspan(at));
    const bool isMaster = header && MasterIds().contains(header->id);
    const bool isWhole = header && header->sizeKnown && header->size <= m_file.size() - at - header->Length();
    if (isMaster || isWhole) m_elements.push_back({at, *header});
    at += isMaster ? header->Length() : isWhole ? header->Length() + static_cast<std::size_t>(header->size) : 1;
  }
}

Mutator::Bytes Mutator::Mutated(std::uint_fast32_t seed) const {
  Random random(seed);
  Bytes bytes = m_file;
  for (auto changes = 1 + random() % 3; changes > 0 && !bytes.empty(); --changes) {
    if (random() % 2 == 0 && !m_elements.empty()) {
      ChangeElement(bytes, random);
    } else {
      Change(bytes, random);
    }
  }
  return bytes;
}

void Mutator::Change(Bytes& bytes, Random& random) const {
  const std::size_t at = random() % bytes.size();
  const std::size_t longest = random() % 4 == 0 ? bytes.size() / 4 + 1 : 200;
  const std::size_t length = std::min<std::size_t>(1 + random() % longest, bytes.size() - at);
  const auto first = bytes.begin() + At(at);
  const auto noise = [&random, kind = random() % 3] {
    return static_cast<std::uint8_t>(kind == 0 ? 0 : kind == 1 ? 0xFF : random());
  };
  switch (random() % 4) {
    case 0:
      for (auto count = 1 + random() % 8; count > 0; --count) {
        bytes[random() % bytes.size()] ^= static_cast<std::uint8_t>(1U << random() % 8);
      }
      break;
    case 1:
      return std::generate(first, first + At(length), noise);
    case 2:
      std::generate_n(std::inserter(bytes, first), std::min<std::size_t>(length, 200), noise);
      break;
    default:
      bytes.erase(first, first + At(length));
  }
}

// Earlier changes may have moved what is written over here; that is as good.
void Mutator::ChangeElement(Bytes& bytes, Random& random) const {
  const auto& [from, header] = m_elements[random() % m_elements.size()];
  const std::size_t to = std::min(m_elements[random() % m_elements.size()].position, bytes.size());
  const auto source = m_file.begin() + At(from);
  switch (random() % 3) {
    case 0: {
      const Bytes size =
          test::Vint(OtherSize(header.size, bytes.size(), random) & ((std::uint64_t{1} << 7 * header.sizeLength) - 1),
                     header.sizeLength);
      if (from + header.Length() <= bytes.size()) std::ranges::copy(size, bytes.begin() + At(from + header.idLength));
      break;
    }
    case 1:
      if (to + header.idLength <= bytes.size()) std::copy_n(source, header.idLength, bytes.begin() + At(to));
      break;
    default:
      const std::uint64_t whole = header.Length() + (header.sizeKnown ? header.size : 0);
      const std::uint64_t there = std::min<std::uint64_t>(whole, m_file.size() - from);
      bytes.insert(bytes.begin() + At(to), source, source + At(static_cast<std::size_t>(there)));
  }
}

}  // namespace tarvex::fuzz
