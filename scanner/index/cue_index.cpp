#include "scanner/index/cue_index.h"

#include <matroska/KaxCues.h>
#include <matroska/KaxCuesData.h>

#include <algorithm>
#include <optional>
#include <span>

#include "scanner/block_time.h"
#include "scanner/elements/element_ids.h"
#include "scanner/elements/plain_elements.h"
#include "scanner/index/index_entries.h"
#include "scanner/index/indexed_track.h"

namespace tarvex {

using libmatroska::KaxCueClusterPosition;
using libmatroska::KaxCuePoint;
using libmatroska::KaxCues;
using libmatroska::KaxCueTrackPositions;
using libmatroska::KaxSegment;

namespace {

/// The one that names the earliest Cluster.
const KaxCueTrackPositions* EarliestPositions(const KaxCuePoint& point) {
  const KaxCueTrackPositions* earliest = nullptr;
  std::uint64_t position = 0xFFFFFFFFFFFFFFF;  // libmatroska does the same in quadratic time
  for (const libebml::EbmlElement* child : point) {
    const auto* candidate = ElementAs<KaxCueTrackPositions>(child);
    if (candidate == nullptr || candidate->FindFirstElt(EBML_INFO(KaxCueClusterPosition)) == nullptr) continue;
    if (candidate->ClusterPosition() >= position) continue;
    earliest = candidate;
    position = candidate->ClusterPosition();
  }
  return earliest;
}

void AddCuePoint(const KaxCuePoint& point, const KaxSegment& segment, std::uint64_t scale, IndexEntries& index) {
  const auto* positions = EarliestPositions(point);
  if (positions == nullptr || positions->TrackNumber() != kIndexedTrack) return;
  std::uint64_t nanoseconds = 0;
  if (!point.Timecode(nanoseconds, scale)) return;
  index.Add({segment.GetGlobalPosition(positions->ClusterPosition()), nanoseconds / kNanosecondsPerUnit});
}

/// The bytes from `position` on, at least so many if the stream, which reaches to `end`, has them.
std::span<const std::uint8_t> BytesBefore(ElementWalker& walker, std::uint64_t position, std::uint64_t end,
                                          std::uint64_t atLeast, std::size_t chunk) {
  const std::uint64_t left = end - position;
  const auto bytes = walker.Bytes(position, static_cast<std::size_t>(std::min(atLeast, left)),
                                  static_cast<std::size_t>(std::min<std::uint64_t>(chunk, left)));
  return bytes.first(static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), left)));
}

/// Cues as muxers write them, without an object for each element. Nothing when there is anything else in them.
std::optional<IndexEntries> PlainCues(ElementWalker& walker, const KaxCues& cues, const KaxSegment& segment,
                                      std::uint64_t scale) {
  constexpr std::size_t kPart = std::size_t{1} << 20;
  constexpr std::uint64_t kLongestPoint = 1u << 16;
  if (!walker.IsWhole(cues)) return std::nullopt;
  const std::uint64_t start = segment.GetGlobalPosition(0);
  const std::uint64_t end = cues.GetEndPosition();
  IndexEntries index;
  std::span<const std::uint8_t> bytes;  // those at hand from `position` on
  for (std::uint64_t position = cues.GetDataStart(); position < end;) {
    const auto element = ParsePlainElement(bytes);
    if (!element) {
      const std::size_t known = bytes.size();
      bytes = BytesBefore(walker, position, end, kLongestPoint, kPart);
      if (bytes.size() <= known) return std::nullopt;
      continue;
    }
    bytes = bytes.subspan(element->length);
    position += element->length;
    if (IsFilling(*element)) continue;
    if (element->id != element_ids::kCuePoint) return std::nullopt;
    const auto point = ParsePlainCuePoint(element->data);
    if (!point) return std::nullopt;
    if (point->track != kIndexedTrack) continue;
    if (index.Entries().empty()) index.Reserve(cues.GetSize() / element->length);
    index.Add({start + point->position, point->time * scale / kNanosecondsPerUnit});
  }
  return index;
}

}  // namespace

std::vector<SeekPoint> IndexFromCues(ElementWalker& walker, const KaxSegment& segment, std::uint64_t position,
                                     std::uint64_t scale) {
  const auto cues = walker.FindAt<KaxCues>(segment, position);
  if (!cues) return {};
  if (auto plain = PlainCues(walker, *cues, segment, scale)) return plain->Take();
  IndexEntries index;
  walker.MoveTo(cues->GetDataStart());
  walker.ReadEachChild(*cues, MasterReader::Frames::kRead, [&](libebml::EbmlElement& child) {
    const auto* point = ElementAs<KaxCuePoint>(&child);
    if (point != nullptr) AddCuePoint(*point, segment, scale, index);
    return true;
  });
  return index.Take();
}

}  // namespace tarvex
