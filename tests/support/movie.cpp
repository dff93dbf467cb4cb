// See movie.h.
#include "tests/support/movie.h"

#include <algorithm>
#include <string_view>

namespace tarvex::test {
namespace {

using Buffer = std::vector<std::uint8_t>;

constexpr unsigned kFrameDuration = 40;  // milliseconds

void Append(Buffer& out, const Buffer& more) { out.insert(out.end(), more.begin(), more.end()); }

Buffer BigEndian(std::uint64_t value, unsigned width) {
  Buffer out;
  for (unsigned k = width; k-- > 0;) out.push_back(static_cast<std::uint8_t>(value >> 8U * k));
  return out;
}

Buffer Id(std::uint32_t id) { return BigEndian(id, id > 0xFFFFFF ? 4 : id > 0xFFFF ? 3 : id > 0xFF ? 2 : 1); }

// Sizes are written in eight bytes, which every size may be.
Buffer Element(std::uint32_t id, const Buffer& data) {
  Buffer out = Id(id);
  Append(out, BigEndian(std::uint64_t{1} << 56U | data.size(), 8));
  Append(out, data);
  return out;
}

Buffer Number(std::uint32_t id, std::uint64_t value) { return Element(id, BigEndian(value, 8)); }

Buffer Text(std::uint32_t id, std::string_view text) { return Element(id, Buffer(text.begin(), text.end())); }

Buffer Joined(std::initializer_list<Buffer> parts) {
  Buffer out;
  for (const Buffer& part : parts) Append(out, part);
  return out;
}

Buffer Track(unsigned number, unsigned type, std::string_view codec, const Buffer& details) {
  return Element(0xAE, Joined({Number(0xD7, number), Number(0x73C5, number), Number(0x83, type), Text(0x86, codec),
                               Number(0x23E383, kFrameDuration * 1000000ULL), details}));
}

Buffer Tracks(const MovieShape& shape) {
  const Buffer video = Element(0xE0, Joined({Number(0xB0, 320), Number(0xBA, 240)}));
  const Buffer audio = Element(0xE1, Joined({Number(0x9F, 1), Number(0x6264, 16)}));
  Buffer entries;
  unsigned number = 0;
  for (unsigned k = 0; k < shape.videos; ++k) Append(entries, Track(++number, 1, "V_VP8", video));
  for (unsigned k = 0; k < shape.audios; ++k) Append(entries, Track(++number, 2, "A_PCM/INT/LIT", audio));
  for (unsigned k = 0; k < shape.subtitles; ++k) Append(entries, Track(++number, 17, "S_TEXT/UTF8", {}));
  return Element(0x1654AE6B, entries);
}

Buffer Block(unsigned track, unsigned relativeTime, std::uint32_t size, std::uint8_t filling) {
  constexpr std::uint8_t kKeyFrame = 0x80;
  Buffer data = {static_cast<std::uint8_t>(0x80U | track)};
  Append(data, BigEndian(relativeTime, 2));
  data.push_back(kKeyFrame);
  data.resize(data.size() + size, filling);
  return Element(0xA3, data);
}

Buffer Cluster(const MovieShape& shape, unsigned first) {
  const unsigned tracks = shape.videos + shape.audios + shape.subtitles;
  Buffer data = Number(0xE7, first * kFrameDuration);
  for (unsigned k = first; k < std::min(first + shape.framesPerCluster, shape.frames); ++k) {
    for (unsigned track = 1; track <= tracks; ++track) {
      Append(data, Block(track, (k - first) * kFrameDuration, shape.frameSize, static_cast<std::uint8_t>(k + track)));
    }
  }
  return Element(0x1F43B675, data);
}

}  // namespace

std::vector<std::uint8_t> MakeMovie(const MovieShape& shape) {
  const Buffer info = Element(0x1549A966, Number(0x2AD7B1, 1000000));
  Buffer content = Joined({info, Tracks(shape)});
  for (unsigned first = 0; first < shape.frames; first += shape.framesPerCluster)
    Append(content, Cluster(shape, first));
  return Joined({Element(0x1A45DFA3, Text(0x4282, "matroska")), Element(0x18538067, content)});
}

}  // namespace tarvex::test
