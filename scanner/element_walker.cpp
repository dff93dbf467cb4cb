#include "scanner/element_walker.h"

#include <ebml/EbmlCrc32.h>
#include <matroska/KaxSeekHead.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <optional>
#include <span>

#include "scanner/byte_window.h"
#include "scanner/element_header.h"
#include "scanner/known_ids.h"

namespace tarvex {

namespace {

/// Shows libebml one element head and nothing behind it, so that judging a head costs the same wherever
/// it stands and whatever follows.
class CHeaderProbe : public libebml::IOCallback {
 public:
  CHeaderProbe(std::uint64_t position, std::span<const std::uint8_t> head) : m_position(position), m_head(head) {}

  std::uint32_t read(void* buffer, std::size_t size) override {
    if (size > m_head.size()) return 0;
    std::memcpy(buffer, m_head.data(), size);
    m_head = m_head.subspan(size);
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

struct FoundHead {
  std::uint64_t position = 0;  // of the element
  ElementHeader header;
  std::array<std::uint8_t, ElementHeader::kMaxBytes> bytes{};

  std::uint64_t DataPosition() const { return position + header.Length(); }
};

/// One element that stands below a context or above it.
struct FoundElement {
  ElementPtr element;
  std::uint64_t position = 0;
  std::uint64_t dataPosition = 0;
  int upperLevel = 0;  // 0 = child, above 0 = belongs that much further up, below 0 = global
};

/// Looks for the elements of one context, byte by byte.
class CElementSearch {
 public:
  CElementSearch(CAsyncCallback& source, const libebml::EbmlSemanticContext& context)
      : m_context(context), m_ids(context), m_window(source) {}

  /// The first that libebml takes for one at or after `position`.
  std::optional<FoundElement> From(std::uint64_t position) {
    while (const auto head = NextHead(position)) {
      FoundElement found = Create(*head);
      if (found.element) return found;
      position = head->position + 1;
    }
    return std::nullopt;
  }

 private:
  std::optional<FoundHead> NextHead(std::uint64_t position) {
    for (;;) {
      const auto bytes = m_window.From(position, ElementHeader::kMaxBytes);
      const auto next = std::find_if(bytes.begin(), bytes.end(), [this](auto b) { return m_ids.MayBeginWith(b); });
      if (bytes.empty()) return std::nullopt;
      position += static_cast<std::uint64_t>(next - bytes.begin());
      if (next == bytes.end()) continue;
      if (const auto head = HeadAt(position)) return head;
      ++position;
    }
  }

  std::optional<FoundHead> HeadAt(std::uint64_t position) {
    const auto bytes = m_window.From(position, ElementHeader::kMaxBytes);
    const auto header = ParseElementHeader(bytes.first(std::min(bytes.size(), ElementHeader::kMaxBytes)));
    if (!header || !m_ids.Contains(header->id)) return std::nullopt;
    // Otherwise the byte that begins it, a frequent one, would cost an element each time.
    const bool isChecksum = header->id == EBML_ID_VALUE(EBML_ID(libebml::EbmlCrc32));
    if (isChecksum && header->size != 4) return std::nullopt;
    FoundHead head{position, *header, {}};
    std::copy_n(bytes.begin(), header->Length(), head.bytes.begin());
    return head;
  }

  FoundElement Create(const FoundHead& head) {
    constexpr std::uint64_t kMaxDataSize = 0xFFFFFFFF;
    FoundElement found{nullptr, head.position, head.DataPosition(), 0};
    CHeaderProbe probe(head.position, std::span(head.bytes).first(head.header.Length()));
    found.element.reset(libebml::EbmlElement::FindNextElement(probe, m_context, found.upperLevel, kMaxDataSize, true));
    // Refused here, it may have found another in the remaining bytes of the head.
    if (found.element && found.element->GetElementPosition() != head.position) found.element.reset();
    return found;
  }

  const libebml::EbmlSemanticContext& m_context;
  const CKnownIds m_ids;
  CByteWindow m_window;
};

/// Holds what reading a master may hand back.
struct HandedUp {
  HandedUp() = default;
  HandedUp(const HandedUp&) = delete;
  HandedUp& operator=(const HandedUp&) = delete;
  ~HandedUp() { const ElementPtr owner(element); }

  libebml::EbmlElement* element = nullptr;
};

}  // namespace

ElementPtr CElementWalker::FindNextChild(const libebml::EbmlElement& parent) {
  const std::uint64_t start = Position();
  if (start >= m_source.Length()) return nullptr;
  CElementSearch search(m_source, EBML_CONTEXT(&parent));
  std::uint64_t position = start;
  while (auto found = search.From(position)) {
    if (found->upperLevel > 0) {
      MoveTo(start);
      return nullptr;
    }
    MoveTo(found->dataPosition);
    if (found->upperLevel == 0) return std::move(found->element);
    Skip(*found->element);
    position = Position();
  }
  MoveTo(m_source.Length());
  return nullptr;
}

void CElementWalker::ReadMaster(libebml::EbmlElement& element) {
  HandedUp found;
  int upperLevel = 0;
  element.Read(m_stream, EBML_CONTEXT(&element), upperLevel, found.element, true, libebml::SCOPE_ALL_DATA);
  if (found.element != nullptr) MoveTo(found.element->GetElementPosition());
}

void CElementWalker::Skip(libebml::EbmlElement& element) {
  if (element.IsFiniteSize()) {
    MoveTo(element.GetEndPosition());
  } else {
    SkipUnknownSize(element);
  }
}

// Below an element of unknown size another one of unknown size is not descended into: what it holds is
// passed like everything that is not known here.
void CElementWalker::SkipUnknownSize(libebml::EbmlElement& element) {
  CElementSearch search(m_source, EBML_CONTEXT(&element));
  std::uint64_t position = Position();
  while (const auto found = search.From(position)) {
    if (found->upperLevel > 0) {
      MoveTo(found->position);
      return;
    }
    MoveTo(found->dataPosition);
    if (found->element->IsFiniteSize()) Skip(*found->element);
    position = Position();
  }
  MoveTo(m_source.Length());
}

std::unique_ptr<libmatroska::KaxSegment> CElementWalker::FindSegment() {
  constexpr std::array<std::uint8_t, 4> kMagic = {0x1A, 0x45, 0xDF, 0xA3};
  std::array<std::uint8_t, kMagic.size()> first{};
  MoveTo(0);
  m_source.read(first.data(), first.size());
  if (first != kMagic) return nullptr;

  const std::uint32_t segmentId = EBML_ID_VALUE(EBML_ID(libmatroska::KaxSegment));
  constexpr std::uint64_t kTooLargeToSkip = 0x7FFFFFFF;  // where libebml stops taking it for an element
  CByteWindow window(m_source);
  for (std::uint64_t position = 0;;) {
    const auto header = ParseElementHeader(window.From(position, ElementHeader::kMaxBytes));
    if (!header) return nullptr;
    if (header->id == segmentId) {
      MoveTo(position);
      break;
    }
    if (!header->sizeKnown || header->size >= kTooLargeToSkip) return nullptr;
    position += header->Length();
    if (header->size <= m_source.Length() - std::min(position, m_source.Length())) position += header->size;
  }
  ElementPtr element(
      m_stream.FindNextID(EBML_INFO(libmatroska::KaxSegment), std::numeric_limits<std::uint64_t>::max()));
  auto* segment = ElementAs<libmatroska::KaxSegment>(element.get());
  if (segment != nullptr) static_cast<void>(element.release());
  return std::unique_ptr<libmatroska::KaxSegment>(segment);
}

std::unique_ptr<libmatroska::KaxCluster> CElementWalker::FindNextCluster(const libmatroska::KaxSegment& segment) {
  while (ElementPtr element = FindNextChild(segment)) {
    if (auto* cluster = ElementAs<libmatroska::KaxCluster>(element.get())) {
      static_cast<void>(element.release());
      return std::unique_ptr<libmatroska::KaxCluster>(cluster);
    }
    Skip(*element);
  }
  return nullptr;
}

std::uint64_t CElementWalker::SeekHeadPosition(const libmatroska::KaxSegment& segment, const libebml::EbmlId& id) {
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
