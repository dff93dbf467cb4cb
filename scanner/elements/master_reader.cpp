#include "scanner/elements/master_reader.h"

#include <ebml/EbmlUnicodeString.h>
#include <matroska/KaxBlock.h>
#include <matroska/KaxCluster.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "framework/log.h"
#include "scanner/elements/block_head.h"
#include "scanner/elements/element_ids.h"
#include "scanner/limits.h"
#include "scanner/source/byte_input.h"

namespace tarvex {

namespace {

class Depth {
 public:
  explicit Depth(int& depth) : m_depth(++depth) {}
  Depth(const Depth&) = delete;
  Depth& operator=(const Depth&) = delete;
  ~Depth() { --m_depth; }

 private:
  int& m_depth;
};

constexpr std::size_t kLongestHead = BlockHead::kMaxBytes + 1;  // and the number of frames
using BlockHeadBytes = std::array<std::uint8_t, kLongestHead>;

/// Gives a block its head and leaves the rest of its buffer as it is.
class HeadAloneInput : public ByteInput {
 public:
  HeadAloneInput(std::uint64_t position, std::span<const std::uint8_t> head)
      : ByteInput(position, head), m_head(head) {}

  std::uint32_t read(void* buffer, std::size_t size) override {
    std::memcpy(buffer, m_head.data(), std::min(size, m_head.size()));
    return static_cast<std::uint32_t>(size);
  }

 private:
  std::span<const std::uint8_t> m_head;
};

bool IsBlock(const libebml::EbmlElement& element) {
  const libebml::EbmlId id(element);
  return id == EBML_ID(libmatroska::KaxSimpleBlock) || id == EBML_ID(libmatroska::KaxBlock);
}

/// A block's first bytes, changed to those of a block without lacing where that makes no difference. Nothing for a lace
/// whose frame sizes decide whether it is a block at all.
std::optional<BlockHeadBytes> HeadAlone(std::span<const std::uint8_t> bytes, std::uint64_t size) {
  BlockHeadBytes head{};
  const std::size_t count =
      std::min(bytes.size(), static_cast<std::size_t>(std::min<std::uint64_t>(head.size(), size)));
  std::copy_n(bytes.begin(), count, head.begin());
  const auto parsed = ParseBlockHead(std::span(head).first(count));
  if (!parsed) return std::nullopt;
  if (parsed->lacing == BlockLacing::kNone) return head;
  const std::size_t frames = parsed->Length();  // their number, less one
  if (parsed->lacing != BlockLacing::kFixed || frames >= count || (size - frames - 1) % (head[frames] + 1U) != 0) {
    return std::nullopt;
  }
  head[parsed->flags] = static_cast<std::uint8_t>(head[parsed->flags] & ~BlockHead::kLacingFlags);
  return head;
}

/// Bytes that the element takes as an object, without its data. Each frame of a block is an object as well.
std::int64_t MemoryOf(const libebml::EbmlElement& element) {
  const unsigned frames =
      IsBlock(element) ? static_cast<const libmatroska::KaxInternalBlock&>(element).NumberFrames() : 0;
  return limits::kElementMemory + limits::kLaceFrameMemory * frames;
}

/// Bytes that its data take in memory.
std::int64_t DataOf(const libebml::EbmlElement& element) {
  if (element.IsMaster()) return 0;
  const auto size = static_cast<std::int64_t>(element.GetSize());
  const bool isText = dynamic_cast<const libebml::EbmlUnicodeString*>(&element) != nullptr;
  return isText ? size * limits::kMemoryPerTextByte : size;
}

class FunctionVisitor final : public ElementVisitor {
 public:
  explicit FunctionVisitor(const MasterReader::Visitor& visit) : m_visit(visit) {}
  bool Show(libebml::EbmlElement& element) override { return m_visit(element); }

