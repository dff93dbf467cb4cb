// Identifiers of elements that are looked for as bytes, with their length markers; see the format's definition.
// Where libmatroska makes the elements, its own are used. Constants; any thread.
#pragma once

#include <cstdint>

namespace tarvex::element_ids {

// Of every level.
inline constexpr std::uint32_t kVoid = 0xEC;
inline constexpr std::uint32_t kCrc32 = 0xBF;

inline constexpr std::uint32_t kEbmlHead = 0x1A45DFA3;
inline constexpr std::uint32_t kSegment = 0x18538067;

// Of a Segment.
inline constexpr std::uint32_t kSeekHead = 0x114D9B74;
inline constexpr std::uint32_t kInfo = 0x1549A966;
inline constexpr std::uint32_t kTracks = 0x1654AE6B;
inline constexpr std::uint32_t kCluster = 0x1F43B675;
inline constexpr std::uint32_t kCues = 0x1C53BB6B;
inline constexpr std::uint32_t kAttachments = 0x1941A469;
inline constexpr std::uint32_t kChapters = 0x1043A770;
inline constexpr std::uint32_t kTags = 0x1254C367;

// Of a Cluster.
inline constexpr std::uint32_t kTimecode = 0xE7;
inline constexpr std::uint32_t kSilentTracks = 0x5854;
inline constexpr std::uint32_t kPosition = 0xA7;
inline constexpr std::uint32_t kPrevSize = 0xAB;
inline constexpr std::uint32_t kSimpleBlock = 0xA3;
inline constexpr std::uint32_t kBlockGroup = 0xA0;
inline constexpr std::uint32_t kEncryptedBlock = 0xAF;

// Of a BlockGroup.
inline constexpr std::uint32_t kBlock = 0xA1;
inline constexpr std::uint32_t kBlockVirtual = 0xA2;
inline constexpr std::uint32_t kBlockAdditions = 0x75A1;
inline constexpr std::uint32_t kBlockDuration = 0x9B;
inline constexpr std::uint32_t kReferencePriority = 0xFA;
inline constexpr std::uint32_t kReferenceBlock = 0xFB;
inline constexpr std::uint32_t kReferenceVirtual = 0xFD;
inline constexpr std::uint32_t kCodecState = 0xA4;
inline constexpr std::uint32_t kDiscardPadding = 0x75A2;

// Of what lies below those.
inline constexpr std::uint32_t kSilentTrackNumber = 0x58D7;
inline constexpr std::uint32_t kBlockMore = 0xA6;
inline constexpr std::uint32_t kBlockAdditional = 0xA5;
inline constexpr std::uint32_t kBlockAddId = 0xEE;

// Of the Cues.
inline constexpr std::uint32_t kCuePoint = 0xBB;
inline constexpr std::uint32_t kCueTime = 0xB3;
inline constexpr std::uint32_t kCueTrackPositions = 0xB7;
inline constexpr std::uint32_t kCueTrack = 0xF7;
inline constexpr std::uint32_t kCueClusterPosition = 0xF1;
inline constexpr std::uint32_t kCueRelativePosition = 0xF0;
inline constexpr std::uint32_t kCueDuration = 0xB2;
inline constexpr std::uint32_t kCueBlockNumber = 0x5378;
inline constexpr std::uint32_t kCueCodecState = 0xEA;

}  // namespace tarvex::element_ids
