// See movie.h.
#include "tests/support/movie.h"

#include <algorithm>

#include "tests/support/ebml_writer.h"

namespace tarvex::test {
namespace {

constexpr unsigned kFrameDuration = 40;  // milliseconds

void Append(ByteString& out, const ByteString& more) { out.insert(out.end(), more.begin(), more.end()); }

ByteString Tracks(const MovieShape& shape) {
  const ByteString video = Element(id::kVideo, Join({Unsigned(id::kPixelWidth, 320), Unsigned(id::kPixelHeight, 240)}));
  const ByteString audio = Element(id::kAudio, Join({Unsigned(id::kChannels, 1), Unsigned(id::kBitDepth, 16)}));
  ByteString entries;
  unsigned number = 0;
  const auto add = [&](unsigned count, unsigned type, std::string_view codec, const ByteString& details) {
    const ByteString duration = Unsigned(id::kDefaultDuration, kFrameDuration * 1000000ULL);
    for (unsigned k = 0; k < count; ++k) Append(entries, TrackEntry(++number, type, codec, Join({duration, details})));
  };
  add(shape.videos, 1, "V_VP8", video);
  add(shape.audios, 2, "A_PCM/INT/LIT", audio);
  add(shape.subtitles, 17, "S_TEXT/UTF8", {});
  return Element(id::kTracks, entries);
}

ByteString ClusterFrom(const MovieShape& shape, unsigned first) {
  const unsigned tracks = shape.videos + shape.audios + shape.subtitles;
  ByteString blocks;
  for (unsigned k = first; k < std::min(first + shape.framesPerCluster, shape.frames); ++k) {
    const auto time = static_cast<std::int16_t>((k - first) * kFrameDuration);
    for (unsigned track = 1; track <= tracks; ++track) {
      Append(blocks, SimpleBlock(track, time, ByteString(shape.frameSize, static_cast<std::uint8_t>(k + track))));
    }
  }
  return Cluster(first * kFrameDuration, blocks);
}

}  // namespace

std::vector<std::uint8_t> MakeMovie(const MovieShape& shape) {
  const ByteString duration = shape.duration == 0 ? ByteString{} : Float(id::kDuration, shape.duration);
  const ByteString info = Element(id::kInfo, Join({Unsigned(id::kTimecodeScale, 1000000), duration}));
  ByteString content = Join({info, Tracks(shape)});
  for (unsigned first = 0; first < shape.frames; first += shape.framesPerCluster)
    Append(content, ClusterFrom(shape, first));
  return MatroskaFile(content);
}

}  // namespace tarvex::test
