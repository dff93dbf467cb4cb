// Looking for the elements that mean something at one place of the tree. Made for one search on the
// thread that drives the scanner; moves the byte source's position.
#pragma once

#include <ebml/EbmlElement.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <span>

#include "scanner/elements/element_header.h"
#include "scanner/elements/known_ids.h"
#include "scanner/source/byte_window.h"

namespace tarvex {

using ElementPtr = std::unique_ptr<libebml::EbmlElement>;

struct FoundElement {
  ElementPtr element;
  std::uint64_t position = 0;
  std::uint64_t dataPosition = 0;
  int upperLevel = 0;  // 0 = child, above 0 = belongs that much further up
};

/// Decides like libebml what is an element, but asks it only about identifiers that are known here, one head at a time.
/// So a search costs the same for every byte that it passes, whatever the bytes are. It also finds elements in the last
/// bytes of a stream, where libebml gives up early.
class ElementSearch {
 public:
  enum class Unknown : std::uint8_t {
    kPassByteWise,  ///< unknown elements and voids: go one byte further
    kSkip,          ///< go behind their data, where it lies within the parent and hides nothing from further up
  };

  static constexpr std::uint64_t kNoEnd = std::numeric_limits<std::uint64_t>::max();

  /// `end` is where the parent ends; kNoEnd when elements may reach beyond it.
  ElementSearch(ByteWindow& window, std::uint64_t streamLength, KnownIdTables& ids,
                const libebml::EbmlSemanticContext& context, Unknown unknown, std::uint64_t end = kNoEnd)
      : m_window(window),
        m_streamLength(streamLength),
        m_context(context),
        m_ids(ids.For(context)),
        m_unknown(unknown),
        m_end(end) {}

  /// The first element at or after `position`, without the global ones (checksums and voids).
  std::optional<FoundElement> From(std::uint64_t position);

  /// The one that begins exactly at `position`.
  std::optional<FoundElement> At(std::uint64_t position);

  /// The stream ends here, or something known begins.
  bool MayGoOnAt(std::uint64_t position);

  /// The first in this range that belongs further up and whose identifier is too long to occur by chance.
  std::optional<FoundElement> UpperBetween(std::uint64_t begin, std::uint64_t end);

 private:
  /// An end behind the stream's does not count: the parent is cut, or its size is damaged.
  bool HasEnd() const { return m_end <= m_streamLength; }
  std::optional<FoundElement> LookAt(std::uint64_t position, std::span<const std::uint8_t> bytes);
  std::size_t PassUnknown(std::uint64_t position, std::span<const std::uint8_t> bytes) const;
  std::size_t WithoutHidden(std::uint64_t position, std::size_t step);
  std::size_t PassChecksum(std::uint64_t position, const ElementHeader& header) const;
  bool IsSkippable(std::uint64_t position, const ElementHeader& header) const;
  std::optional<FoundElement> Create(std::uint64_t position, const ElementHeader& header) const;

  ByteWindow& m_window;
  const std::uint64_t m_streamLength;
  const libebml::EbmlSemanticContext& m_context;
  const KnownIds& m_ids;
  const Unknown m_unknown;
  const std::uint64_t m_end;
};

}  // namespace tarvex
