// See the header.
#include "pins/output/annex_b_converter.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>

#include "framework/big_endian.h"
#include "framework/message_error.h"
#include "pins/formats/media_guids.h"

namespace tarvex {

namespace {

constexpr std::array<std::uint8_t, 4> kStartCode = {0, 0, 0, 1};
constexpr int kPrefixSets = 2;
constexpr unsigned kSetLengthSize = 2;
constexpr std::uint8_t kUnitTypeMask = 31;
constexpr std::uint8_t kSequenceSet = 7;
constexpr std::uint8_t kPictureSet = 8;

std::span<const std::uint8_t> ParameterSets(const MPEG2VIDEOINFO& info, std::span<const std::uint8_t> block) {
  const auto sets = block.subspan(offsetof(MPEG2VIDEOINFO, dwSequenceHeader));
  return sets.first(std::min<std::size_t>(info.cbSequenceHeader, sets.size()));
}

}  // namespace

std::optional<AnnexBConverter> AnnexBConverter::For(const CMediaType& type) {
  if (type.subtype != kSubtypeH264ByteStream || type.formattype != FORMAT_MPEG2Video) return std::nullopt;
  // The parameter sets may be shorter than the field that stands for them.
  if (type.FormatLength() < offsetof(MPEG2VIDEOINFO, dwSequenceHeader)) return std::nullopt;
  const auto* info = reinterpret_cast<const MPEG2VIDEOINFO*>(type.Format());
  const unsigned lengthSize = info->dwFlags & 0xFF;
  if (lengthSize < 1 || lengthSize > 4) return std::nullopt;
  return AnnexBConverter(lengthSize, ParameterSets(*info, type.FormatBytes()));
}

AnnexBConverter::AnnexBConverter(unsigned lengthSize, Bytes parameterSets) : m_lengthSize(lengthSize) {
  for (int i = 0; i < kPrefixSets && parameterSets.size() >= kSetLengthSize; ++i) {
    const auto length = static_cast<std::size_t>(BigEndian(parameterSets.first(kSetLengthSize)));
    parameterSets = parameterSets.subspan(kSetLengthSize);
    if (length > parameterSets.size()) return;
    AppendUnit(m_prefix, parameterSets.first(length));
    parameterSets = parameterSets.subspan(length);
  }
}

// A length that is itself cut off ends the frame: nothing of its unit is there.
template <class Use>
void AnnexBConverter::ForEachUnit(const FrameInfo& frame, Use&& use) const {
  Bytes rest(frame.data, frame.size);
  while (rest.size() >= m_lengthSize) {
    const std::uint64_t claimed = BigEndian(rest.first(m_lengthSize));
    rest = rest.subspan(m_lengthSize);
    const Bytes unit = rest.first(static_cast<std::size_t>(std::min<std::uint64_t>(claimed, rest.size())));
    use(unit);
    rest = rest.subspan(unit.size());
  }
}

bool AnnexBConverter::NeedsPrefix(const FrameInfo& frame) const {
  if (!frame.keyFrame || m_prefix.empty()) return false;
  bool hasSets = false;
  ForEachUnit(frame, [&](Bytes unit) {
    if (unit.empty()) return;
    const auto kind = static_cast<std::uint8_t>(unit.front() & kUnitTypeMask);
    hasSets = hasSets || kind == kSequenceSet || kind == kPictureSet;
  });
  return !hasSets;
}

void AnnexBConverter::AppendUnit(std::vector<std::uint8_t>& out, Bytes unit) {
  out.insert(out.end(), kStartCode.begin(), kStartCode.end());
  out.insert(out.end(), unit.begin(), unit.end());
}

FrameInfo AnnexBConverter::Convert(const FrameInfo& frame) {
  m_converted.clear();
  if (NeedsPrefix(frame)) m_converted = m_prefix;
  ForEachUnit(frame, [&](Bytes unit) { AppendUnit(m_converted, unit); });
  if (m_converted.size() > std::numeric_limits<std::uint32_t>::max()) {
    throw MessageError("CSampleBuffer::GetSample size of buffer less than sample");
  }
  FrameInfo converted = frame;
  converted.data = m_converted.data();
  converted.size = static_cast<std::uint32_t>(m_converted.size());
  return converted;
}

}  // namespace tarvex
