// Decoders of the sound formats.
#include <fmt/format.h>

#include <algorithm>

#include "host/report/block_reader.h"
#include "host/report/format_block_text.h"
#include "host/report/guid_text.h"

namespace tarvex::host {

namespace {

// A block may claim more than it holds.
void DescribeExtra(MediaTypeText& text, std::size_t claimed) {
  const std::size_t extra = std::min(claimed, text.block.size() - sizeof(WAVEFORMATEX));
  AddField(text, "extra_size", static_cast<std::int64_t>(extra));
  if (claimed != extra) {
    AddField(text, "claimed_extra_size", static_cast<std::int64_t>(claimed));
    text.summary += fmt::format(", {} of {} claimed bytes of codec data", extra, claimed);
  } else if (extra != 0) {
    text.summary += fmt::format(", {} bytes of codec data", extra);
  }
}

const char* Plural(std::uint32_t count) { return count == 1 ? "" : "s"; }

}  // namespace

bool DecodeWaveFormat(MediaTypeText& text) {
  const auto wave = ReadBlock<WAVEFORMATEX>(text.block);
  if (!wave) return false;
  // The structure is packed, so its members are copied before anything refers to them.
  const std::uint32_t rate = wave->nSamplesPerSec;
  const std::uint16_t channels = wave->nChannels;
  const std::uint16_t bits = wave->wBitsPerSample;
  const std::uint16_t align = wave->nBlockAlign;
  AddField(text, "format_tag", wave->wFormatTag);
  AddField(text, "channels", channels);
  AddField(text, "sampling_rate", rate);
  AddField(text, "bytes_per_second", wave->nAvgBytesPerSec);
  AddField(text, "block_align", align);
  AddField(text, "bits_per_sample", bits);
  text.summary = fmt::format("{} Hz, {} channel{}", rate, channels, Plural(channels));
  if (bits != 0) text.summary += fmt::format(", {} bits", bits);
  if (align != 0) text.summary += fmt::format(", block {} bytes", align);
  DescribeExtra(text, wave->cbSize);
  return true;
}

bool DecodeVorbisFormat(MediaTypeText& text) {
  struct VorbisFormat {
    std::uint32_t channels;
    std::uint32_t samplingRate;
    std::uint32_t bitsPerSample;
    std::uint32_t headerSizes[3];
  };
  const auto vorbis = ReadBlock<VorbisFormat>(text.block);
  if (!vorbis) return false;
  AddField(text, "channels", vorbis->channels);
  AddField(text, "sampling_rate", vorbis->samplingRate);
  AddField(text, "bits_per_sample", vorbis->bitsPerSample);
  AddField(text, "identification_header_size", vorbis->headerSizes[0]);
  AddField(text, "comment_header_size", vorbis->headerSizes[1]);
  AddField(text, "setup_header_size", vorbis->headerSizes[2]);
  text.summary =
      fmt::format("{} Hz, {} channel{}, headers {} + {} + {} bytes", vorbis->samplingRate, vorbis->channels,
                  Plural(vorbis->channels), vorbis->headerSizes[0], vorbis->headerSizes[1], vorbis->headerSizes[2]);
  return true;
}

}  // namespace tarvex::host
