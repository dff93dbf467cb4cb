// Opening and closing.
#include "filter/source.h"

#include "framework/com_boundary.h"
#include "framework/message_error.h"

namespace tarvex {

namespace {

/// Makes the record of each track while the headers are read.
class TrackCollector final : public CMatroskaCallback {
 public:
  TrackCollector(CEbmlScanner& scanner, COutPinsCreator& tracks) : m_scanner(scanner), m_tracks(tracks) {
    m_scanner.SetCallback(this);
  }
  ~TrackCollector() { m_scanner.SetCallback(nullptr); }
  TrackCollector(const TrackCollector&) = delete;
  TrackCollector& operator=(const TrackCollector&) = delete;

  void OnTrack(std::uint32_t heapIndex) override {
    const CHeap* heap = m_scanner.TrackAt(heapIndex);
    if (heap == nullptr) throw MessageError("<CMatroskaSplitter::OnTrack> no such track entry");
    m_tracks.CreatePin(*heap);
  }
  bool ProcessEvents() override { return false; }
  bool OnData(const FrameInfo& /*frame*/) override { return false; }

 private:
  CEbmlScanner& m_scanner;
  COutPinsCreator& m_tracks;
};

}  // namespace

void Source::Open(IAsyncReader* upstream, SourceReads reads) {
  m_reader = MakeCom<ReadAheadReader>(upstream, reads, [this] { m_pass.BeforeWait(); });
  {
    const TrackCollector collector(m_scanner, m_tracks);
    m_scanner.CanProcess(m_reader.Get());
  }
  m_positions.Open(static_cast<REFERENCE_TIME>(m_scanner.Duration()), FrameDurations());
}

// The end of the reader waits for a read that another thread is in, and so comes without the lock.
void Source::Close() {
  ComPtr<ReadAheadReader> closing;
  const CAutoLock positionLock(m_positions.PositionLock());
  m_scanner.Reset();
  m_tracks.Clear();
  m_reader.Swap(closing);
  m_positions.Close();
}

std::map<std::uint32_t, REFERENCE_TIME> Source::FrameDurations() const {
  std::map<std::uint32_t, REFERENCE_TIME> durations;
  for (std::uint32_t index = 0; index < m_scanner.Tracks(); ++index) {
    const auto number = m_scanner.TrackAt(index)->Unsigned("KaxTrackNumber");
    if (!number) continue;
    const auto duration = static_cast<REFERENCE_TIME>(m_scanner.DefaultFrameDuration(*number));
    durations.emplace(static_cast<std::uint32_t>(*number), duration);
  }
  return durations;
}

// What the reader says of flushing is nobody's affair: without a reader, or with one that fails, the worker is in no
// read either.
void Source::BeginFlush() noexcept {
  if (!IsOpen()) return;
  static_cast<void>(ComBoundary([this] {
    m_scanner.BeginFlush();
    return S_OK;
  }));
}

void Source::EndFlush() noexcept {
  if (!IsOpen()) return;
  static_cast<void>(ComBoundary([this] {
    m_scanner.EndFlush();
    return S_OK;
  }));
}

}  // namespace tarvex
