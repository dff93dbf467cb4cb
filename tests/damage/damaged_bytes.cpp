// See damaged_bytes.h.
#include "tests/damage/damaged_bytes.h"

#include <algorithm>
#include <span>

#include "tests/support/ebml_writer.h"

namespace tarvex::test {
namespace {

constexpr std::uint32_t kMasters[] = {id::kEbml,
                                      id::kSegment,
                                      id::kSeekHead,
                                      id::kSeek,
                                      id::kInfo,
                                      id::kTracks,
                                      id::kTrackEntry,
                                      id::kVideo,
                                      id::kAudio,
                                      id::kContentEncodings,
                                      id::kContentEncoding,
                                      id::kContentCompression,
                                      id::kCluster,
                                      id::kBlockGroup,
                                      id::kCues,
                                      id::kCuePoint,
                                      id::kCueTrackPositions,
                                      id::kChapters,
                                      id::kEditionEntry,
                                      id::kChapterAtom,
                                      id::kChapterDisplay,
                                      id::kTags};

bool IsMaster(std::uint32_t element) {
  return std::find(std::begin(kMasters), std::end(kMasters), element) != std::end(kMasters);
}

/// 0 for an empty range.
std::size_t Below(std::mt19937& random, std::size_t limit) { return limit == 0 ? 0 : random() % limit; }

/// What a size is turned into: nothing, everything, nearly right, or nonsense.
std::uint64_t OtherSize(std::uint64_t size, std::size_t fileSize, std::mt19937& random) {
  switch (random() % 6) {
    case 0:
      return 0;
    case 1:
      return size + 1 + random() % 16;
    case 2:
      return size - std::min<std::uint64_t>(size, 1 + random() % 16);
    case 3:
      return random() % (fileSize + 1);
    case 4:
      return ~std::uint64_t{0};  // all ones: unknown
    default:
      return std::uint64_t{random()} << random() % 28;
  }
}

}  // namespace

DamagedBytes::DamagedBytes(std::vector<std::uint8_t> file) : m_file(std::move(file)) { FindElements(); }

// Masters are gone into, so that the list is flat; what is no element is passed byte by byte.
void DamagedBytes::FindElements() {
  for (std::size_t at = 0; at < m_file.size();) {
    const auto header = ParseElementHeader(std::span(m_file).subspan(at));
    const std::size_t left = header ? m_file.size() - at - header->Length() : 0;
    const bool isMaster = header && IsMaster(header->id);
    if (!isMaster && (!header || !header->sizeKnown || header->size > left)) {
      ++at;
      continue;
    }
    m_elements.push_back({at, *header});
    at += header->Length() + (isMaster ? 0 : static_cast<std::size_t>(header->size));
  }
}

std::vector<std::uint8_t> DamagedBytes::CutAt(std::size_t size) const {
  return {m_file.begin(), m_file.begin() + static_cast<std::ptrdiff_t>(std::min(size, m_file.size()))};
}

std::vector<std::uint8_t> DamagedBytes::Mutated(std::uint32_t seed) const {
  Random random(seed);
  std::vector<std::uint8_t> bytes = m_file;
  for (auto changes = 1 + random() % 3; changes > 0; --changes) Change(bytes, random);
  return bytes;
}

void DamagedBytes::Change(std::vector<std::uint8_t>& bytes, Random& random) const {
  static constexpr void (DamagedBytes::*kChanges[])(std::vector<std::uint8_t>&, Random&) const = {
      &DamagedBytes::FlipBits, &DamagedBytes::OverwriteRun, &DamagedBytes::ChangeSize, &DamagedBytes::ChangeSize,
      &DamagedBytes::ChangeId, &DamagedBytes::Insert,       &DamagedBytes::Delete,     &DamagedBytes::RepeatElement};
  if (!bytes.empty()) (this->*kChanges[random() % std::size(kChanges)])(bytes, random);
}

void DamagedBytes::FlipBits(std::vector<std::uint8_t>& bytes, Random& random) const {
  for (auto count = 1 + random() % 8; count > 0; --count) {
    bytes[Below(random, bytes.size())] ^= static_cast<std::uint8_t>(1U << random() % 8);
  }
}

void DamagedBytes::OverwriteRun(std::vector<std::uint8_t>& bytes, Random& random) const {
  const std::size_t at = Below(random, bytes.size());
  const std::size_t longest = random() % 4 == 0 ? bytes.size() / 4 + 1 : 64;
  const std::size_t length = std::min(1 + Below(random, longest), bytes.size() - at);
  const auto kind = random() % 3;
  for (std::size_t k = at; k < at + length; ++k) {
    bytes[k] = kind == 0 ? 0 : kind == 1 ? 0xFF : static_cast<std::uint8_t>(random());
  }
}

// Earlier changes may have moved what is written over here; that is as good.
void DamagedBytes::ChangeSize(std::vector<std::uint8_t>& bytes, Random& random) const {
  if (m_elements.empty()) return;
  const Place& place = m_elements[Below(random, m_elements.size())];
  const unsigned length = place.header.sizeLength;
  const std::size_t at = place.position + place.header.idLength;
  if (at + length > bytes.size()) return;
  std::uint64_t size = OtherSize(place.header.size, bytes.size(), random);
  for (std::size_t k = at + length; k-- > at; size >>= 8) bytes[k] = static_cast<std::uint8_t>(size);
  const auto marker = static_cast<std::uint8_t>(0x80U >> (length - 1));
  bytes[at] = static_cast<std::uint8_t>((bytes[at] & (marker - 1U)) | marker);
}

void DamagedBytes::ChangeId(std::vector<std::uint8_t>& bytes, Random& random) const {
  if (m_elements.empty()) return;
  const Place& from = m_elements[Below(random, m_elements.size())];
  const Place& to = m_elements[Below(random, m_elements.size())];
  if (to.position + from.header.idLength > bytes.size()) return;
  std::copy_n(m_file.begin() + static_cast<std::ptrdiff_t>(from.position), from.header.idLength,
              bytes.begin() + static_cast<std::ptrdiff_t>(to.position));
}

void DamagedBytes::Insert(std::vector<std::uint8_t>& bytes, Random& random) const {
  const std::size_t at = Below(random, bytes.size() + 1);
  const ByteString noise = random() % 2 == 0 ? Noise(1 + random() % 200, random()) : Zeros(1 + random() % 200);
  bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(at), noise.begin(), noise.end());
}

void DamagedBytes::Delete(std::vector<std::uint8_t>& bytes, Random& random) const {
  const std::size_t at = Below(random, bytes.size());
  const std::size_t length = std::min<std::size_t>(1 + random() % 200, bytes.size() - at);
  const auto first = bytes.begin() + static_cast<std::ptrdiff_t>(at);
  bytes.erase(first, first + static_cast<std::ptrdiff_t>(length));
}

void DamagedBytes::RepeatElement(std::vector<std::uint8_t>& bytes, Random& random) const {
  if (m_elements.empty()) return;
  const Place& place = m_elements[Below(random, m_elements.size())];
  const std::size_t end =
      place.position + place.header.Length() + static_cast<std::size_t>(place.header.sizeKnown ? place.header.size : 0);
  const ByteString element(m_file.begin() + static_cast<std::ptrdiff_t>(place.position),
                           m_file.begin() + static_cast<std::ptrdiff_t>(std::min(end, m_file.size())));
  const Place& other = m_elements[Below(random, m_elements.size())];
  const auto at = static_cast<std::ptrdiff_t>(std::min(other.position, bytes.size()));
  bytes.insert(bytes.begin() + at, element.begin(), element.end());
}

}  // namespace tarvex::test
