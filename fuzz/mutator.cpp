// See mutator.h.
#include "fuzz/mutator.h"

#include <matroska/KaxSegment.h>

#include <algorithm>
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

Mutator::Bytes Mutator::CopyOf(const Place& element) const {
  const std::uint64_t size = element.header.Length() + (element.header.sizeKnown ? element.header.size : 0);
  const auto first = m_file.begin() + At(element.position);
  return {first, first + At(std::min<std::uint64_t>(size, m_file.size() - element.position))};
}

Mutator::Bytes Mutator::Mutated(std::uint_fast32_t seed) const {
  Random random(seed);
  Bytes bytes = m_file;
  for (auto changes = 1 + random() % 3; changes > 0 && !bytes.empty(); --changes) Change(bytes, random);
  return bytes;
}

// One run of bytes goes, which may be empty, and another one comes. Earlier changes may have moved the element that
// stands there in the file; that is as good.
void Mutator::Change(Bytes& bytes, Random& random) const {
  const auto any = [&] { return m_elements.empty() ? Place() : m_elements[random() % m_elements.size()]; };
  const auto& [position, header] = any();
  const Bytes other = CopyOf(any());
  const std::size_t at = random() % bytes.size();
  const std::size_t length = 1 + random() % (random() % 4 == 0 ? bytes.size() / 4 + 1 : 200);
  const Bytes noises[] = {Bytes(length, 0), Bytes(length, 0xFF), test::Noise(length, random())};
  const Bytes& noise = noises[random() % 3];
  const auto flipped = static_cast<std::uint8_t>(bytes[at] ^ 1U << random() % 8);
  const std::uint64_t size =
      OtherSize(header.size, bytes.size(), random) & ((std::uint64_t{1} << 7 * header.sizeLength) - 1);
  const struct {
    std::size_t at, gone;
    Bytes come;
  } changes[] = {
      {at, 1, {flipped}},
      {at, length, noise},
      {at, 0, {noise.begin(), noise.begin() + At(std::min<std::size_t>(length, 200))}},
      {at, length, {}},
      {position, 0, other},
      {position,
       header.idLength,
       {other.begin(), other.begin() + std::min<std::ptrdiff_t>(header.idLength, std::ssize(other))}},
      {position + header.idLength, header.sizeLength, test::Vint(size, header.sizeLength)},
  };
  const auto& change = changes[random() % std::size(changes)];
  const auto first = bytes.begin() + At(std::min(change.at, bytes.size()));
  const auto last = first + std::min(At(change.gone), bytes.end() - first);
  bytes.insert(bytes.erase(first, last), change.come.begin(), change.come.end());
}

}  // namespace tarvex::fuzz
