#include "scanner/master_reader.h"

#include <algorithm>

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

std::optional<std::uint64_t> CMasterReader::Read(libebml::EbmlMaster& master) { return ReadOutermost(master, {}); }

std::optional<std::uint64_t> CMasterReader::ReadEach(libebml::EbmlMaster& master, const Visitor& visit) {
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
  return found.element->IsMaster() ? ReadMasterChild(level, std::move(found)) : ReadValue(level, std::move(found));
}

CMasterReader::LevelEnd CMasterReader::ReadValue(Level& level, FoundElement found) {
  // Reading allocates what the element declares, so that has to be there.
  const std::uint64_t size = found.element->GetSize();
  if (size > m_source.Length() - std::min(found.dataPosition, m_source.Length())) return {0, m_source.Length()};
  m_source.setFilePointer(static_cast<std::int64_t>(found.dataPosition));
  found.element->ReadData(m_source, libebml::SCOPE_ALL_DATA);
  if (found.element->ValueIsSet()) Take(level, std::move(found.element));
  return {0, found.dataPosition + size};
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
