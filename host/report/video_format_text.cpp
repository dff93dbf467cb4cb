// Decoders of the picture formats.
#include <fmt/format.h>

#include <span>

#include "host/report/block_reader.h"
#include "host/report/format_block_text.h"
#include "host/report/guid_text.h"
#include "pins/formats/media_guids.h"

namespace tarvex::host {

namespace {

constexpr std::size_t kSequenceHeader1 = 96;   // of an MPEG1VIDEOINFO, published
constexpr std::size_t kSequenceHeader2 = 132;  // of an MPEG2VIDEOINFO, published

void DescribeBitmap(MediaTypeText& text, const BITMAPINFOHEADER& bitmap) {
  AddField(text, "width", bitmap.biWidth);
  AddField(text, "height", bitmap.biHeight);
  AddField(text, "planes", bitmap.biPlanes);
  AddField(text, "bit_count", bitmap.biBitCount);
  AddField(text, "compression", bitmap.biCompression == 0 ? "none" : FourCcText(bitmap.biCompression));
  AddField(text, "image_size", bitmap.biSizeImage);
  text.summary = fmt::format("{}x{}", bitmap.biWidth, bitmap.biHeight);
  if (bitmap.biBitCount != 0) text.summary += fmt::format(", {} bits", bitmap.biBitCount);
}

// A negative frame time is a nonsense of the file's; it is listed, but makes no rate.
void DescribeFrameTime(MediaTypeText& text, REFERENCE_TIME frameTime) {
  AddField(text, "frame_time", frameTime);
  if (frameTime > 0) text.summary += fmt::format(", {:.3f} fps", 1e7 / static_cast<double>(frameTime));
}

void DescribePicture(MediaTypeText& text, const VIDEOINFOHEADER& header) {
  DescribeBitmap(text, header.bmiHeader);
  DescribeFrameTime(text, header.AvgTimePerFrame);
}

void DescribePicture(MediaTypeText& text, const VIDEOINFOHEADER2& header) {
  DescribeBitmap(text, header.bmiHeader);
  DescribeFrameTime(text, header.AvgTimePerFrame);
  AddField(text, "aspect_x", header.dwPictAspectRatioX);
  AddField(text, "aspect_y", header.dwPictAspectRatioY);
  text.summary += fmt::format(", aspect {}:{}", header.dwPictAspectRatioX, header.dwPictAspectRatioY);
}

// What the block holds of it may be less than what it claims.
std::span<const std::uint8_t> SequenceHeader(const MediaTypeText& text, std::size_t offset, std::size_t claimed) {
  if (offset >= text.block.size()) return {};
  return {text.block.data() + offset, std::min(claimed, text.block.size() - offset)};
}

void DescribeSequenceHeader(MediaTypeText& text, std::size_t claimed) {
  AddField(text, "sequence_header_size", static_cast<std::int64_t>(claimed));
  if (claimed != 0) text.summary += fmt::format(", sequence header {} bytes", claimed);
}

// The entries are two bytes of length, big-endian, and that many bytes each.
std::int64_t CountParameterSets(std::span<const std::uint8_t> bytes) {
  std::int64_t count = 0;
  while (bytes.size() >= 2) {
    const std::size_t length = static_cast<std::size_t>(bytes[0] << 8 | bytes[1]);
    if (length > bytes.size() - 2) break;
    bytes = bytes.subspan(2 + length);
    ++count;
  }
  return count;
}

bool IsAvc(const GUID& subtype) { return subtype == SubtypeOf(FourCc("AVC1")) || subtype == kSubtypeH264ByteStream; }

void DescribeAvc(MediaTypeText& text, std::uint32_t level, std::uint32_t flags, std::size_t claimed) {
  const std::int64_t sets = CountParameterSets(SequenceHeader(text, kSequenceHeader2, claimed));
  AddField(text, "nal_length_size", flags);
  AddField(text, "parameter_sets", sets);
  text.summary +=
      fmt::format(", level {}.{}, NAL length {} bytes, {} parameter sets", level / 10, level % 10, flags, sets);
}

}  // namespace

bool DecodeVideoInfo(MediaTypeText& text) {
  const auto header = ReadBlock<VIDEOINFOHEADER>(text.block);
  if (!header) return false;
  DescribePicture(text, *header);
  return true;
}

bool DecodeVideoInfo2(MediaTypeText& text) {
  const auto header = ReadBlock<VIDEOINFOHEADER2>(text.block);
  if (!header) return false;
  DescribePicture(text, *header);
  const std::size_t extra = text.block.size() - sizeof(VIDEOINFOHEADER2);
  AddField(text, "extra_size", static_cast<std::int64_t>(extra));
  if (extra != 0) text.summary += fmt::format(", {} bytes of codec data", extra);
  return true;
}

bool DecodeMpeg1VideoInfo(MediaTypeText& text) {
  const auto header = ReadBlock<VIDEOINFOHEADER>(text.block);
  const auto claimed = ReadBlock<std::uint32_t>(text.block, kSequenceHeader1 - 4);
  if (!header || !claimed) return false;
  DescribePicture(text, *header);
  DescribeSequenceHeader(text, *claimed);
  return true;
}

bool DecodeMpeg2VideoInfo(MediaTypeText& text) {
  const auto header = ReadBlock<VIDEOINFOHEADER2>(text.block);
  if (!header || text.block.size() < kSequenceHeader2) return false;
  const auto number = [&text](std::size_t fromEnd) {
    return ReadBlock<std::uint32_t>(text.block, kSequenceHeader2 - fromEnd).value_or(0);
  };
  const std::uint32_t claimed = number(16);
  const std::uint32_t profile = number(12);
  const std::uint32_t level = number(8);
  const std::uint32_t flags = number(4);
  DescribePicture(text, *header);
  AddField(text, "profile", profile);
  AddField(text, "level", level);
  AddField(text, "flags", flags);
  if (profile != 0) text.summary += fmt::format(", profile {}", profile);
  if (IsAvc(text.subtype)) DescribeAvc(text, level, flags, claimed);
  DescribeSequenceHeader(text, claimed);
  return true;
}

}  // namespace tarvex::host
