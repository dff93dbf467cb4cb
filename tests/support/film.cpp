// See film.h.
#include "tests/support/film.h"

#include <cstring>
#include <utility>

#include "tests/support/ebml_writer.h"

namespace tarvex::test {
namespace {

constexpr std::uint32_t kSecondMs = 1000;
constexpr std::uint32_t kPictureMs = 40;
constexpr std::uint32_t kSoundMs = 20;

ByteString Track(std::uint64_t number) {
  const bool isPictures = number == 1;
  const std::uint64_t duration = (isPictures ? kPictureMs : kSoundMs) * std::uint64_t{1000000};
  const ByteString details =
      isPictures ? Element(id::kVideo, Join({Unsigned(id::kPixelWidth, 16), Unsigned(id::kPixelHeight, 16)}))
                 : Element(id::kAudio, Unsigned(id::kChannels, 2));
  return TrackEntry(number, isPictures ? 1 : 2, isPictures ? "V_VP8" : "A_AC3",
                    Join({Unsigned(id::kDefaultDuration, duration), details}));
}

/// Parts one after another.
class Writer {
 public:
  void Put(ByteString bytes) {
    const auto size = static_cast<LONGLONG>(bytes.size());
    m_parts.emplace(m_position, std::move(bytes));
    m_position += size;
  }
  void Skip(std::uint32_t bytes) { m_position += bytes; }
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
  /// `cluster` and `time`: milliseconds in the film.
  void PutFrame(std::uint64_t track, std::uint32_t cluster, std::uint32_t time, std::uint32_t size, bool key) {
    FrameOrigin origin{.track = track, .time = time * kMillisecond};
    ByteString bytes(sizeof(origin));
    std::memcpy(bytes.data(), &origin, sizeof(origin));
    const std::uint32_t rest = size > sizeof(origin) ? size - static_cast<std::uint32_t>(sizeof(origin)) : 0;
    const auto inCluster = static_cast<std::int16_t>(std::int64_t{time} - cluster);
    const ByteString block = BlockData(track, inCluster, key ? kKeyFlag : std::uint8_t{0}, bytes);
    Put(Join({Id(id::kSimpleBlock), Vint(block.size() + rest, 8), block}));
    Skip(rest);
  }
  ComPtr<SourceFilter> Finish() { return SourceFilter::FromParts(std::move(m_parts), m_position); }

 private:
  SourceFilter::Parts m_parts;
  LONGLONG m_position = 0;
};

void PutCluster(Writer& writer, const FilmShape& shape, std::uint32_t from) {
  const LONGLONG cluster = writer.Begin(id::kCluster);
  writer.Put(Unsigned(id::kTimecode, from));
  for (std::uint32_t time = from; time < from + kSecondMs; time += kSoundMs) {
    const std::uint32_t shown = time - shape.picturesLag;
    if (time >= shape.picturesLag && shown % kPictureMs == 0 && (!shape.still || shown == 0)) {
      const bool isKey = shown == 0 || (shape.keyFrameEvery != 0 && shown % shape.keyFrameEvery == 0);
      writer.PutFrame(1, from, shown, shape.pictures / (kSecondMs / kPictureMs), isKey);
    }
    for (unsigned sound = 0; sound < shape.sounds; ++sound) {
      if (sound + 1 == shape.sounds && time < shape.lastSoundFrom) continue;
      writer.PutFrame(2 + sound, from, time, shape.sound / (kSecondMs / kSoundMs), true);
    }
  }
  writer.End(id::kCluster, cluster);
}

}  // namespace

ComPtr<SourceFilter> MakeFilm(const FilmShape& shape) {
  Writer writer;
  writer.Put(EbmlHead());
  const LONGLONG segment = writer.Begin(id::kSegment);
  writer.Put(Element(id::kInfo, Join({Unsigned(id::kTimecodeScale, 1000000),
                                      Float(id::kDuration, shape.seconds * static_cast<double>(kSecondMs))})));
  ByteString tracks = Track(1);
  for (unsigned sound = 0; sound < shape.sounds; ++sound) tracks = Join({tracks, Track(2 + sound)});
  writer.Put(Element(id::kTracks, tracks));
  for (std::uint32_t second = 0; second < shape.seconds; ++second) PutCluster(writer, shape, second * kSecondMs);
  writer.End(id::kSegment, segment);
  return writer.Finish();
}

FrameOrigin OriginOf(IMediaSample* sample) {
  FrameOrigin origin;
  BYTE* bytes = nullptr;
  if (SUCCEEDED(sample->GetPointer(&bytes)) && sample->GetActualDataLength() >= static_cast<LONG>(sizeof(origin))) {
    std::memcpy(&origin, bytes, sizeof(origin));
  }
  return origin;
}

}  // namespace tarvex::test
