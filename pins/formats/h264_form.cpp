// See the header.
#include "pins/formats/h264_form.h"

#include "pins/formats/media_guids.h"

namespace tarvex {

namespace {

constexpr GUID kSubtypeLengthPrefixed = SubtypeOf(FourCc("AVC1"));

// Null when the block is too short for its format, or of a format without a picture header.
BITMAPINFOHEADER* BitmapHeader(const CMediaType& type) noexcept {
  if (type.formattype == FORMAT_VideoInfo) {
    auto* info = type.FormatAs<VIDEOINFOHEADER>();
    return info == nullptr ? nullptr : &info->bmiHeader;
  }
  if (type.formattype != FORMAT_VideoInfo2 && type.formattype != FORMAT_MPEG2Video) return nullptr;
  auto* info = type.FormatAs<VIDEOINFOHEADER2>();
  return info == nullptr ? nullptr : &info->bmiHeader;
}

}  // namespace

void SetH264Form(CMediaType& type, bool byteStream) noexcept {
  if (type.subtype != kSubtypeH264ByteStream && type.subtype != kSubtypeLengthPrefixed) return;
  type.subtype = byteStream ? kSubtypeH264ByteStream : kSubtypeLengthPrefixed;
  if (auto* header = BitmapHeader(type)) header->biCompression = byteStream ? FourCc("H264") : FourCc("AVC1");
}

}  // namespace tarvex
