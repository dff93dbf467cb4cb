// One row per audio codec identifier, one builder per kind of format block. Called while a file is
// opened.
#include "pins/creator/audio_media_type.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

#include "framework/log.h"
#include "pins/creator/track_elements.h"
#include "pins/formats/media_guids.h"
#include "pins/formats/xiph_lacing.h"
#include "scanner/elements/heap.h"

namespace tarvex {

namespace {

using Bytes = std::span<const std::uint8_t>;

struct AudioTrack {
  std::string_view codecId;
  Bytes codecPrivate;  // empty when the track has none
  std::uint32_t samplingRate;
  std::uint32_t channels;
  std::uint32_t bitDepth;
};

struct AudioRow {
  std::string_view codecId;
  void (*build)(const AudioTrack& track, const AudioRow& row, CMediaType& type);
  const GUID* subtype;  // null: the tag's own
  WORD tag;
  bool withMore = false;  // the identifier goes on after codecId, by at least one character
};

struct VorbisFormat2 {
  DWORD channels;
  DWORD samplesPerSec;
  DWORD bitsPerSample;
  DWORD headerSize[3];
};
static_assert(sizeof(VorbisFormat2) == 24);

constexpr std::size_t kVorbisHeaders = 3;
constexpr std::uint32_t kDefaultSamplingRate = 8000;  // the format's default
constexpr std::size_t kPcmWaveFormat = 16;            // the older wave format, which has no cbSize

// The file's value through single precision and cut toward zero; outside the field's range the nearest
// it can hold, and 0 for what is no number.
std::uint32_t SamplingRate(const CHeap& elements) {
  const std::optional<double> value = elements.Float("KaxAudioSamplingFreq");
  if (!value) return kDefaultSamplingRate;
  constexpr double kLargest = std::numeric_limits<std::uint32_t>::max();
  if (*value >= kLargest) return std::numeric_limits<std::uint32_t>::max();
  if (!(*value > 0)) return 0;
  return static_cast<std::uint32_t>(std::min(double{static_cast<float>(*value)}, kLargest));
}

WAVEFORMATEX CommonFields(const AudioTrack& track, WORD tag) {
  WAVEFORMATEX format{};
  format.wFormatTag = tag;
  format.nChannels = static_cast<WORD>(track.channels);
  format.nSamplesPerSec = track.samplingRate;
  return format;
}

void FillSampleLayout(const AudioTrack& track, WAVEFORMATEX& format) {
  format.wBitsPerSample = static_cast<WORD>(track.bitDepth);
  format.nBlockAlign = static_cast<WORD>(DWORD{format.wBitsPerSample} * format.nChannels / 8);
}

void SetWaveBlock(const AudioRow& row, WAVEFORMATEX format, Bytes appended, CMediaType& type) {
  type.subtype = row.subtype == nullptr ? SubtypeOf(format.wFormatTag) : *row.subtype;
  type.formattype = FORMAT_WaveFormatEx;
  // The block holds all of the data even where the field cannot say so.
  format.cbSize = static_cast<WORD>(std::min<std::size_t>(appended.size(), std::numeric_limits<WORD>::max()));
  SetFormatBlock(type, BytesOf(format), appended);
}

void BuildPlain(const AudioTrack& track, const AudioRow& row, CMediaType& type) {
  WAVEFORMATEX format = CommonFields(track, row.tag);
  FillSampleLayout(track, format);
  SetWaveBlock(row, format, {}, type);
}

void BuildWithPrivate(const AudioTrack& track, const AudioRow& row, CMediaType& type) {
  SetWaveBlock(row, CommonFields(track, row.tag), track.codecPrivate, type);
}

void BuildAac(const AudioTrack& track, const AudioRow& row, CMediaType& type) {
  WAVEFORMATEX format = CommonFields(track, row.tag);
  FillSampleLayout(track, format);
  SetWaveBlock(row, format, track.codecPrivate, type);
}

struct RealEnding {
  std::string_view ending;
  WORD tag;
};
constexpr RealEnding kRealEndings[] = {
    {"14_4", 0x2002}, {"28_8", 0x2003}, {"COOK", 0x2004}, {"SIPR", 0x0130}, {"ATRC", 0x0270},
};

void BuildReal(const AudioTrack& track, const AudioRow& row, CMediaType& type) {
  const std::string_view codecId = track.codecId;
  const auto* ending =
      std::ranges::find_if(kRealEndings, [&](const RealEnding& e) { return codecId.ends_with(e.ending); });
  const WORD tag = ending == std::end(kRealEndings) ? WORD{0} : ending->tag;
  SetWaveBlock(row, CommonFields(track, tag), track.codecPrivate, type);
}

// The packets one after another when they are the three headers, otherwise as much room in zeros. An
// audio track is never refused, so damaged lacing counts as no headers at all.
std::vector<std::uint8_t> VorbisHeaders(Bytes codecPrivate, VorbisFormat2& format) {
  std::vector<std::uint8_t> data;
  if (codecPrivate.empty()) return data;
  const auto packets = ReadXiphLacing(codecPrivate);
  if (!packets) {
    LogText("COutPinsCreator::createAudioPin KaxCodecPrivate is too short");
    return data;
  }
  for (const Bytes packet : *packets) data.insert(data.end(), packet.begin(), packet.end());
  if (packets->size() != kVorbisHeaders) return std::vector<std::uint8_t>(data.size());
  for (std::size_t i = 0; i < kVorbisHeaders; ++i) format.headerSize[i] = FormatBlockSize(0, (*packets)[i].size());
  return data;
}

void BuildVorbis(const AudioTrack& track, const AudioRow& row, CMediaType& type) {
  VorbisFormat2 format{};
  format.channels = track.channels;
  format.samplesPerSec = track.samplingRate;
  const std::vector<std::uint8_t> headers = VorbisHeaders(track.codecPrivate, format);
  type.subtype = *row.subtype;
  type.formattype = kFormatVorbis2;
  SetFormatBlock(type, BytesOf(format), headers);
}

void LogUnknown() { LogText("undefined codec_idStr"); }

void BuildAcm(const AudioTrack& track, const AudioRow&, CMediaType& type) {
  WAVEFORMATEX format{};
  const std::size_t size = track.codecPrivate.size();
  if (size < sizeof format && size != kPcmWaveFormat) {
    LogUnknown();
    return;
  }
  std::memcpy(&format, track.codecPrivate.data(), std::min(size, sizeof format));
  type.subtype = SubtypeOf(format.wFormatTag);
  type.formattype = FORMAT_WaveFormatEx;
  SetFormatBlock(type, BytesOf(format), size < sizeof format ? Bytes() : track.codecPrivate.subspan(sizeof format));
}

constexpr AudioRow kRows[] = {
    {"A_AC3", BuildPlain, nullptr, 0x2000},
    // The same as AC-3 on purpose.
    {"A_EAC3", BuildPlain, nullptr, 0x2000},
    {"A_TRUEHD", BuildPlain, &kSubtypeTrueHd, 0},
    {"A_MPEG/L3", BuildPlain, nullptr, 0x0055},
    {"A_MPEG/L1", BuildPlain, nullptr, 0x0050},
    {"A_MPEG/L2", BuildPlain, nullptr, 0x0050},
    {"A_DTS", BuildPlain, nullptr, 0x2001},
    {"A_PCM/INT/LIT", BuildPlain, nullptr, 0x0001},
    {"A_PCM/FLOAT/IEEE", BuildPlain, nullptr, 0x0003},
    {"A_TTA1", BuildWithPrivate, nullptr, 0x77A1},
    {"A_WAVPACK4", BuildWithPrivate, nullptr, 0x5756},
    {"A_VORBIS", BuildVorbis, &kSubtypeVorbis2, 0},
    {"A_FLAC", BuildWithPrivate, &kSubtypeFlac, 0xF1AC},
    {"A_REAL", BuildReal, nullptr, 0, true},
    {"A_AAC", BuildAac, nullptr, 0x00FF},
    {"A_MS/ACM", BuildAcm, nullptr, 0},
};

bool Matches(const AudioRow& row, std::string_view codecId) {
  if (!row.withMore) return codecId == row.codecId;
  return codecId.starts_with(row.codecId) && codecId.size() > row.codecId.size();
}

}  // namespace

CMediaType AudioMediaType(const CHeap& track) {
  CMediaType type(MEDIATYPE_Audio);
  type.bFixedSizeSamples = TRUE;
  type.bTemporalCompression = FALSE;
  const std::string codecId = track.String("KaxCodecID").value_or("");
  if (codecId.empty()) return type;
  const auto* row = std::ranges::find_if(kRows, [&](const AudioRow& r) { return Matches(r, codecId); });
  if (row == std::end(kRows)) {
    LogUnknown();
    return type;
  }
  row->build({codecId, track.Binary("KaxCodecPrivate").value_or(Bytes()), SamplingRate(track),
              Unsigned32(track, "KaxAudioChannels").value_or(1), Unsigned32(track, "KaxAudioBitDepth").value_or(0)},
             *row, type);
  return type;
}

}  // namespace tarvex
