// Builds EBML and Matroska bytes for tests: elements as values, put together by concatenation. Pure
// functions; any thread.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <vector>

namespace tarvex::test {

using ByteString = std::vector<std::uint8_t>;

/// One after another.
ByteString Join(std::initializer_list<ByteString> parts);
/// `part` repeated.
ByteString Repeat(const ByteString& part, std::size_t times);
ByteString Zeros(std::size_t count);
/// Repeatable noise.
ByteString Noise(std::size_t count, std::uint_fast32_t seed);

/// A size or number in EBML's variable-length coding, in `length` bytes, or as few as it takes (0).
ByteString Vint(std::uint64_t value, unsigned length = 0);
/// An identifier, which carries its length marker in itself.
ByteString Id(std::uint32_t id);

/// An element: identifier, size, data.
ByteString Element(std::uint32_t id, const ByteString& data);
/// The same with a size that is not the data's.
ByteString ElementDeclaring(std::uint32_t id, std::uint64_t size, const ByteString& data);
/// The same with the size that means "unknown".
ByteString ElementOfUnknownSize(std::uint32_t id, const ByteString& data);
ByteString Unsigned(std::uint32_t id, std::uint64_t value);
ByteString Float(std::uint32_t id, double value);
ByteString Text(std::uint32_t id, std::string_view text);

namespace id {
inline constexpr std::uint32_t kEbml = 0x1A45DFA3, kDocType = 0x4282, kVoid = 0xEC, kCrc32 = 0xBF;
inline constexpr std::uint32_t kSegment = 0x18538067, kSeekHead = 0x114D9B74, kSeek = 0x4DBB, kSeekId = 0x53AB,
                               kSeekPosition = 0x53AC;
inline constexpr std::uint32_t kInfo = 0x1549A966, kTimecodeScale = 0x2AD7B1, kDuration = 0x4489, kTitle = 0x7BA9;
inline constexpr std::uint32_t kTracks = 0x1654AE6B, kTrackEntry = 0xAE, kTrackNumber = 0xD7, kTrackType = 0x83,
                               kCodecId = 0x86, kCodecPrivate = 0x63A2, kTrackName = 0x536E, kLanguage = 0x22B59C,
                               kFlagDefault = 0x88, kFlagForced = 0x55AA, kDefaultDuration = 0x23E383, kVideo = 0xE0,
                               kPixelWidth = 0xB0, kPixelHeight = 0xBA, kAudio = 0xE1, kSamplingFrequency = 0xB5,
                               kChannels = 0x9F, kBitDepth = 0x6264;
inline constexpr std::uint32_t kContentEncodings = 0x6D80, kContentEncoding = 0x6240, kContentCompression = 0x5034,
                               kContentCompAlgo = 0x4254, kContentCompSettings = 0x4255;
inline constexpr std::uint32_t kCluster = 0x1F43B675, kTimecode = 0xE7, kSimpleBlock = 0xA3, kBlockGroup = 0xA0,
                               kBlock = 0xA1, kBlockDuration = 0x9B, kReferenceBlock = 0xFB;
inline constexpr std::uint32_t kCues = 0x1C53BB6B, kCuePoint = 0xBB, kCueTime = 0xB3, kCueTrackPositions = 0xB7,
                               kCueTrack = 0xF7, kCueClusterPosition = 0xF1;
inline constexpr std::uint32_t kChapters = 0x1043A770, kEditionEntry = 0x45B9, kChapterAtom = 0xB6,
                               kChapterTimeStart = 0x91, kChapterTimeEnd = 0x92, kChapterDisplay = 0x80,
                               kChapterString = 0x85;
inline constexpr std::uint32_t kTags = 0x1254C367;
}  // namespace id

/// The EBML head of a Matroska file.
ByteString EbmlHead(std::string_view docType = "matroska");
/// A whole file: head and one Segment.
ByteString MatroskaFile(const ByteString& segmentData);
/// A SeekHead with one entry; `position` counts from the Segment's data. Always 24 bytes long.
ByteString SeekHeadFor(std::uint32_t id, std::uint64_t position);

/// A track entry with the usual children and `more` of them.
ByteString TrackEntry(std::uint64_t number, std::uint64_t type, std::string_view codec, const ByteString& more = {});

enum class Lacing : std::uint8_t { kNone = 0x00, kXiph = 0x02, kFixed = 0x04, kEbml = 0x06 };

/// A block's data: its head, and what follows it (frames, or a lace).
ByteString BlockData(std::uint64_t track, std::int16_t time, std::uint8_t flags, const ByteString& rest);
inline constexpr std::uint8_t kKeyFlag = 0x80;

ByteString SimpleBlock(std::uint64_t track, std::int16_t time, const ByteString& frame, bool key = true);
ByteString Cluster(std::uint64_t time, const ByteString& blocks);

}  // namespace tarvex::test