 private:
  const MasterReader::Visitor& m_visit;
};

void RemoveChildren(libebml::EbmlMaster& master) {
  for (libebml::EbmlElement* child : master) const ElementPtr owner(child);
  master.RemoveAll();
}

}  // namespace

struct MasterReader::Level {
  libebml::EbmlMaster& master;
  ElementVisitor* visitor = nullptr;  // null: children are kept
  bool hasBlocks = false;             // to be shown as they lie in the window
  std::uint64_t end = 0;              // where the master ends, kNoEnd when that is not known
  ElementSearch search;
};

std::optional<std::uint64_t> MasterReader::Read(libebml::EbmlMaster& master) {
  m_frames = Frames::kRead;
  m_isHeader = true;
  m_memory = m_entryData = m_data = limits::kHeaderMemory;
  return ReadOutermost(master, nullptr);
}

std::optional<std::uint64_t> MasterReader::ReadEach(libebml::EbmlMaster& master, Frames frames, const Visitor& visit) {
  FunctionVisitor visitor(visit);
  return ReadEach(master, frames, visitor);
}

std::optional<std::uint64_t> MasterReader::ReadEach(libebml::EbmlMaster& master, Frames frames,
                                                    ElementVisitor& visitor) {
  m_frames = frames;
  m_isHeader = false;
  BeginEntry();
  return ReadOutermost(master, &visitor);
}

std::optional<std::uint64_t> MasterReader::ReadEntries(libebml::EbmlMaster& master, const DataLimits& limits,
                                                       ElementVisitor& visitor) {
  m_frames = Frames::kRead;
  m_isHeader = true;
  m_dataLimits = limits;
  m_data = limits.ofAll;
  m_shown = 0;
  BeginEntry();
  return ReadOutermost(master, &visitor);
}

std::optional<std::uint64_t> MasterReader::ReadOutermost(libebml::EbmlMaster& master, ElementVisitor* visitor) {
  m_window.Clear();
  m_stopped = m_isTooMuch = m_hasLeftOut = false;
  const LevelEnd end = ReadLevel(master, visitor);
  m_source.setFilePointer(static_cast<std::int64_t>(std::min(end.position, m_source.Length())));
  if (m_isHeader && (m_hasLeftOut || m_isTooMuch))
    LogFormat("<%s> what takes too much memory is left out", EBML_NAME(&master));
  return end.upperLevel > 0 ? std::optional(end.position) : std::nullopt;
}

MasterReader::LevelEnd MasterReader::ReadLevel(libebml::EbmlMaster& master, ElementVisitor* visitor) {
  const Depth depth(m_depth);
  RemoveChildren(master);
  const std::uint64_t end = master.IsFiniteSize() ? master.GetEndPosition() : ElementSearch::kNoEnd;
  const bool hasBlocks =
      visitor != nullptr && m_frames == Frames::kRead && libebml::EbmlId(master) == EBML_ID(libmatroska::KaxCluster);
  Level level{
      master, visitor, hasBlocks, end,
      ElementSearch(m_window, m_source.Length(), m_ids, EBML_CONTEXT(&master), ElementSearch::Unknown::kSkip, end)};
  LevelEnd at{0, master.GetDataStart()};
  while (at.upperLevel == 0 && !m_stopped && HasMemory(level)) {
    if (const auto next = level.hasBlocks ? ReadBlockInPlace(level, at.position) : std::nullopt) {
      at = *next;
      continue;
    }
    if (!BeforeReading(level)) break;
    auto found = level.search.From(at.position);
    if (!found) break;
    at = ReadChild(level, std::move(*found));
  }
  BeforeReading(level);
  return at.upperLevel > 0 ? at : LevelEnd{0, std::min(end, m_source.Length())};
}

// The rest of a master that takes too much is passed over, unless only reading tells where it ends.
bool MasterReader::HasMemory(const Level& level) {
  if (m_memory >= limits::kElementMemory) return true;
  m_isTooMuch = true;
  return m_isHeader && level.end == ElementSearch::kNoEnd;
}

// What was shown in place is used up first. False: show no more.
bool MasterReader::BeforeReading(const Level& level) {
  if (level.hasBlocks && !m_stopped) m_stopped = !level.visitor->BeforeReading();
  return !m_stopped;
}

// Reads as much of a Cluster at a time as the window holds; little of one whose end is not known.
std::span<const std::uint8_t> MasterReader::ClusterBytes(const Level& level, std::uint64_t position,
                                                         std::uint64_t atLeast) {
  constexpr std::uint64_t kLeast = 32 * 1024;
  constexpr std::uint64_t kMost = 1024 * 1024;
  if (const auto loaded = m_window.Loaded(position); loaded.size() >= atLeast) return loaded;
  if (!BeforeReading(level)) return {};
  const bool hasEnd = level.end != ElementSearch::kNoEnd;
  const std::uint64_t wanted = hasEnd ? std::clamp(level.end - position, kLeast, kMost) : kLeast;
  return m_window.From(position, static_cast<std::size_t>(atLeast), static_cast<std::size_t>(wanted));
}

// Finds a SimpleBlock that is to be shown, as the search would, but makes no element for it. Nothing when it is left to
// the search: any other element, and, in a parent whose end is not known, a block that nothing known follows.
std::optional<MasterReader::LevelEnd> MasterReader::ReadBlockInPlace(Level& level, std::uint64_t position) {
  constexpr std::uint64_t kSmallest = 4;
  constexpr std::uint64_t kGroup = 128 * 1024;
  const std::uint64_t end = std::min(level.end, m_source.Length());
  if (position >= end) return std::nullopt;
  const bool hasEnd = level.end != ElementSearch::kNoEnd;
  const std::uint64_t left = end - position;
  auto bytes = ClusterBytes(level, position, std::min<std::uint64_t>(ElementHeader::kMaxBytes, left));
  const auto header = ParseElementHeader(bytes);
  if (!header || !header->sizeKnown || header->size < kSmallest || header->size > limits::kPiece) return std::nullopt;
  const std::uint64_t whole = header->Length() + header->size;
  const std::uint64_t needed = hasEnd ? whole : whole + ElementHeader::kMaxBytes;
  if (needed > left) return std::nullopt;
  if (header->id != element_ids::kSimpleBlock) {
    if (whole <= kGroup) ClusterBytes(level, position, needed);  // for the search
    return std::nullopt;
  }
  if (bytes.size() < needed) bytes = ClusterBytes(level, position, needed);
  if (bytes.size() < needed || (!hasEnd && !level.search.MayGoOnAt(position + whole))) return std::nullopt;
  const auto data = bytes.subspan(header->Length(), static_cast<std::size_t>(header->size));
  if (m_block.Become(position, *header, data)) Show(level, m_block);
  return LevelEnd{0, position + whole};
}

// Answers where to go on, or that the level has ended.
MasterReader::LevelEnd MasterReader::ReadChild(Level& level, FoundElement found) {
  if (found.upperLevel > 0) return {found.upperLevel, found.position};
  const std::uint64_t begin = found.dataPosition;
  const LevelEnd end =
      found.element->IsMaster() ? ReadMasterChild(level, std::move(found)) : ReadValue(level, std::move(found));
  return end.upperLevel == 0 ? WithoutSwallowed(level, begin, end) : end;
}

// A child may have been no element at all, and have swallowed elements that belong further up. It is suspect when it
// reaches behind the end of the stream, or when nothing known follows it in a parent whose end is not known. Its bytes
// are then searched for such elements. On average each byte of the stream is searched once at most, so that the time
// stays in proportion to the stream.
MasterReader::LevelEnd MasterReader::WithoutSwallowed(Level& level, std::uint64_t begin, LevelEnd end) {
  const std::uint64_t length = m_source.Length();
  const std::uint64_t last = std::min(end.position, length);
  const bool isCut = end.position > length;
  if (begin >= last || (!isCut && (level.master.IsFiniteSize() || level.search.MayGoOnAt(last)))) return end;
  if (m_searchedAgain > length) return end;
  m_searchedAgain += last - begin;
  ElementSearch search(m_window, length, m_ids, EBML_CONTEXT(&level.master), ElementSearch::Unknown::kPassByteWise);
  const auto upper = search.UpperBetween(begin, last);
  return upper ? LevelEnd{upper->upperLevel, upper->position} : end;
}

MasterReader::LevelEnd MasterReader::ReadValue(Level& level, FoundElement found) {
  // Reading allocates what the element declares, so the stream must have so many bytes.
  const std::uint64_t size = found.element->GetSize();
  if (size > m_source.Length() - std::min(found.dataPosition, m_source.Length())) return {0, m_source.Length() + 1};
  if (!Fits(*found.element)) {
    LeaveOut(level);
    return {0, found.dataPosition + size};
  }
  ReadData(found);
  if (found.element->ValueIsSet()) Take(level, std::move(found.element));
  return {0, found.dataPosition + size};
}

void MasterReader::ReadData(FoundElement& found) {
  if (m_frames == Frames::kLeaveOut && IsBlock(*found.element) && ReadBlockHead(found)) return;
  const auto data = m_window.Loaded(found.dataPosition);
  if (!data.empty() && data.size() >= found.element->GetSize()) {
    ByteInput input(found.dataPosition, data.first(static_cast<std::size_t>(found.element->GetSize())));
    found.element->ReadData(input, libebml::SCOPE_ALL_DATA);
    return;
  }
  m_source.setFilePointer(static_cast<std::int64_t>(found.dataPosition));
  found.element->ReadData(m_source, libebml::SCOPE_ALL_DATA);
}

// False: the whole of it has to be read.
bool MasterReader::ReadBlockHead(FoundElement& found) {
  const auto bytes = m_window.From(found.dataPosition, kLongestHead, kLongestHead);
  const auto head = HeadAlone(bytes, found.element->GetSize());
  if (!head) return false;
  HeadAloneInput input(found.dataPosition, *head);
  found.element->ReadData(input, libebml::SCOPE_ALL_DATA);
  return true;
}

MasterReader::LevelEnd MasterReader::ReadMasterChild(Level& level, FoundElement found) {
  auto& child = static_cast<libebml::EbmlMaster&>(*found.element);
  const bool finite = child.IsFiniteSize();
  const std::uint64_t childEnd = finite ? child.GetEndPosition() : found.dataPosition;
  if (m_depth >= limits::kNesting) return {0, childEnd};
  const bool isEmpty = finite && childEnd == found.dataPosition;
  const bool isEntered = level.visitor != nullptr && level.visitor->Enter(child);
  const LevelEnd inner = isEmpty ? LevelEnd{0, childEnd} : ReadLevel(child, isEntered ? level.visitor : nullptr);
  if (isEntered) {
    m_stopped = !level.visitor->Leave() || m_stopped;
  } else {
    Take(level, std::move(found.element));
  }
  if (inner.upperLevel > 1) return {inner.upperLevel - 1, inner.position};
  if (!finite) return {0, inner.position};
  // A child of this level in the midst of that one, which is damaged then.
  const bool isOurs = inner.upperLevel == 1 && level.search.At(inner.position).has_value();
  return {0, isOurs ? inner.position : childEnd};
}

void MasterReader::Take(Level& level, ElementPtr element) {
  if (level.visitor != nullptr) return Show(level, *element);
  if (!Fits(*element)) return LeaveOut(level);
  m_memory -= MemoryOf(*element);
  if (m_isHeader) m_entryData -= DataOf(*element);
  level.master.PushElement(*element);
  static_cast<void>(element.release());
}

void MasterReader::Show(const Level& level, libebml::EbmlElement& element) {
  if (m_isHeader && (m_isTooMuch || ++m_shown > limits::kHeaderElements)) {
    m_stopped = m_shown > limits::kHeaderElements;
    return LeaveOut(level);
  }
  m_data -= m_isHeader ? std::min(m_dataLimits.ofEntry, m_data) - m_entryData : 0;
  m_stopped = !level.visitor->Show(element);
  BeginEntry();
}

// Below an entry this makes the whole entry too much.
void MasterReader::LeaveOut(const Level& level) {
  m_isTooMuch = true;
  if (level.visitor == nullptr) return;
  m_hasLeftOut = true;
  level.visitor->LeaveOut();
  BeginEntry();
}

void MasterReader::BeginEntry() {
  m_isTooMuch = false;
  m_memory = limits::kEntryMemory;
  m_entryData = std::min(m_dataLimits.ofEntry, m_data);
}

bool MasterReader::Fits(const libebml::EbmlElement& element) const {
  if (MemoryOf(element) > m_memory) return false;
  const bool isSmall = m_entryData / limits::kMemoryPerTextByte >= static_cast<std::int64_t>(element.GetSize());
  return !m_isHeader || isSmall || DataOf(element) <= m_entryData;
}

}  // namespace tarvex
