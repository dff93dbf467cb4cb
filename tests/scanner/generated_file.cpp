// See generated_file.h.
#include "tests/scanner/generated_file.h"

#include <algorithm>

namespace tarvex::test {
namespace {

constexpr std::uint32_t kPosition = 0xA7, kPrevSize = 0xAB, kSilentTracks = 0x5854, kEncryptedBlock = 0xAF,
                        kBlockAdditions = 0x75A1, kDiscardPadding = 0x75A2, kUnknown = 0x4444;

void Append(ByteString& bytes, const ByteString& more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

/// One file and its habits, which are drawn once.
class Generator {
 public:
  Generator(std::mt19937& random, const GeneratedShape& shape) : m_random(random), m_shape(shape) {}

  ByteString Make() {
    ByteString clusters;
    for (std::size_t cluster = 0; cluster < m_clusters; ++cluster) {
      Append(clusters, Between());
      m_time += cluster == 0 ? Below(100) : 1 + Below(OneIn(20) ? 20000 : 500);
      Append(clusters, OneCluster());
    }
    const ByteString data = Join({Headers(), clusters, Between()});
    ByteString file = Join({EbmlHead(), m_unknownSegment ? ElementOfUnknownSize(id::kSegment, data)  //
                                                         : Element(id::kSegment, data)});
    if (OneIn(8)) file.resize(file.size() - Below(std::min<std::size_t>(clusters.size(), 3000)));
    return file;
  }

 private:
  std::size_t Below(std::size_t limit) { return m_random() % limit; }
  bool OneIn(std::size_t times) { return Below(times) == 0; }
  void AppendOneIn(std::size_t times, ByteString& bytes, const ByteString& more) {
    if (OneIn(times)) Append(bytes, more);
  }

  ByteString Headers() {
    ByteString info = Unsigned(id::kTimecodeScale, OneIn(4) ? 100000 : 1000000);
    const double wrong = OneIn(8) ? 0.5 + static_cast<double>(Below(10)) : 1.0;
    if (!OneIn(4)) Append(info, Float(id::kDuration, static_cast<double>(m_time + 500) * wrong));
    const ByteString tracks =
        Join({TrackEntry(1, m_video == 1 ? 1 : 2, "A"), TrackEntry(2, m_video == 2 ? 1 : 2, "A")});
    return Join({Element(id::kInfo, info), Element(id::kTracks, tracks)});
  }

  /// What stands between two Clusters.
  ByteString Between() {
    if (OneIn(30)) return Element(id::kVoid, Zeros(Below(3000)));
    if (OneIn(30)) return Element(id::kTags, Element(0x7373, Zeros(Below(200))));
    if (OneIn(60)) return Element(id::kVoid, Join({Cluster(m_time + 1, {}), Zeros(Below(40))}));
    return {};
  }

  ByteString OneCluster() {
    ByteString data;
    if (m_hasChecksums) Append(data, Element(id::kCrc32, Noise(4, m_random())));
    Append(data, Unsigned(id::kTimecode, m_time));
    if (m_hasPositions) Append(data, Join({Unsigned(kPosition, Below(100000)), Unsigned(kPrevSize, Below(100000))}));
    AppendOneIn(50, data, Element(kSilentTracks, Unsigned(0x58D7, 2)));
    std::uint64_t relative = 0;
    for (std::size_t count = Below(m_blocks + 1) + (m_blocks == 1 ? 1 : 0); count > 0; --count) {
      Append(data, Block(static_cast<std::int16_t>(relative)));
      relative += Below(40);
      AppendOneIn(100, data, Element(id::kVoid, Zeros(Below(300))));
      AppendOneIn(100, data, Element(kEncryptedBlock, Noise(Below(50), m_random())));
    }
    m_time += relative;
    if (!m_unknownClusters) AppendOneIn(40, data, Element(kUnknown, {1}));
    return m_unknownClusters ? ElementOfUnknownSize(id::kCluster, data) : Element(id::kCluster, data);
  }

  /// Now and then one that looks like something else.
  ByteString Frame() {
    ByteString frame = Noise(5 + Below(m_shape.frameBytes), m_random());
    for (std::size_t k = 0, number = m_frame++; k < 4; ++k, number >>= 8) frame[k] = static_cast<std::uint8_t>(number);
    AppendOneIn(40, frame, Id(id::kCluster));
    if (!m_hasClustersInFrames) return frame;
    AppendOneIn(80, frame, Cluster(m_time + Below(3000), SimpleBlock(1, 0, {1, 2, 3})));
    AppendOneIn(200, frame, Join({Cluster(m_time, {}), Cluster(m_time + 1, SimpleBlock(1, 0, {1}))}));
    return frame;
  }

  ByteString Block(std::int16_t relative) {
    const std::uint64_t track = 1 + Below(2);
    const bool key = track != std::max<std::uint64_t>(m_video, 1) || Below(m_keyEvery) == 0;
    if (OneIn(12) && !m_unknownClusters) return LacedBlock(track, relative, {Frame(), Frame(), Frame()});
    if (!OneIn(4)) return SimpleBlock(track, relative, Frame(), key);
    ByteString group = Element(id::kBlock, BlockData(track, relative, 0, Frame()));
    if (!key) Append(group, Signed(id::kReferenceBlock, -40));
    AppendOneIn(2, group, Unsigned(id::kBlockDuration, 40));
    AppendOneIn(8, group, Signed(kDiscardPadding, 1000));
    AppendOneIn(8, group, Element(kBlockAdditions, Element(0xA6, Unsigned(0xEE, 1))));
    return Element(id::kBlockGroup, group);
  }

  std::mt19937& m_random;
  const GeneratedShape m_shape;
  const std::size_t m_clusters = (1 + Below(OneIn(4) ? 300 : 40)) * m_shape.length;
  const std::size_t m_blocks = OneIn(4) ? 1 : 1 + Below(30);
  const std::size_t m_keyEvery = OneIn(8) ? 1000 : 1 + Below(40);
  const std::uint64_t m_video = OneIn(4) ? 0 : 1 + Below(2);  // the track that is one; 0: none is
  const bool m_unknownSegment = OneIn(4);
  const bool m_unknownClusters = OneIn(5);
  const bool m_hasChecksums = OneIn(3);
  const bool m_hasPositions = OneIn(3);
  const bool m_hasClustersInFrames = OneIn(8);
  std::uint64_t m_time = 0;  // ticks
  std::size_t m_frame = 0;
};

}  // namespace

ByteString GenerateFile(std::mt19937& random, const GeneratedShape& shape) { return Generator(random, shape).Make(); }

}  // namespace tarvex::test
