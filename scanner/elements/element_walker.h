// Walking a stream's elements: the steps that every part of the scanner shares. Made by the scanner for
// one piece of work on its stream; owns nothing of it. Runs on the thread that drives the scanner.
#pragma once

#include <ebml/EbmlElement.h>
#include <ebml/EbmlMaster.h>
#include <ebml/EbmlStream.h>
#include <matroska/KaxCluster.h>
#include <matroska/KaxSegment.h>

#include <cstdint>
#include <memory>

#include "scanner/elements/element_search.h"
#include "scanner/elements/master_reader.h"
#include "scanner/source/async_callback.h"

namespace tarvex {

/// The element as a `T`, or null when it is of another kind.
template <class T>
T* ElementAs(libebml::EbmlElement* element) {
  return element != nullptr && libebml::EbmlId(*element) == EBML_ID(T) ? static_cast<T*>(element) : nullptr;
}
template <class T>
const T* ElementAs(const libebml::EbmlElement* element) {
  return element != nullptr && libebml::EbmlId(*element) == EBML_ID(T) ? static_cast<const T*>(element) : nullptr;
}

/// Every walk moves forward and ends at the end of the stream at the latest, whatever the stream holds.
class ElementWalker {
 public:
  ElementWalker(libebml::EbmlStream& stream, CAsyncCallback& source) : m_stream(stream), m_source(source) {}
  ElementWalker(const ElementWalker&) = delete;
  ElementWalker& operator=(const ElementWalker&) = delete;

  /// The next element below `parent` from the current position on; the position moves to its data. Unknown elements and
  /// voids are passed byte by byte. Null at the end of the stream, and in front of an element that belongs further up:
  /// then the position stays as it was.
  ElementPtr FindNextChild(const libebml::EbmlElement& parent);

  /// Reads a master with all below it, as far as the limits allow. If an element that belongs further up ends it, the
  /// position is there.
  void ReadMaster(libebml::EbmlMaster& element);
  /// As ReadMaster, but shows each child in turn instead of keeping it. When the visitor stops it, the position is
  /// undefined.
  void ReadEachChild(libebml::EbmlMaster& element, MasterReader::Frames frames, ElementVisitor& visitor);
  void ReadEachChild(libebml::EbmlMaster& element, MasterReader::Frames frames, const MasterReader::Visitor& visit);

  /// As ReadEachChild, for a list in a header: what it may have is limited.
  void ReadEntries(libebml::EbmlMaster& list, const MasterReader::DataLimits& limits, ElementVisitor& visitor);

  /// Moves behind an element's data. One that ends behind the stream is not moved behind; one of unknown
  /// size ends at the first element that belongs further up.
  void Skip(libebml::EbmlElement& element);

  /// The first Segment, positioned at its data; null when the stream is not EBML or has none.
  std::unique_ptr<libmatroska::KaxSegment> FindSegment();

  /// The next Cluster, positioned at its data; null when there is none.
  std::unique_ptr<libmatroska::KaxCluster> FindNextCluster(const libmatroska::KaxSegment& segment);

  /// Where the SeekHead says that an element is, as a file offset; 0 when it does not. The position must
  /// be the Segment's data, whose first child the SeekHead has to be.
  std::uint64_t SeekHeadPosition(const libmatroska::KaxSegment& segment, const libebml::EbmlId& id);

  /// The `T` that is the next element from `position` on, positioned at its data, or null.
  template <class T>
  std::unique_ptr<T> FindAt(const libmatroska::KaxSegment& segment, std::uint64_t position) {
    MoveTo(position);
    ElementPtr element = FindNextChild(segment);
    T* found = ElementAs<T>(element.get());
    if (found == nullptr) return nullptr;
    static_cast<void>(element.release());
    return std::unique_ptr<T>(found);
  }

  /// The bytes from `position` on, as ByteWindow::From; valid until the next call of any kind.
  std::span<const std::uint8_t> Bytes(std::uint64_t position, std::size_t atLeast, std::size_t chunk) {
    return m_window.From(position, atLeast, chunk);
  }
  /// The element is of known size and ends within the stream.
  bool IsWhole(const libebml::EbmlElement& element) const {
    return element.IsFiniteSize() && element.GetEndPosition() <= m_source.Length();
  }

  std::uint64_t Position() { return m_source.getFilePointer(); }
  /// A position behind the end of the stream is refused silently.
  void MoveTo(std::uint64_t position) { m_source.setFilePointer(static_cast<std::int64_t>(position)); }

 private:
  void SkipUnknownSize(libebml::EbmlElement& element);
  std::uint64_t DataPosition(const FoundElement& found) const;
  ElementSearch SearchBelow(const libebml::EbmlElement& parent);

  libebml::EbmlStream& m_stream;
  CAsyncCallback& m_source;
  ByteWindow m_window{m_source};
  KnownIdTables m_ids;
  MasterReader m_masterReader{m_source, m_window, m_ids};
};

}  // namespace tarvex
