// One row per video codec identifier, one builder per kind of format block. Called while a file is
// opened.
#include "pins/creator/video_media_type.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "framework/message_error.h"
#include "pins/creator/track_elements.h"
#include "pins/formats/avcc.h"
#include "pins/formats/bitmap_header.h"
#include "pins/formats/media_guids.h"
#include "scanner/elements/heap.h"

namespace tarvex {

namespace {

using Bytes = std::span<const std::uint8_t>;

struct VideoTrack {
  const CHeap& elements;
  Bytes codecPrivate;
  bool hasPrivate;
  bool annexB;
};

struct VideoRow {
  std::string_view codecId;
  void (*build)(const VideoTrack& track, const VideoRow& row, CMediaType& type);
  const GUID* subtype;        // null: the compression's own
  std::uint32_t compression;  // biCompression; 0 leaves it out
};

// Sequence headers lie where these structures have the first of them, before their end.
constexpr std::size_t kMpeg1Fixed = offsetof(MPEG1VIDEOINFO, bSequenceHeader);
constexpr std::size_t kMpeg2Fixed = offsetof(MPEG2VIDEOINFO, dwSequenceHeader);
static_assert(kMpeg1Fixed == 96 && kMpeg2Fixed == 132);
constexpr std::uint32_t kBitCount = 24;

GUID SubtypeFor(const VideoRow& row) { return row.subtype == nullptr ? SubtypeOf(row.compression) : *row.subtype; }

std::uint32_t Width(const VideoTrack& track) {
  const auto width = Unsigned32(track.elements, "KaxVideoPixelWidth");
  if (!width) throw MessageError("KaxVideoPixelWidth is empty");
  return *width;
}

std::uint32_t Height(const VideoTrack& track) {
  const auto height = Unsigned32(track.elements, "KaxVideoPixelHeight");
  if (!height) throw MessageError("KaxVideoPixelHeight is empty");
  return *height;
}

void FillSize(const VideoTrack& track, BITMAPINFOHEADER& header) {
  header.biSize = sizeof header;
  header.biWidth = static_cast<LONG>(Width(track));
  header.biHeight = static_cast<LONG>(Height(track));
  header.biPlanes = 1;
}

// Sizes too large for the field wrap around, as unsigned numbers do.
void FillPicture(const VideoTrack& track, BITMAPINFOHEADER& header) {
  FillSize(track, header);
  header.biBitCount = kBitCount;
  header.biSizeImage = kBitCount / 8 * static_cast<DWORD>(header.biHeight) * static_cast<DWORD>(header.biWidth);
}

REFERENCE_TIME FrameTime(const VideoTrack& track) {
  return static_cast<REFERENCE_TIME>(track.elements.Unsigned("KaxTrackDefaultDuration").value_or(0) / 100);
}

void FillAspect(const VideoTrack& track, VIDEOINFOHEADER2& header) {
  const std::uint32_t x = Unsigned32(track.elements, "KaxVideoDisplayWidth").value_or(0);
  const std::uint32_t y = Unsigned32(track.elements, "KaxVideoDisplayHeight").value_or(0);
  header.dwPictAspectRatioX = x != 0 ? x : static_cast<DWORD>(header.bmiHeader.biWidth);
  header.dwPictAspectRatioY = y != 0 ? y : static_cast<DWORD>(header.bmiHeader.biHeight);
}

// Without sequence data the block is the whole structure, otherwise its fixed part and the data.
void SetMpeg2Block(const MPEG2VIDEOINFO& info, bool hasSequence, Bytes sequence, CMediaType& type) {
  type.formattype = FORMAT_MPEG2Video;
  SetFormatBlock(type, BytesOf(info, hasSequence ? kMpeg2Fixed : sizeof info), sequence);
}

void FillMpeg2(const VideoTrack& track, std::size_t sequenceSize, DWORD compression, MPEG2VIDEOINFO& info) {
  info.cbSequenceHeader = FormatBlockSize(0, sequenceSize);
  FillPicture(track, info.hdr.bmiHeader);
  info.hdr.bmiHeader.biCompression = compression;
  info.hdr.AvgTimePerFrame = FrameTime(track);
  FillAspect(track, info.hdr);
}

void BuildVp8(const VideoTrack& track, const VideoRow& row, CMediaType& type) {
  type.subtype = SubtypeFor(row);
  type.bFixedSizeSamples = FALSE;
  type.bTemporalCompression = FALSE;
  type.formattype = FORMAT_VideoInfo;
  VIDEOINFOHEADER info{};
  FillSize(track, info.bmiHeader);
  info.bmiHeader.biCompression = row.compression;
  SetFormatBlock(type, BytesOf(info), {});
}

void BuildMpeg2(const VideoTrack& track, const VideoRow& row, CMediaType& type) {
  type.subtype = SubtypeFor(row);
  MPEG2VIDEOINFO info{};
  FillMpeg2(track, track.codecPrivate.size(), row.compression, info);
  SetMpeg2Block(info, track.hasPrivate, track.codecPrivate, type);
}

void BuildMpeg4Asp(const VideoTrack& track, const VideoRow& row, CMediaType& type) {
  type.bFixedSizeSamples = FALSE;
  type.bTemporalCompression = FALSE;
  BuildMpeg2(track, row, type);
}

void BuildMpeg1(const VideoTrack& track, const VideoRow& row, CMediaType& type) {
  type.subtype = SubtypeFor(row);
  type.formattype = FORMAT_MPEGVideo;
  MPEG1VIDEOINFO info{};
  info.cbSequenceHeader = FormatBlockSize(0, track.codecPrivate.size());
  info.hdr.AvgTimePerFrame = FrameTime(track);
  FillPicture(track, info.hdr.bmiHeader);
  SetFormatBlock(type, BytesOf(info, kMpeg1Fixed), track.codecPrivate);
}

// Parameter sets keep their lengths in both forms; start codes are the pin's work.
void BuildAvc(const VideoTrack& track, const VideoRow&, CMediaType& type) {
  const AvccRecord record = ReadAvcc(track.codecPrivate);
  std::vector<std::uint8_t> sets(record.sequenceSets.begin(), record.sequenceSets.end());
  sets.insert(sets.end(), record.pictureSets.begin(), record.pictureSets.end());
  type.subtype = track.annexB ? kSubtypeH264ByteStream : SubtypeOf(FourCc("AVC1"));
  MPEG2VIDEOINFO info{};
  info.dwProfile = record.profile;
  info.dwLevel = record.level;
  info.dwFlags = record.nalLengthSize;
  FillMpeg2(track, sets.size(), track.annexB ? FourCc("H264") : FourCc("AVC1"), info);
  SetMpeg2Block(info, true, sets, type);
}

void BuildVfw(const VideoTrack& track, const VideoRow&, CMediaType& type) {
  const BitmapDescription bitmap = ReadBitmapHeader(track.codecPrivate);
  type.subtype = SubtypeOf(bitmap.header.biCompression);
  type.bFixedSizeSamples = TRUE;
  type.formattype = FORMAT_VideoInfo2;
  VIDEOINFOHEADER2 info{};
  info.bmiHeader = bitmap.header;
  info.AvgTimePerFrame = FrameTime(track);
  info.bmiHeader.biWidth = static_cast<LONG>(Width(track));
  info.bmiHeader.biHeight = static_cast<LONG>(Height(track));
  info.rcSource = {0, 0, info.bmiHeader.biWidth, info.bmiHeader.biHeight};
  info.rcTarget = info.rcSource;
  FillAspect(track, info);
  SetFormatBlock(type, BytesOf(info), bitmap.extra);
}

constexpr VideoRow kRowsWithoutPrivate[] = {
    {"V_VP8", BuildVp8, nullptr, FourCc("VP80")},
    {"V_MPEG4/ISO/ASP", BuildMpeg4Asp, nullptr, FourCc("MP4V")},
};

constexpr VideoRow kRowsWithPrivate[] = {
    {"V_MPEG1", BuildMpeg1, &MEDIASUBTYPE_MPEG1Payload, 0},
    {"V_MPEG2", BuildMpeg2, &MEDIASUBTYPE_MPEG2_VIDEO, 0},
    {"V_THEORA", BuildMpeg2, nullptr, FourCc("THEO")},
    {"V_MPEG4/ISO/AVC", BuildAvc, nullptr, 0},
    {"V_MS/VFW/FOURCC", BuildVfw, nullptr, 0},
};

// An identifier that needs codec private misses it before it can be unknown.
const VideoRow& RowFor(std::string_view codecId, bool hasPrivate) {
  const auto* row = std::ranges::find(kRowsWithoutPrivate, codecId, &VideoRow::codecId);
  if (row != std::end(kRowsWithoutPrivate)) return *row;
  if (!hasPrivate) throw MessageError("KaxCodecPrivate is empty");
  row = std::ranges::find(kRowsWithPrivate, codecId, &VideoRow::codecId);
  if (row != std::end(kRowsWithPrivate)) return *row;
  throw MessageError("<COutPinsCreator::createVideoPin> unknown codec id");
}

}  // namespace

CMediaType VideoMediaType(const CHeap& track, bool annexBOutput) {
  CMediaType type(MEDIATYPE_Video);
  const std::string codecId = track.String("KaxCodecID").value_or("");
  if (codecId.empty()) return type;
  const auto codecPrivate = track.Binary("KaxCodecPrivate");
  const VideoRow& row = RowFor(codecId, codecPrivate.has_value());
  row.build({track, codecPrivate.value_or(Bytes()), codecPrivate.has_value(), annexBOutput}, row, type);
  return type;
}

}  // namespace tarvex
