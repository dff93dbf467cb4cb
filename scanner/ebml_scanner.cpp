#include "scanner/ebml_scanner.h"

#include <ebml/EbmlHead.h>
#include <ebml/EbmlSubHead.h>
#include <matroska/KaxChapters.h>
#include <matroska/KaxCues.h>
#include <matroska/KaxInfo.h>
#include <matroska/KaxInfoData.h>
#include <matroska/KaxSemantic.h>
#include <matroska/KaxTracks.h>

#include <new>
#include <utility>

#include "framework/log.h"
#include "framework/message_error.h"
#include "scanner/file/chapter_reader.h"
#include "scanner/file/track_reader.h"
#include "scanner/frames/cluster_delivery.h"
#include "scanner/index/cluster_index.h"
#include "scanner/index/cue_index.h"
#include "scanner/index/index_search.h"

namespace tarvex {

void CEbmlScanner::Reset() noexcept {
  m_decoder = {};
  m_stream.reset();
  m_segment.reset();
  m_byteSource.Detach();
  m_callback = nullptr;
  m_seekIndex.clear();
  m_cuesRead = false;
  m_clustersScanned = false;
  m_known.Clear();
}

void CEbmlScanner::InitializeStream(IAsyncReader* reader) {
  m_info.Clear();
  m_seekIndex.clear();
  m_cuesRead = false;
  m_clustersScanned = false;
  m_known.Clear();
  m_byteSource.Attach(reader);
  m_byteSource.setFilePointer(0);
  m_stream.reset(new (std::nothrow) libebml::EbmlStream(m_byteSource));
  if (!m_stream) throw MessageError("<CEbmlScanner::initializeStream> failed to create EBML stream object");
}

void CEbmlScanner::CanProcess(IAsyncReader* reader) {
  InitializeStream(reader);
  ReadHeaders();
  ReadSeekHead();
  ReadChapterList();
  ReadDocType();
  // Now, since nobody waits for a picture yet, as after a seek. Not if the Cues have not arrived: opening would wait.
  if (m_byteSource.HasArrived(m_cuesPosition)) ReadCues();
}

void CEbmlScanner::ReadHeaders() {
  ElementWalker walker(*m_stream, m_byteSource);
  m_segment = walker.FindSegment();
  if (!m_segment) throw MessageError("<CEbmlScanner::CanProcess> No segment/level 0 element found");
  m_segmentDataStart = m_segment->GetDataStart();
  // Either may come first, and a second one of a kind counts as the other.
  constexpr int kHeaders = 2;
  for (int headers = 0; headers < kHeaders;) {
    const ElementPtr child = walker.FindNextChild(*m_segment);
    if (!child) return;
    if (auto* info = ElementAs<libmatroska::KaxInfo>(child.get())) {
      walker.ReadMaster(*info);
      ReadInfo(*info);
      ++headers;
    } else if (auto* tracks = ElementAs<libmatroska::KaxTracks>(child.get())) {
      ReadTracks(walker, *tracks, m_info, [this] { OnTrack(); });
      ++headers;
    }
    walker.Skip(*child);
  }
}

void CEbmlScanner::ReadInfo(libebml::EbmlMaster& info) {
  for (const libebml::EbmlElement* child : info) {
    if (ElementAs<libmatroska::KaxTimecodeScale>(child) != nullptr) {
      m_info.segmentInfo.Store("KaxTimecodeScale", *child);
    } else if (ElementAs<libmatroska::KaxDuration>(child) != nullptr) {
      m_info.segmentInfo.Store("KaxDuration", *child);
    }
  }
}

// Now, while its bytes are in memory: its entries are needed later.
void CEbmlScanner::ReadSeekHead() {
  ElementWalker walker(*m_stream, m_byteSource);
  walker.MoveTo(m_segmentDataStart);
  m_cuesPosition = walker.SeekHeadPosition(*m_segment, EBML_ID(libmatroska::KaxCues));
  walker.MoveTo(m_segmentDataStart);
  m_chaptersPosition = walker.SeekHeadPosition(*m_segment, EBML_ID(libmatroska::KaxChapters));
}

void CEbmlScanner::ReadChapterList() {
  ElementWalker walker(*m_stream, m_byteSource);
  const auto chapters = walker.FindAt<libmatroska::KaxChapters>(*m_segment, m_chaptersPosition);
  if (!chapters) return;
  m_info.chapters = ReadChapters(walker, *chapters);
}

void CEbmlScanner::ReadDocType() {
  constexpr std::uint64_t kMaxDataSize = 0xFFFFFFFF;
  ElementWalker walker(*m_stream, m_byteSource);
  walker.MoveTo(0);
  const ElementPtr element(m_stream->FindNextID(EBML_INFO(libebml::EbmlHead), kMaxDataSize));
  auto* head = ElementAs<libebml::EbmlHead>(element.get());
  if (head == nullptr) return;
  walker.ReadMaster(*head);
  const auto* docType = ElementAs<libebml::EDocType>(head->FindFirstElt(EBML_INFO(libebml::EDocType)));
  if (docType != nullptr) m_info.docType = docType->GetValue();
}

void CEbmlScanner::OnTrack() {
  if (m_callback == nullptr) {
    LogText("Scanner callback is not found");
    return;
  }
  m_callback->OnTrack(static_cast<std::uint32_t>(m_info.CurrentHeap()));
}

bool CEbmlScanner::OnData(const FrameInfo& frame) { return m_callback != nullptr && m_callback->OnData(frame); }

void CEbmlScanner::OnComing(std::span<const FrameInfo> frames) {
  if (m_callback != nullptr) m_callback->OnComing(frames);
}

bool CEbmlScanner::OnFrames(std::span<const FrameInfo> frames) {
  if (frames.empty()) return true;
  if (frames.size() == 1) return OnData(frames.front());
  return m_callback != nullptr && m_callback->OnLace(frames);
}

bool CEbmlScanner::EventsPending() const { return m_callback != nullptr && m_callback->ProcessEvents(); }

template <class Fill>
void CEbmlScanner::FillIndex(Fill&& fill) {
  try {
    fill();
  } catch (const MessageError& error) {
    LogText(error.what());  // playing starts from the front
    m_seekIndex.clear();
  }
  m_isIndexSorted = IsIndexSorted(m_seekIndex);
  m_byteSource.setFilePointer(0);
}

void CEbmlScanner::ReadCues() {
  if (!m_stream || !m_segment || m_cuesRead) return;
  FillIndex([this] {
    ElementWalker walker(*m_stream, m_byteSource);
    m_seekIndex = IndexFromCues(walker, *m_segment, m_cuesPosition, m_info.TimecodeScale());
    m_cuesRead = true;
  });
}

void CEbmlScanner::BuildIndex() {
  ReadCues();
  if (!m_cuesRead || m_clustersScanned || !m_seekIndex.empty()) return;
  FillIndex([this] { ScanClusters(); });
}

void CEbmlScanner::ScanClusters() {
  ElementWalker walker(*m_stream, m_byteSource);
  walker.MoveTo(m_segmentDataStart);
  auto index = IndexFromClusters(walker, *m_segment, m_info, [this] { return EventsPending(); });
  if (!index) return;
  m_seekIndex = std::move(*index);
  m_clustersScanned = true;
  m_known.Clear();
}

bool CEbmlScanner::Process() {
  if (!m_stream || !m_segment) return false;
  ElementWalker walker(*m_stream, m_byteSource);
  if (!FindStart(walker)) return true;
  ClusterDelivery delivery(m_info, *this);
  while (const auto cluster = walker.FindNextCluster(*m_segment)) {
    if (!delivery.DeliverCluster(walker, cluster.get())) return true;
  }
  return false;
}

// False: interrupted. After a failed read the start is the front.
bool CEbmlScanner::FindStart(ElementWalker& walker) {
  using Outcome = ClusterSearch::Outcome;
  ClusterSearch::Result result;
  if (m_startTime != 0) {
    ReadCues();
    const bool hasNone = m_cuesRead && m_seekIndex.empty() && !m_clustersScanned;
    if (hasNone) result = SearchClusters(walker);
    if (result.outcome == Outcome::kReadAll) BuildIndex();
    if (result.outcome == Outcome::kInterrupted || EventsPending()) return false;  // perhaps during the search
  }
  walker.MoveTo(m_segmentDataStart);
  if (result.outcome == Outcome::kFound) {
    walker.MoveTo(result.position);
  } else {
    GoToStart(walker);
  }
  return true;
}

ClusterSearch::Result CEbmlScanner::SearchClusters(ElementWalker& walker) {
  const std::function<bool()> eventsPending = [this] { return EventsPending(); };
  try {
    ClusterSearch search(walker, *m_segment, m_info, m_byteSource.Length(), m_known, m_reach, eventsPending);
    return search.Find(m_startTime);
  } catch (const MessageError& error) {
    LogText(error.what());
    return {ClusterSearch::Outcome::kFound, m_segmentDataStart};
  }
}

// One entry earlier than the one that covers the start, so that decoders have a picture before it.
void CEbmlScanner::GoToStart(ElementWalker& walker) const {
  if (m_startTime == 0 || m_seekIndex.empty()) return;
  std::int32_t entry = FindIndexEntry(m_seekIndex, m_startTime, Duration(), m_isIndexSorted);
  if (entry > 0) --entry;
  walker.MoveTo(m_seekIndex[static_cast<std::size_t>(entry)].position);
}

bool CEbmlScanner::IsCompressed(std::uint64_t number) const { return m_info.CompressedTrack(number) != nullptr; }

bool CEbmlScanner::Decode(FrameInfo& frame) {
  return m_decoder.Decode(m_info.CompressedTrack(frame.trackNumber), frame);
}

}  // namespace tarvex
