#include "tests/support/ebml_writer.h"

#include <bit>
#include <random>

namespace tarvex::test {

namespace {

ByteString BigEndian(std::uint64_t value, unsigned length) {
  ByteString bytes(length);
  for (unsigned index = length; index > 0; value >>= 8) bytes[--index] = static_cast<std::uint8_t>(value);
  return bytes;
}

unsigned BytesFor(std::uint64_t value) {
  unsigned length = 1;
  while (length < 8 && value >> (8 * length) != 0) ++length;
  return length;
}

std::uint64_t LargestVint(unsigned length) { return (std::uint64_t{1} << (7 * length)) - 2; }

}  // namespace

ByteString Join(std::initializer_list<ByteString> parts) {
  ByteString all;
  for (const ByteString& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

ByteString Repeat(const ByteString& part, std::size_t times) {
  ByteString all;
  all.reserve(part.size() * times);
  for (std::size_t index = 0; index < times; ++index) all.insert(all.end(), part.begin(), part.end());
  return all;
}

ByteString Zeros(std::size_t count) { return ByteString(count); }

ByteString Noise(std::size_t count, std::uint_fast32_t seed) {
  std::mt19937 random(seed);
  ByteString bytes(count);
  for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
  return bytes;
}

ByteString Vint(std::uint64_t value, unsigned length) {
  if (length == 0) {
    length = 1;
    while (value > LargestVint(length)) ++length;
  }
  return BigEndian(value | std::uint64_t{1} << (7 * length), length);
}

ByteString Id(std::uint32_t id) { return BigEndian(id, BytesFor(id)); }

ByteString Element(std::uint32_t id, const ByteString& data) { return Join({Id(id), Vint(data.size()), data}); }

ByteString ElementDeclaring(std::uint32_t id, std::uint64_t size, const ByteString& data) {
  return Join({Id(id), Vint(size, 8), data});
}

ByteString ElementOfUnknownSize(std::uint32_t id, const ByteString& data) {
  return Join({Id(id), BigEndian(0x01FFFFFFFFFFFFFF, 8), data});
}

ByteString Unsigned(std::uint32_t id, std::uint64_t value) { return Element(id, BigEndian(value, BytesFor(value))); }

ByteString Float(std::uint32_t id, double value) {
  return Element(id, BigEndian(std::bit_cast<std::uint64_t>(value), 8));
}

ByteString Text(std::uint32_t id, std::string_view text) { return Element(id, ByteString(text.begin(), text.end())); }

ByteString EbmlHead(std::string_view docType) { return Element(id::kEbml, Text(id::kDocType, docType)); }

ByteString MatroskaFile(const ByteString& segmentData) {
  return Join({EbmlHead(), Element(id::kSegment, segmentData)});
}

ByteString SeekHeadFor(std::uint32_t id, std::uint64_t position) {
  const ByteString seek = Join({Element(id::kSeekId, Id(id)), Element(id::kSeekPosition, BigEndian(position, 8))});
  return Element(id::kSeekHead, Element(id::kSeek, seek));
}

ByteString TrackEntry(std::uint64_t number, std::uint64_t type, std::string_view codec, const ByteString& more) {
  return Element(id::kTrackEntry, Join({Unsigned(id::kTrackNumber, number), Unsigned(id::kTrackType, type),
                                        Text(id::kCodecId, codec), more}));
}

ByteString BlockData(std::uint64_t track, std::int16_t time, std::uint8_t flags, const ByteString& rest) {
  return Join({Vint(track), BigEndian(static_cast<std::uint16_t>(time), 2), {flags}, rest});
}

ByteString SimpleBlock(std::uint64_t track, std::int16_t time, const ByteString& frame, bool key) {
  return Element(id::kSimpleBlock, BlockData(track, time, key ? kKeyFlag : std::uint8_t{0}, frame));
}

ByteString Cluster(std::uint64_t time, const ByteString& blocks) {
  return Element(id::kCluster, Join({Unsigned(id::kTimecode, time), blocks}));
}

}  // namespace tarvex::test
