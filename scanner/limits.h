// What a file may make the splitter hold or do, whatever it declares: every bound by its name, with its
// unit and its reason. Constants; any thread. Together they keep what a file costs below 64 MiB, three
// times the largest child of a Cluster, five times the codec data, and the rings of the connected pins.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tarvex::limits {

inline constexpr std::int64_t kMebibyte = std::int64_t{1} << 20;

/// Levels of master elements below one another: Chapters, an edition and 201 atoms. Each takes a frame of
/// the stack. What lies deeper is passed over.
inline constexpr int kNesting = 203;

/// Bytes that a header element which is no list (Info, the EBML head) may take as objects, by the estimates below, and
/// bytes of its data. What would take more is passed over.
inline constexpr std::int64_t kHeaderMemory = 4 * kMebibyte;
/// Bytes that one entry of a list that is read entry by entry, as a child of a Cluster or a track entry, may take as
/// objects, beside its data: 78,000 of them. A header's entry with more is left out.
inline constexpr std::int64_t kEntryMemory = 24 * kMebibyte;
/// Bytes of data of one track entry, which has some hundreds of kilobytes of codec data at most, and of all together.
/// An entry with more is left out. Of codec data there are up to five copies at a time, in tables and media types.
inline constexpr std::int64_t kTrackData = 32 * kMebibyte;
inline constexpr std::int64_t kTracksData = 256 * kMebibyte;
/// Elements of a list in a header that are looked at one by one. Each of all chapters that are read may have sixteen.
inline constexpr std::uint64_t kHeaderElements = std::uint64_t{1} << 20;
/// Bytes that the names of all chapters may take. A chapter for which nothing is left is left out.
inline constexpr std::int64_t kChapterNames = 16 * kMebibyte;
/// Bytes of a block that is read into memory kept from block to block.
inline constexpr std::uint64_t kPiece = 8 * kMebibyte;

/// Bytes that an element takes as an object, rounded up from the largest that was measured.
inline constexpr std::int64_t kElementMemory = 320;
/// Bytes that a frame of a lace takes as an object. The format allows 256 in a lace, which may be empty.
inline constexpr std::int64_t kLaceFrameMemory = 64;
inline constexpr unsigned kLaceFrames = 256;
static_assert(kLaceFrames * kLaceFrameMemory < kEntryMemory / 64);
/// Bytes that a byte of Unicode text takes: the text itself, and wide characters.
inline constexpr std::int64_t kMemoryPerTextByte = 5;

/// Track entries that are read. Each may become a pin.
inline constexpr std::size_t kTracks = 1024;
/// Chapters that are read.
inline constexpr std::size_t kChapters = 1 << 16;
/// Entries of the seek index, 16 bytes each. A longer one is thinned out evenly.
inline constexpr std::size_t kIndexEntries = 1 << 20;
/// Clusters that are remembered of a file without Cues, each about 100 bytes. With more, some are looked at again.
inline constexpr std::size_t kKnownClusters = 1 << 14;
/// Entries that are kept aside until the Cluster that they are from proves to be plain. With more it is read as
/// any other.
inline constexpr std::size_t kPlainClusterEntries = 1 << 16;

/// Bytes after which inflating a frame ends. No pin can deliver as many; pins/limits.h makes sure of that.
inline constexpr std::size_t kInflatedFrame = 10 * kMebibyte;
/// Bytes of a frame: a media sample's length is a signed 32-bit number.
inline constexpr std::size_t kFrame = 0x7FFFFFFF;

/// Bytes of data from which on libebml takes something for no element.
inline constexpr std::uint64_t kElement = 0x7FFFFFFF;

}  // namespace tarvex::limits
