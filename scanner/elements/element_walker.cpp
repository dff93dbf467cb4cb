#include "scanner/elements/element_walker.h"

#include <matroska/KaxSeekHead.h>

#include <algorithm>
#include <array>
#include <limits>

#include "framework/big_endian.h"
#include "scanner/elements/element_header.h"
#include "scanner/elements/element_ids.h"
#include "scanner/limits.h"
#include "scanner/source/byte_window.h"

namespace tarvex {

ElementSearch ElementWalker::SearchBelow(const libebml::EbmlElement& parent) {
  m_window.Clear();
  return {m_window, m_source.Length(), m_ids, EBML_CONTEXT(&parent), ElementSearch::Unknown::kPassByteWise};
}

// A head may reach into the zero that follows the stream. A move beyond the stream would be refused.
std::uint64_t ElementWalker::DataPosition(const FoundElement& found) const {
  return std::min(found.dataPosition, m_source.Length());
}

ElementPtr ElementWalker::FindNextChild(const libebml::EbmlElement& parent) {
  const std::uint64_t start = Position();
  if (start >= m_source.Length()) return nullptr;
  auto found = SearchBelow(parent).From(start);
  if (!found) {
    MoveTo(m_source.Length());
    return nullptr;
  }
  MoveTo(found->upperLevel > 0 ? start : DataPosition(*found));
  return found->upperLevel > 0 ? nullptr : std::move(found->element);
}

void ElementWalker::ReadMaster(libebml::EbmlMaster& element) {
  if (const auto end = m_masterReader.Read(element)) MoveTo(*end);
}

void ElementWalker::ReadEachChild(libebml::EbmlMaster& element, MasterReader::Frames frames, ElementVisitor& visitor) {
  if (const auto end = m_masterReader.ReadEach(element, frames, visitor)) MoveTo(*end);
}

void ElementWalker::ReadEachChild(libebml::EbmlMaster& element, MasterReader::Frames frames,
                                  const MasterReader::Visitor& visit) {
  if (const auto end = m_masterReader.ReadEach(element, frames, visit)) MoveTo(*end);
}

void ElementWalker::ReadEntries(libebml::EbmlMaster& list, const MasterReader::DataLimits& limits,
                                ElementVisitor& visitor) {
  if (const auto end = m_masterReader.ReadEntries(list, limits, visitor)) MoveTo(*end);
}

void ElementWalker::Skip(libebml::EbmlElement& element) {
  if (element.IsFiniteSize()) {
    MoveTo(element.GetEndPosition());
  } else {
    SkipUnknownSize(element);
  }
}

// Below an element of unknown size another one of unknown size is not descended into: what it holds is
// passed like everything that is not known here.
void ElementWalker::SkipUnknownSize(libebml::EbmlElement& element) {
  ElementSearch search = SearchBelow(element);
  std::uint64_t position = Position();
  while (const auto found = search.From(position)) {
    if (found->upperLevel > 0) {
      MoveTo(found->position);
      return;
    }
    MoveTo(DataPosition(*found));
    if (found->element->IsFiniteSize()) Skip(*found->element);
    position = Position();
  }
  MoveTo(m_source.Length());
}

std::unique_ptr<libmatroska::KaxSegment> ElementWalker::FindSegment() {
  std::array<std::uint8_t, sizeof(element_ids::kEbmlHead)> first{};
  MoveTo(0);
  m_source.read(first.data(), first.size());
  if (BigEndian(first) != element_ids::kEbmlHead) return nullptr;

  constexpr std::size_t kChunk = 1024;  // there may be many small elements
  m_window.Clear();
  for (std::uint64_t position = 0;;) {
    const auto header = ParseElementHeader(m_window.From(position, ElementHeader::kMaxBytes, kChunk));
    if (!header) return nullptr;
    if (header->id == element_ids::kSegment) {
      MoveTo(position);
      break;
    }
    if (!header->sizeKnown || header->size >= limits::kElement) return nullptr;
    position += header->Length();
    if (header->size <= m_source.Length() - std::min(position, m_source.Length())) position += header->size;
  }
  ElementPtr element(
      m_stream.FindNextID(EBML_INFO(libmatroska::KaxSegment), std::numeric_limits<std::uint64_t>::max()));
  auto* segment = ElementAs<libmatroska::KaxSegment>(element.get());
  if (segment != nullptr) static_cast<void>(element.release());
  return std::unique_ptr<libmatroska::KaxSegment>(segment);
}

std::unique_ptr<libmatroska::KaxCluster> ElementWalker::FindNextCluster(const libmatroska::KaxSegment& segment) {
  while (ElementPtr element = FindNextChild(segment)) {
    if (auto* cluster = ElementAs<libmatroska::KaxCluster>(element.get())) {
      static_cast<void>(element.release());
      return std::unique_ptr<libmatroska::KaxCluster>(cluster);
    }
    Skip(*element);
  }
  return nullptr;
}

std::uint64_t ElementWalker::SeekHeadPosition(const libmatroska::KaxSegment& segment, const libebml::EbmlId& id) {
  const ElementPtr seekHead = FindNextChild(segment);
  if (ElementAs<libmatroska::KaxSeekHead>(seekHead.get()) == nullptr) return 0;
  while (const ElementPtr child = FindNextChild(*seekHead)) {
    auto* seek = ElementAs<libmatroska::KaxSeek>(child.get());
    if (seek == nullptr) {
      Skip(*child);
      continue;
    }
    ReadMaster(*seek);
    if (seek->IsEbmlId(id)) return segment.GetGlobalPosition(static_cast<std::uint64_t>(seek->Location()));
  }
  return 0;
}

}  // namespace tarvex
