// The Matroska reader: opens a file over an IAsyncReader, keeps what its headers say, and delivers the frames of its
// clusters. Owned by the filter, which also is its callback. It has no lock. Opening, which also reads the Cues, runs
// on the connecting thread. Delivery, and the search for a start time, run on the worker. The two never run at once.
// Only the flush operations may come at any time, from any thread.
#pragma once

#include <ebml/EbmlStream.h>
#include <matroska/KaxSegment.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "framework/platform/platform.h"
#include "scanner/elements/element_walker.h"
#include "scanner/elements/heap.h"
#include "scanner/file/matroska_info.h"
#include "scanner/file/scanned_chapter.h"
#include "scanner/frames/frame_decoder.h"
#include "scanner/frames/frame_info.h"
#include "scanner/frames/frame_receiver.h"
#include "scanner/index/cluster_search.h"
#include "scanner/index/known_clusters.h"
#include "scanner/index/search_reach.h"
#include "scanner/index/seek_point.h"
#include "scanner/matroska_callback.h"
#include "scanner/source/async_callback.h"

namespace tarvex {

/// Times are 100 ns units. What the byte source throws (MessageError) passes through every operation
/// that reads, and so does std::bad_alloc.
class CEbmlScanner : private FrameReceiver {
 public:
  CEbmlScanner() = default;
  CEbmlScanner(const CEbmlScanner&) = delete;
  CEbmlScanner& operator=(const CEbmlScanner&) = delete;
  virtual ~CEbmlScanner() = default;

  /// Lets go of the reader and the callback and forgets the index. Before every open.
  void Reset() noexcept;
  /// Not owned. Null: tracks are not announced and no frame is delivered.
  void SetCallback(CMatroskaCallback* callback) noexcept { m_callback = callback; }

  /// Opens a stream and reads its headers and Cues, calling OnTrack for every track entry. Throws MessageError
  /// when it is not Matroska. `reader` is not counted: it must stay until Reset.
  void CanProcess(IAsyncReader* reader);

  /// As in the file, empty when absent.
  const std::string& DocType() const noexcept { return m_info.docType; }
  /// 0 when unknown.
  std::uint64_t Duration() const { return m_info.Duration(); }
  /// Nanoseconds.
  std::uint64_t TimecodeScale() const { return m_info.TimecodeScale(); }

  /// Number of track entries.
  std::uint32_t Tracks() const noexcept { return static_cast<std::uint32_t>(m_info.TrackCount()); }
  /// In file order; null when there is no such index. The scanner keeps ownership, until the next open.
  const CHeap* TrackAt(std::uint32_t index) const { return m_info.TrackAt(index); }
  /// The first with this track number, or null.
  const CHeap* TrackByNumber(std::uint64_t number) const { return m_info.TrackByNumber(number); }
  /// 0 when unknown.
  std::uint64_t DefaultFrameDuration(std::uint64_t number) const { return m_info.DefaultFrameDuration(number); }
  const std::vector<ScannedChapter>& Chapters() const noexcept { return m_info.chapters; }

  /// Where the next Process begins; 0 = at the front.
  void SetStartTime(std::uint64_t time) noexcept { m_startTime = time; }

  /// Makes sure that there is a seek index: from the Cues, or, without Cues, from all Clusters, which are read for it.
  /// Each is done once for an open file. After a failed read or a pending event there is no index, and the next call
  /// tries again. Delivery needs it only where a search does not tell enough.
  void BuildIndex();
  /// For the files that are opened from now on.
  void SetSearchReach(const SearchReach& reach) noexcept { m_reach = reach; }
  const std::vector<SeekPoint>& Index() const noexcept { return m_seekIndex; }

  /// Delivers frames, from the start time if that is not 0. Where there are no Cues it looks for that time first. True:
  /// interrupted, by an event or a refused frame. False: the Clusters ran out.
  bool Process();

  /// Whether frames of the track with this number are to be decoded.
  bool IsCompressed(std::uint64_t number) const;
  /// True: the frame's bytes were replaced and stay until the next call. False: the frame is as it was.
  bool Decode(FrameInfo& frame);

  /// Make a blocked read return, and reads possible again. MessageError when nothing is open.
  void BeginFlush() { m_byteSource.BeginFlush(); }
  void EndFlush() { m_byteSource.EndFlush(); }

 protected:
  /// Announces the current track table.
  virtual void OnTrack();
  /// Hands a frame over. False stops delivery.
  virtual bool OnData(const FrameInfo& frame);

 private:
  void InitializeStream(IAsyncReader* reader);
  void ReadHeaders();
  void ReadInfo(libebml::EbmlMaster& info);
  void ReadSeekHead();
  void ReadCues();
  void ReadChapterList();
  void ReadDocType();
  bool FindStart(ElementWalker& walker);
  ClusterSearch::Result SearchClusters(ElementWalker& walker);
  void GoToStart(ElementWalker& walker) const;
  template <class Fill>
  void FillIndex(Fill&& fill);
  void ScanClusters();

  // FrameReceiver
  bool EventsPending() const override;
  void OnComing(std::span<const FrameInfo> frames) override;
  bool OnFrames(std::span<const FrameInfo> frames) override;

  CMatroskaCallback* m_callback = nullptr;
  std::uint64_t m_segmentDataStart = 0;                // file offset of the first byte of its data
  std::unique_ptr<libmatroska::KaxSegment> m_segment;  // without what is in it; null while nothing is open
  std::uint64_t m_cuesPosition = 0;                    // as the SeekHead says; 0 when it does not
  std::uint64_t m_chaptersPosition = 0;
  std::vector<SeekPoint> m_seekIndex;  // in file order
  bool m_isIndexSorted = false;
  bool m_cuesRead = false;
  bool m_clustersScanned = false;
  KnownClusters m_known;  // without Cues, as long as not all were read
  SearchReach m_reach;
  std::uint64_t m_startTime = 0;
  std::unique_ptr<libebml::EbmlStream> m_stream;  // over m_byteSource; null while nothing is open
  CAsyncCallback m_byteSource;
  CMatroskaInfo m_info;
  FrameDecoder m_decoder;
};

}  // namespace tarvex
