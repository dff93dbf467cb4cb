#include "scanner/file/matroska_info.h"

#include "scanner/block_time.h"

namespace tarvex {

void CMatroskaInfo::Clear() {
  m_tracks.clear();
  m_byNumber.clear();
  m_lowNumbers = {};
  segmentInfo.Clear();
  chapters.clear();
  docType.clear();
}

CHeap& CMatroskaInfo::AddTrack() { return *m_tracks.emplace_back(std::make_unique<CHeap>()); }

void CMatroskaInfo::FinishTrack() {
  const CHeap& heap = *m_tracks.back();
  const auto number = heap.Unsigned("KaxTrackNumber");
  if (!number) return;
  const std::uint64_t nanoseconds = heap.Unsigned("KaxTrackDefaultDuration").value_or(0);
  const bool isCompressed = heap.Find("KaxContentCompAlgo") != nullptr;
  const auto [entry, isFirst] =
      m_byNumber.try_emplace(*number, NumberedTrack{&heap, nanoseconds / kNanosecondsPerUnit, isCompressed});
  if (isFirst && *number < m_lowNumbers.size()) m_lowNumbers[static_cast<std::size_t>(*number)] = entry->second;
}

// Null when there is none.
const CMatroskaInfo::NumberedTrack* CMatroskaInfo::Find(std::uint64_t number) const {
  if (number < m_lowNumbers.size()) {
    const NumberedTrack& track = m_lowNumbers[static_cast<std::size_t>(number)];
    return track.heap == nullptr ? nullptr : &track;
  }
  const auto found = m_byNumber.find(number);
  return found == m_byNumber.end() ? nullptr : &found->second;
}

const CHeap* CMatroskaInfo::TrackAt(std::size_t index) const {
  return index < m_tracks.size() ? m_tracks[index].get() : nullptr;
}

const CHeap* CMatroskaInfo::TrackByNumber(std::uint64_t number) const {
  const NumberedTrack* track = Find(number);
  return track == nullptr ? nullptr : track->heap;
}

std::int64_t CMatroskaInfo::FirstVideoTrackNumber() const {
  constexpr std::uint64_t kVideo = 1;
  for (std::int64_t number = 1;; ++number) {
    const CHeap* track = TrackByNumber(static_cast<std::uint64_t>(number));
    if (track == nullptr) return -1;
    if (track->Unsigned("KaxTrackType") == kVideo) return number;
  }
}

std::uint64_t CMatroskaInfo::DefaultFrameDuration(std::uint64_t number) const {
  const NumberedTrack* track = Find(number);
  return track == nullptr ? 0 : track->frameDuration;
}

const CHeap* CMatroskaInfo::CompressedTrack(std::uint64_t number) const {
  const NumberedTrack* track = Find(number);
  return track == nullptr || !track->isCompressed ? nullptr : track->heap;
}

std::uint64_t CMatroskaInfo::TimecodeScale() const {
  constexpr std::uint64_t kOneMillisecond = 1000000;
  return segmentInfo.Unsigned("KaxTimecodeScale").value_or(kOneMillisecond);
}

std::uint64_t CMatroskaInfo::Duration() const {
  return SegmentDuration(segmentInfo.Float("KaxDuration").value_or(0.0), TimecodeScale());
}

}  // namespace tarvex
