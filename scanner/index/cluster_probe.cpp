#include "scanner/index/cluster_probe.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "framework/big_endian.h"
#include "scanner/block_time.h"
#include "scanner/elements/element_ids.h"
#include "scanner/elements/plain_elements.h"

namespace tarvex {

namespace {

namespace id = element_ids;

// All that stands in front of a Timecode, and more.
constexpr std::size_t kHeadBytes = 256;

constexpr std::uint32_t kSiblings[] = {id::kCluster,  id::kCues, id::kTags,   id::kChapters, id::kAttachments,
                                       id::kSeekHead, id::kInfo, id::kTracks, id::kVoid,     id::kCrc32};
constexpr std::uint32_t kChildren[] = {id::kSimpleBlock,    id::kBlockGroup, id::kTimecode,
                                       id::kPosition,       id::kPrevSize,   id::kSilentTracks,
                                       id::kEncryptedBlock, id::kVoid,       id::kCrc32};

template <class Ids>
bool Contains(const Ids& ids, std::uint32_t wanted) {
  return std::ranges::find(ids, wanted) != std::end(ids);
}

/// Where the identifier of a Cluster is in `bytes`; their number when it is not.
std::size_t FindId(std::span<const std::uint8_t> bytes) {
  constexpr std::size_t kIdBytes = 4;
  constexpr int kFirst = id::kCluster >> 24;
  for (std::size_t offset = 0; bytes.size() - offset >= kIdBytes; ++offset) {
    const void* found = std::memchr(bytes.data() + offset, kFirst, bytes.size() - offset - kIdBytes + 1);
    if (found == nullptr) break;
    offset = static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - bytes.data());
    if (BigEndian(bytes.subspan(offset, kIdBytes)) == id::kCluster) return offset;
  }
  return bytes.size();
}

/// Ticks of the Timecode in front of any block. `bytes` are the first of a Cluster's data.
std::optional<std::uint64_t> TimecodeIn(std::span<const std::uint8_t> bytes) {
  for (;;) {
    const auto child = ParsePlainElement(bytes);
    if (!child || child->id == id::kSimpleBlock || child->id == id::kBlockGroup || !Contains(kChildren, child->id)) {
      return std::nullopt;
    }
    if (child->id == id::kTimecode) return PlainNumber(child->data);
    bytes = bytes.subspan(child->length);
  }
}

}  // namespace

std::span<const std::uint8_t> ClusterProbe::Bytes(std::uint64_t position, std::size_t atLeast, std::size_t chunk) {
  if (position >= m_limit) return {};
  const std::uint64_t left = m_limit - position;
  const auto bytes = m_walker.Bytes(position, static_cast<std::size_t>(std::min<std::uint64_t>(atLeast, left)),
                                    static_cast<std::size_t>(std::min<std::uint64_t>(chunk, left)));
  return bytes.first(static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), left)));
}

std::optional<ProbedCluster> ClusterProbe::First(std::uint64_t begin, std::uint64_t end) {
  end = std::min(end, m_limit);
  std::size_t chunk = m_reach.firstChunk;
  for (std::uint64_t position = begin; position < end;) {
    m_isInterrupted = m_isInterrupted || m_eventsPending();
    if (HasEnded()) return std::nullopt;
    const auto bytes = Bytes(position, kHeadBytes, std::max(chunk, kHeadBytes));
    chunk = m_reach.chunk;
    const std::size_t offset = FindId(bytes);
    // An identifier that the chunk cuts is looked at in the next one.
    const std::size_t passed = offset < bytes.size() ? offset : std::max<std::size_t>(bytes.size(), 4) - 3;
    m_lookedAt += passed;
    position += passed;
    if (offset == bytes.size()) continue;
    if (position >= end) break;
    if (auto found = At(position)) return found;
    m_lookedAt += kHeadBytes;
    ++position;
  }
  return std::nullopt;
}

std::optional<ProbedCluster> ClusterProbe::At(std::uint64_t position) {
  const auto bytes = Bytes(position, kHeadBytes, kHeadBytes);
  const auto header = ParseElementHeader(bytes);
  if (!header || header->id != id::kCluster) return std::nullopt;
  const auto data = bytes.subspan(header->Length());
  const auto ticks = TimecodeIn(
      header->sizeKnown ? data.first(static_cast<std::size_t>(std::min<std::uint64_t>(data.size(), header->size)))
                        : data);
  if (!ticks) return std::nullopt;
  const auto end = EndOf(position + header->Length(), *header);
  if (!end) return std::nullopt;
  return ProbedCluster{position, *end, static_cast<std::int64_t>(UnitsFromTicks(*ticks, m_scale))};
}

std::optional<std::uint64_t> ClusterProbe::EndOf(std::uint64_t dataStart, const ElementHeader& header) {
  if (!header.sizeKnown) return EndOfUnknownSize(dataStart);
  if (header.size > m_limit - dataStart || !IsFollowedBySibling(dataStart + header.size)) return std::nullopt;
  return dataStart + header.size;
}

// At the first element that is none of its children.
std::optional<std::uint64_t> ClusterProbe::EndOfUnknownSize(std::uint64_t dataStart) {
  PlainWalk walk(m_walker, dataStart, m_limit, m_step);
  while (!walk.IsAtEnd()) {
    if (m_lookedAt > m_reach.budget) return std::nullopt;
    // The next one may be of unknown size too.
    const auto header = ParseElementHeader(walk.Bytes(ElementHeader::kMaxBytes));
    if (!header) return std::nullopt;
    if (!Contains(kChildren, header->id)) break;
    if (!walk.Head()) return std::nullopt;
    m_lookedAt += header->Length() + header->size;
    walk.Pass(*header);
  }
  return IsFollowedBySibling(walk.Position()) ? std::optional(walk.Position()) : std::nullopt;
}

std::optional<ElementHeader> ClusterProbe::SiblingAt(std::uint64_t position) {
  const auto header = ParseElementHeader(Bytes(position, ElementHeader::kMaxBytes, kHeadBytes));
  return header && Contains(kSiblings, header->id) ? header : std::nullopt;
}

bool ClusterProbe::IsFollowedBySibling(std::uint64_t end) { return end >= m_limit || SiblingAt(end); }

std::optional<ProbedCluster> ClusterProbe::Next(const ProbedCluster& cluster) {
  constexpr int kBetween = 16;
  std::uint64_t position = cluster.end;
  for (int passed = 0; passed < kBetween; ++passed) {
    const auto header = SiblingAt(position);
    if (!header || header->id == id::kCluster) break;
    if (!header->sizeKnown || header->size > m_limit - position) return std::nullopt;
    position += header->Length() + header->size;
  }
  return At(position);
}

}  // namespace tarvex
