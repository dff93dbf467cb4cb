// See film.h.
#include "tests/support/film.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "tests/support/ebml_writer.h"

namespace tarvex::test {
namespace {

constexpr std::uint32_t kSecondMs = 1000;
constexpr std::uint32_t kPictureMs = 40;
constexpr std::uint32_t kSoundMs = 20;

/// `period`: milliseconds from one frame to the next.
ByteString TrackOf(std::uint64_t number, std::uint64_t type, std::uint32_t period) {
  const ByteString duration = Unsigned(id::kDefaultDuration, period * std::uint64_t{1000000});
  const ByteString picture =
      Element(id::kVideo, Join({Unsigned(id::kPixelWidth, 320), Unsigned(id::kPixelHeight, 240)}));
  const ByteString sound = Element(id::kAudio, Join({Unsigned(id::kChannels, 2), Unsigned(id::kBitDepth, 16)}));
  if (type == 1) return TrackEntry(number, type, "V_VP8", Join({duration, picture}));
  return TrackEntry(number, type, period == kSoundMs ? "A_AC3" : "A_PCM/INT/LIT", Join({duration, sound}));
}

/// A file, part after part.
class Writer {
 public:
  /// `duration`: milliseconds; 0: the file says nothing.
  Writer(std::uint32_t duration, const ByteString& tracks) {
    Put(EbmlHead());
    m_segment = Begin(id::kSegment);
    const ByteString length = duration == 0 ? ByteString{} : Float(id::kDuration, duration);
    Put(Element(id::kInfo, Join({Unsigned(id::kTimecodeScale, 1000000), length})));
    Put(Element(id::kTracks, tracks));
  }
  void BeginCluster(std::uint32_t time) {
    m_cluster = Begin(id::kCluster);
    m_clusterTime = time;
    Put(Unsigned(id::kTimecode, time));
  }
  void EndCluster() { End(id::kCluster, m_cluster); }
  /// `time`: milliseconds in the film.
  void PutFrame(std::uint64_t track, std::uint32_t time, std::uint32_t size, bool key) {
    FrameOrigin origin{.track = track, .time = time * kMillisecond};
    ByteString bytes(sizeof(origin));
    std::memcpy(bytes.data(), &origin, sizeof(origin));
    const std::uint32_t rest = size > sizeof(origin) ? size - static_cast<std::uint32_t>(sizeof(origin)) : 0;
    const auto inCluster = static_cast<std::int16_t>(std::int64_t{time} - m_clusterTime);
    const ByteString block = BlockData(track, inCluster, key ? kKeyFlag : std::uint8_t{0}, bytes);
    Put(Join({Id(id::kSimpleBlock), Vint(block.size() + rest, 8), block}));
    m_position += rest;
  }
  ComPtr<SourceFilter> Finish() {
    End(id::kSegment, m_segment);
    return SourceFilter::FromParts(std::move(m_parts), m_position);
  }

 private:
  void Put(ByteString bytes) {
    const auto size = static_cast<LONGLONG>(bytes.size());
    m_parts.emplace(m_position, std::move(bytes));
    m_position += size;
  }
  /// A master element's head; its size is known when it ends.
  LONGLONG Begin(std::uint32_t id) {
    const LONGLONG head = m_position;
    Put(Join({Id(id), Vint(0, 8)}));
    return head;
  }
  void End(std::uint32_t id, LONGLONG head) {
    ByteString& bytes = m_parts.at(head);
    bytes = Join({Id(id), Vint(static_cast<std::uint64_t>(m_position - head) - bytes.size(), 8)});
  }

  SourceFilter::Parts m_parts;
  LONGLONG m_position = 0;
  LONGLONG m_segment = 0;
  LONGLONG m_cluster = 0;
  std::uint32_t m_clusterTime = 0;
};

void PutSecond(Writer& writer, const FilmShape& shape, std::uint32_t from) {
  writer.BeginCluster(from);
  for (std::uint32_t time = from; time < from + kSecondMs; time += kSoundMs) {
    const std::uint32_t shown = time - shape.picturesLag;
    if (time >= shape.picturesLag && shown % kPictureMs == 0 && (!shape.still || shown == 0)) {
      const bool isKey = shown == 0 || (shape.keyFrameEvery != 0 && shown % shape.keyFrameEvery == 0);
      writer.PutFrame(1, shown, shape.pictures / (kSecondMs / kPictureMs), isKey);
    }
    for (unsigned sound = 0; sound < shape.sounds; ++sound) {
      if (sound + 1 == shape.sounds && time < shape.lastSoundFrom) continue;
      writer.PutFrame(2 + sound, time, shape.sound / (kSecondMs / kSoundMs), true);
    }
  }
  writer.EndCluster();
}

}  // namespace

ComPtr<SourceFilter> MakeFilm(const FilmShape& shape) {
  ByteString tracks = TrackOf(1, 1, kPictureMs);
  for (unsigned sound = 0; sound < shape.sounds; ++sound) tracks = Join({tracks, TrackOf(2 + sound, 2, kSoundMs)});
  Writer writer(shape.seconds * kSecondMs, tracks);
  for (std::uint32_t second = 0; second < shape.seconds; ++second) PutSecond(writer, shape, second * kSecondMs);
  return writer.Finish();
}

std::vector<std::uint8_t> MakeMovie(const MovieShape& shape) {
  const unsigned all = shape.videos + shape.audios;
  ByteString tracks;
  for (unsigned k = 0; k < all; ++k) tracks = Join({tracks, TrackOf(k + 1, k < shape.videos ? 1 : 2, kPictureMs)});
  Writer writer(shape.duration, tracks);
  for (unsigned k = 0; k < shape.frames; ++k) {
    if (k % shape.framesPerCluster == 0) writer.BeginCluster(k * kPictureMs);
    for (unsigned track = 1; track <= all; ++track) writer.PutFrame(track, k * kPictureMs, shape.frameSize, true);
    if ((k + 1) % shape.framesPerCluster == 0 || k + 1 == shape.frames) writer.EndCluster();
  }
  const auto film = writer.Finish();
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(film->Size()));
  film->Pin()->SyncRead(0, static_cast<LONG>(bytes.size()), bytes.data());
  return bytes;
}

}  // namespace tarvex::test
