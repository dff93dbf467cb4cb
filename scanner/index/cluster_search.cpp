#include "scanner/index/cluster_search.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "scanner/limits.h"

namespace tarvex {

namespace {

// A frame may hold what looks like a Cluster. Going on from there to the next leads to the true ones after a few steps,
// so the first few do not count.
constexpr int kUnsure = 3;

std::uint64_t EndOfClusters(const libmatroska::KaxSegment& segment, std::uint64_t streamLength) {
  return segment.IsFiniteSize() ? std::min(segment.GetEndPosition(), streamLength) : streamLength;
}

}  // namespace

ClusterSearch::ClusterSearch(ElementWalker& walker, const libmatroska::KaxSegment& segment, const CMatroskaInfo& info,
                             std::uint64_t streamLength, KnownClusters& known, const SearchReach& reach,
                             const std::function<bool()>& eventsPending)
    : m_walker(walker),
      m_segment(segment),
      m_info(info),
      m_streamLength(streamLength),
      m_known(known),
      m_reach(reach),
      m_eventsPending(eventsPending),
      m_probe(walker, EndOfClusters(segment, streamLength), info.TimecodeScale(), reach, eventsPending),
      m_indexer(walker, info, m_entries) {}

bool ClusterSearch::Seen::Add(std::uint64_t position, bool isAfter) {
  if (!std::exchange(hasAny, true)) first = position;
  if (isAfter) return false;
  beforeLast = std::exchange(last, position);
  ++count;
  return true;
}

ClusterSearch::Result ClusterSearch::Find(std::uint64_t time) {
  if (!MayBeSearched(time) || !Prepare()) return Failed();
  const auto wanted = static_cast<std::int64_t>(time);
  const auto nearest = Nearest(wanted);
  if (!nearest) return Failed();
  constexpr std::uint64_t kClusters = 6;  // as many as are usually enough
  constexpr std::uint64_t kGrowth = 4;
  auto from = KnownAnchor(nearest->position, wanted);
  std::uint64_t through = nearest->position;
  for (std::uint64_t reach = (nearest->end - nearest->position) * kClusters;; reach *= kGrowth) {
    if (!from) from = Anchor(*nearest, reach);
    if (from) {
      const auto seen = Walk(*from, through, wanted);
      if (!seen) return Failed();
      if (seen->count >= 2) return {Outcome::kFound, seen->beforeLast};
      if (*from == Front()) return {Outcome::kFound, seen->hasAny ? seen->first : Front()};
      through = *std::exchange(from, std::nullopt);
    }
    if (m_isContradictory || m_probe.HasEnded()) return Failed();
  }
}

ClusterSearch::Result ClusterSearch::Failed() const {
  const bool isInterrupted = m_isInterrupted || m_probe.IsInterrupted();
  return {isInterrupted ? Outcome::kInterrupted : Outcome::kReadAll, 0};
}

// A lookup in a whole index begins at a place estimated from the index's length. For times up to the duration the
// estimate changes nothing. For later times the result depends on that length, which is not known here.
bool ClusterSearch::MayBeSearched(std::uint64_t time) const {
  constexpr std::uint64_t kLatest = std::uint64_t{1} << 62;
  constexpr std::uint64_t kSmallestBlock = 6;
  const bool reachesToTheEnd = !m_segment.IsFiniteSize() || m_segment.GetEndPosition() >= m_streamLength;
  if (!reachesToTheEnd || m_streamLength < m_reach.smallestFile || time > kLatest) return false;
  const std::uint64_t duration = m_info.Duration();
  if (m_info.TimecodeScale() == 0 || duration == 0 || time <= duration) return m_info.TimecodeScale() != 0;
  return time - duration < duration / std::min<std::uint64_t>(limits::kIndexEntries, m_streamLength / kSmallestBlock);
}

// Looks at the first Cluster and at some all over the file. False when their times do not rise.
bool ClusterSearch::Prepare() {
  constexpr std::uint64_t kSamples = 8;
  if (!m_known.Marks().empty()) return true;
  m_walker.MoveTo(m_segment.GetDataStart());
  const auto cluster = m_walker.FindNextCluster(m_segment);
  const auto front = cluster ? m_probe.At(cluster->GetElementPosition()) : std::nullopt;
  if (!front || !m_known.AddMark(*front)) return false;
  const std::uint64_t length = EndOfClusters(m_segment, m_streamLength) - front->position;
  for (std::uint64_t sample = 1; sample < kSamples; ++sample) {
    Probe(std::max(front->end, front->position + length / kSamples * sample), m_streamLength);
  }
  if (!m_isContradictory && !m_probe.HasEnded()) return true;
  m_known.Clear();
  return false;
}

std::optional<ProbedCluster> ClusterSearch::Probe(std::uint64_t begin, std::uint64_t end) {
  auto found = m_probe.First(begin, end);
  if (found && !m_known.AddMark(*found)) m_isContradictory = true;
  return m_isContradictory ? std::nullopt : found;
}

// A Cluster that is not after the wanted time, and not far from it.
std::optional<ProbedCluster> ClusterSearch::Nearest(std::int64_t time) {
  const auto& marks = m_known.Marks();
  const auto later = std::ranges::partition_point(marks, [&](const auto& mark) { return mark.time <= time; });
  if (later == marks.begin()) return marks.front();
  ProbedCluster low = *std::prev(later);
  std::uint64_t end = EndOfClusters(m_segment, m_streamLength);
  std::optional<std::int64_t> endTime;
  if (later != marks.end()) {
    end = later->position;
    endTime = later->time;
  } else if (const auto duration = static_cast<std::int64_t>(m_info.Duration()); duration > time) {
    endTime = duration;
  }
  for (unsigned step = 1; end > low.end && end - low.end > m_reach.closest; ++step) {
    const std::uint64_t gap = end - low.end;
    auto ahead = AheadOf(low, gap, time, endTime);
    if (ahead && *ahead <= m_reach.closest) break;
    if (step % 4 == 0) ahead.reset();  // the estimate may never come nearer
    const std::uint64_t aim = low.end + (ahead ? *ahead - m_reach.closest / 2 : gap / 2);
    const auto found = Probe(aim, end);
    if (m_isContradictory || m_probe.HasEnded()) return std::nullopt;
    if (found && found->time <= time) {
      low = *found;
    } else {
      end = aim;
      if (found) endTime = found->time;
    }
  }
  return low;
}

// Estimated bytes between that Cluster and the wanted time.
std::optional<std::uint64_t> ClusterSearch::AheadOf(const ProbedCluster& low, std::uint64_t gap, std::int64_t time,
                                                    std::optional<std::int64_t> highTime) const {
  if (!highTime || *highTime <= time) return std::nullopt;
  // In floating point: times of a damaged file may be so far apart that integers overflow.
  const double whole = static_cast<double>(*highTime) - static_cast<double>(low.time);
  const double part = static_cast<double>(time) - static_cast<double>(low.time);
  if (!(whole > 0)) return std::nullopt;
  return static_cast<std::uint64_t>(static_cast<double>(gap) * std::clamp(part / whole, 0.0, 1.0));
}

// A known Cluster from which on two entries are not after the time, or the first Cluster of the file.
std::optional<std::uint64_t> ClusterSearch::KnownAnchor(std::uint64_t position, std::int64_t time) const {
  std::size_t count = 0;
  for (;;) {
    const KnownCluster* cluster = m_known.Find(position);
    if (cluster == nullptr) return std::nullopt;
    count += static_cast<std::size_t>(std::ranges::count_if(cluster->times, [=](auto each) { return each <= time; }));
    if (count >= 2 || position == Front()) return position;
    const std::uint64_t before = m_known.Before(position);
    if (before == position) return std::nullopt;
    position = before;
  }
}

// A place that surely is a Cluster, about `reach` bytes in front of `nearest`. Nothing when there is none.
std::optional<std::uint64_t> ClusterSearch::Anchor(const ProbedCluster& nearest, std::uint64_t reach) {
  if (nearest.position - Front() <= reach) return Front();
  auto found = Probe(nearest.position - reach, nearest.position);
  for (int unsure = 0; found && unsure < kUnsure; ++unsure) {
    if (found->position == nearest.position) return std::nullopt;
    found = m_probe.Next(*found);
    // Going on from a true Cluster must lead to `nearest`, and not past it.
    m_isContradictory = !found || found->position > nearest.position || !m_known.AddMark(*found);
    if (m_isContradictory) return std::nullopt;
  }
  return found ? std::optional(found->position) : std::nullopt;
}

// Walks over Clusters one after the other, as reading everything does, until an entry is after the time. The walk must
// come to the Cluster at `through`, else the file contradicts itself.
std::optional<ClusterSearch::Seen> ClusterSearch::Walk(std::uint64_t from, std::uint64_t through, std::int64_t time) {
  Seen seen;
  std::optional<std::int64_t> last;
  bool wasThrough = false;
  for (std::uint64_t position = from; position != KnownCluster::kNone;) {
    m_isInterrupted = m_isInterrupted || m_eventsPending();
    wasThrough = wasThrough || position == through;
    if (m_isInterrupted || position - from > m_reach.budget || (position > through && !wasThrough)) return std::nullopt;
    const KnownCluster* cluster = m_known.Find(position);
    if (cluster == nullptr) cluster = Read(position);
    if (cluster == nullptr) return std::nullopt;
    const auto& times = cluster->times;
    if (!std::ranges::is_sorted(times) || (last && !times.empty() && times.front() < *last)) return std::nullopt;
    for (const std::int64_t each : times) {
      if (!seen.Add(position, each > time)) return seen;
      last = each;
    }
    position = cluster->next;
  }
  return wasThrough ? std::optional(seen) : std::nullopt;
}

const KnownCluster* ClusterSearch::Read(std::uint64_t position) {
  m_walker.MoveTo(position);
  const auto cluster = m_walker.FindNextCluster(m_segment);
  if (!cluster || cluster->GetElementPosition() != position) return nullptr;
  m_indexer.Add(*cluster);
  if (m_entries.IsThinned()) return nullptr;
  KnownCluster known;
  for (const SeekPoint& entry : m_entries.Take()) known.times.push_back(static_cast<std::int64_t>(entry.time));
  if (const auto next = m_walker.FindNextCluster(m_segment)) known.next = next->GetElementPosition();
  m_known.Add(position, std::move(known));
  return m_known.Find(position);
}

}  // namespace tarvex
