#include "scanner/master_reader.h"

#include <matroska/KaxBlock.h>

#include <algorithm>
#include <bit>
#include <cstring>

namespace tarvex {

namespace {

class CDepth {
 public:
  explicit CDepth(int& depth) : m_depth(++depth) {}
  CDepth(const CDepth&) = delete;
  CDepth& operator=(const CDepth&) = delete;
  ~CDepth() { --m_depth; }

 private:
  int& m_depth;
};

/// Gives a block its head and leaves the rest of its buffer as it is.
class CBlockHead : public libebml::IOCallback {
 public:
  CBlockHead(std::uint64_t position, std::span<const std::uint8_t> head) : m_position(position), m_head(head) {}

  std::uint32_t read(void* buffer, std::size_t size) override {
    std::memcpy(buffer, m_head.data(), std::min(size, m_head.size()));
    m_position += size;
    return static_cast<std::uint32_t>(size);
  }
  void setFilePointer(std::int64_t /*offset*/, libebml::seek_mode /*mode*/) override {}
  std::size_t write(const void* /*buffer*/, std::size_t /*size*/) override { return 0; }
  std::uint64_t getFilePointer() override { return m_position; }
  void close() override {}

 private:
  std::uint64_t m_position;
  std::span<const std::uint8_t> m_head;
};

bool IsBlock(const libebml::EbmlElement& element) {
  const libebml::EbmlId id(element);
  return id == EBML_ID(libmatroska::KaxSimpleBlock) || id == EBML_ID(libmatroska::KaxBlock);
}

// The flags follow the track number, whose first byte tells its length, and a 16-bit time.
bool IsUnlaced(std::span<const std::uint8_t> head) {
  constexpr std::uint8_t kLacing = 0x06;
  if (head.empty()) return false;
  const std::size_t flags = static_cast<std::size_t>(std::countl_zero(head[0])) + 1 + 2;
  return flags < head.size() && (head[flags] & kLacing) == 0;
}

void RemoveChildren(libebml::EbmlMaster& master) {
  for (libebml::EbmlElement* child : master) const ElementPtr owner(child);
  master.RemoveAll();
}

}  // namespace

struct CMasterReader::Level {
  libebml::EbmlMaster& master;
  const Visitor* visit = nullptr;  // null: children are kept
  CElementSearch search;
};

std::optional<std::uint64_t> CMasterReader::Read(libebml::EbmlMaster& master, Frames frames) {
  m_frames = frames;
  return ReadOutermost(master, {});
}

std::optional<std::uint64_t> CMasterReader::ReadEach(libebml::EbmlMaster& master, const Visitor& visit) {
  m_frames = Frames::kRead;
  return ReadOutermost(master, visit);
}

std::optional<std::uint64_t> CMasterReader::ReadOutermost(libebml::EbmlMaster& master, const Visitor& take) {
  m_window.Clear();
  m_elements = 0;
  const LevelEnd end = ReadLevel(master, take ? &take : nullptr);
  m_source.setFilePointer(static_cast<std::int64_t>(std::min(end.position, m_source.Length())));
  return end.upperLevel > 0 ? std::optional(end.position) : std::nullopt;
}

CMasterReader::LevelEnd CMasterReader::ReadLevel(libebml::EbmlMaster& master, const Visitor* visit) {
  const CDepth depth(m_depth);
  RemoveChildren(master);
  const std::uint64_t end = master.IsFiniteSize() ? master.GetEndPosition() : CElementSearch::kNoEnd;
  Level level{
      master, visit,
      CElementSearch(m_window, m_source.Length(), m_ids, EBML_CONTEXT(&master), CElementSearch::Unknown::kSkip, end)};
  LevelEnd at{0, master.GetDataStart()};
  while (at.upperLevel == 0 && m_elements < kMaxElements) {
    auto found = level.search.From(at.position);
    if (!found) return {0, std::min(end, m_source.Length())};
    at = ReadChild(level, std::move(*found));
  }
  return at.upperLevel > 0 ? at : LevelEnd{0, std::min(end, m_source.Length())};
}

// Where to go on, or that the level has ended.
CMasterReader::LevelEnd CMasterReader::ReadChild(Level& level, FoundElement found) {
  if (found.upperLevel > 0) return {found.upperLevel, found.position};
  const std::uint64_t begin = found.dataPosition;
  const LevelEnd end =
      found.element->IsMaster() ? ReadMasterChild(level, std::move(found)) : ReadValue(level, std::move(found));
  return end.upperLevel == 0 ? WithoutSwallowed(level, begin, end) : end;
}

// A child that reaches behind the end of the stream, or, in a parent without an end, is followed by nothing
// that makes sense, may have been none, and have swallowed what belongs further up. Each byte of the stream
// is searched for that once at most, on average, so that the time stays in proportion to the stream.
CMasterReader::LevelEnd CMasterReader::WithoutSwallowed(Level& level, std::uint64_t begin, LevelEnd end) {
  const std::uint64_t length = m_source.Length();
  const std::uint64_t last = std::min(end.position, length);
  const bool isCut = end.position > length;
  if (begin >= last || (!isCut && (level.master.IsFiniteSize() || level.search.MayGoOnAt(last)))) return end;
  if (m_searchedAgain > length) return end;
  m_searchedAgain += last - begin;
  CElementSearch search(m_window, length, m_ids, EBML_CONTEXT(&level.master), CElementSearch::Unknown::kPassByteWise);
  const auto upper = search.UpperBetween(begin, last);
  return upper ? LevelEnd{upper->upperLevel, upper->position} : end;
}

CMasterReader::LevelEnd CMasterReader::ReadValue(Level& level, FoundElement found) {
  // Reading allocates what the element declares, so that has to be there.
  const std::uint64_t size = found.element->GetSize();
  if (size > m_source.Length() - std::min(found.dataPosition, m_source.Length())) return {0, m_source.Length() + 1};
  ReadData(found);
  if (found.element->ValueIsSet()) Take(level, std::move(found.element));
  return {0, found.dataPosition + size};
}

void CMasterReader::ReadData(FoundElement& found) {
  if (m_frames == Frames::kLeaveOut && IsBlock(*found.element) && ReadBlockHead(found)) return;
  m_source.setFilePointer(static_cast<std::int64_t>(found.dataPosition));
  found.element->ReadData(m_source, libebml::SCOPE_ALL_DATA);
}

// False for a laced block, whose frame sizes decide whether it is one at all.
bool CMasterReader::ReadBlockHead(FoundElement& found) {
  constexpr std::size_t kLongestHead = 8 + 2 + 1;
  const auto bytes = m_window.From(found.dataPosition, kLongestHead, kLongestHead);
  const auto head = bytes.first(static_cast<std::size_t>(
      std::min<std::uint64_t>(std::min(bytes.size(), kLongestHead), found.element->GetSize())));
  if (!IsUnlaced(head)) return false;
  CBlockHead input(found.dataPosition, head);
  found.element->ReadData(input, libebml::SCOPE_ALL_DATA);
  return true;
}

CMasterReader::LevelEnd CMasterReader::ReadMasterChild(Level& level, FoundElement found) {
  auto& child = static_cast<libebml::EbmlMaster&>(*found.element);
  const bool finite = child.IsFiniteSize();
  const std::uint64_t childEnd = finite ? child.GetEndPosition() : found.dataPosition;
  if (m_depth >= kMaxDepth) return {0, childEnd};
  const LevelEnd inner = ReadLevel(child, nullptr);
  Take(level, std::move(found.element));
  if (inner.upperLevel > 1) return {inner.upperLevel - 1, inner.position};
  if (!finite) return {0, inner.position};
  // A child of ours in the midst of that one, which therefore is damaged.
  const bool isOurs = inner.upperLevel == 1 && level.search.At(inner.position).has_value();
  return {0, isOurs ? inner.position : childEnd};
}

void CMasterReader::Take(Level& level, ElementPtr element) {
  if (level.visit != nullptr) {
    (*level.visit)(*element);
    m_elements = 0;
    return;
  }
  ++m_elements;
  level.master.PushElement(*element);
  static_cast<void>(element.release());
}

}  // namespace tarvex
