#include "scanner/index/known_clusters.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "scanner/limits.h"

namespace tarvex {

bool KnownClusters::AddMark(const ProbedCluster& cluster) {
  const auto behind = std::ranges::lower_bound(m_marks, cluster.position, {}, &ProbedCluster::position);
  if (behind != m_marks.end() && behind->position == cluster.position) return behind->time == cluster.time;
  const auto isBefore = [](const ProbedCluster& one, const ProbedCluster& other) {
    return one.time <= other.time && one.end <= other.position;
  };
  if (behind != m_marks.end() && !isBefore(cluster, *behind)) return false;
  if (behind != m_marks.begin() && !isBefore(*std::prev(behind), cluster)) return false;
  if (m_marks.size() < limits::kKnownClusters) m_marks.insert(behind, cluster);
  return true;
}

void KnownClusters::Add(std::uint64_t position, KnownCluster cluster) {
  if (m_clusters.size() >= limits::kKnownClusters || m_entries > limits::kIndexEntries) {
    m_clusters.clear();
    m_entries = 0;
  }
  m_entries += cluster.times.size();
  m_clusters.insert_or_assign(position, std::move(cluster));
}

const KnownCluster* KnownClusters::Find(std::uint64_t position) const {
  const auto found = m_clusters.find(position);
  return found == m_clusters.end() ? nullptr : &found->second;
}

std::uint64_t KnownClusters::Before(std::uint64_t position) const {
  const auto behind = m_clusters.lower_bound(position);
  if (behind == m_clusters.begin()) return position;
  const auto before = std::prev(behind);
  return before->second.next == position ? before->first : position;
}

void KnownClusters::Clear() {
  m_marks.clear();
  m_clusters.clear();
  m_entries = 0;
}

}  // namespace tarvex
