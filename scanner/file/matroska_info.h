// What the scanner learned from a file's headers. Owned by the scanner; filled on the thread that opens the file;
// afterwards nobody writes, and pin creation and the worker read.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "scanner/elements/heap.h"
#include "scanner/file/scanned_chapter.h"

namespace tarvex {

class CMatroskaInfo {
 public:
  CMatroskaInfo() = default;
  CMatroskaInfo(const CMatroskaInfo&) = delete;
  CMatroskaInfo& operator=(const CMatroskaInfo&) = delete;
  virtual ~CMatroskaInfo() = default;

  /// Forgets tracks, segment information and chapters. Tables that were copied stay usable.
  void Clear();

  /// Appends an empty table, which becomes the current one.
  CHeap& AddTrack();
  /// The current table is filled: from now on it is found by its number.
  void FinishTrack();
  /// Index of the table appended last; -1 when there is none.
  std::int32_t CurrentHeap() const { return static_cast<std::int32_t>(m_tracks.size()) - 1; }

  std::size_t TrackCount() const { return m_tracks.size(); }
  /// Null when there is no such index.
  const CHeap* TrackAt(std::size_t index) const;
  /// The first table with this track number, or null.
  const CHeap* TrackByNumber(std::uint64_t number) const;
  /// Tries 1, 2, 3 and so on until a number has no track; -1 when none so far was a video track.
  std::int64_t FirstVideoTrackNumber() const;
  /// 100 ns units; 0 when the track or its element is missing.
  std::uint64_t DefaultFrameDuration(std::uint64_t number) const;
  /// That table when it says how the track's frames are compressed, else null.
  const CHeap* CompressedTrack(std::uint64_t number) const;

  /// Nanoseconds.
  std::uint64_t TimecodeScale() const;
  /// 100 ns units; 0 when the file does not say or says nonsense.
  std::uint64_t Duration() const;

  CHeap segmentInfo;
  std::vector<ScannedChapter> chapters;
  std::string docType;  // empty when absent

 private:
  struct NumberedTrack {
    const CHeap* heap = nullptr;
    std::uint64_t frameDuration = 0;  // 100 ns units
    bool isCompressed = false;
  };

  const NumberedTrack* Find(std::uint64_t number) const;

  std::vector<std::unique_ptr<CHeap>> m_tracks;                 // in file order
  std::unordered_map<std::uint64_t, NumberedTrack> m_byNumber;  // the first of each number
  // The same for the usual numbers, which every frame asks for.
  std::array<NumberedTrack, 128> m_lowNumbers{};
};

}  // namespace tarvex
