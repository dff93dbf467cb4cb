// Opening and closing the source, and the output pins that come and go with it. Application threads, with
// the filter lock held and the filter stopped.
#include <map>
#include <utility>

#include "filter/matroska_splitter.h"
#include "filter/source_manners.h"
#include "framework/com_boundary.h"
#include "framework/log.h"
#include "framework/message_error.h"
#include "scanner/source/read_ahead_reader.h"

namespace tarvex {

HRESULT CMatroskaSplitter::OpenSource(IPin* peer) {
  ComPtr<IAsyncReader> upstream;
  const HRESULT result = ComPtr<IPin>(peer).Query(upstream);
  if (FAILED(result)) return result;
  try {
    ReadSource(upstream.Get(), ReadsTakenBy(peer));
    CreateOutputPins(m_separatePins);
    return S_OK;
  } catch (...) {
    static_cast<void>(ResultOfCurrentException());  // logs the text; the caller learns only of the refusal
  }
  CloseSource();
  return VFW_E_TYPE_NOT_ACCEPTED;
}

void CMatroskaSplitter::ReadSource(IAsyncReader* upstream, SourceReads reads) {
  CloseSource();
  m_reader = MakeCom<ReadAheadReader>(upstream, reads, [this] { BeforeWait(); });
  m_scanner.SetCallback(this);
  m_scanner.CanProcess(m_reader.Get());
  m_positions.Open(static_cast<REFERENCE_TIME>(m_scanner.Duration()), FrameDurations());
}

void CMatroskaSplitter::CloseSource() {
  EndWorker();
  TearDownOutputPins();
  m_creator.Clear();
  const CAutoLock positionLock(m_positionLock);  // a seek sets the scanner's start time
  m_scanner.Reset();
  m_scanner.SetStartTime(0);
  m_reader.Reset();
  m_positions.Close();
}

std::map<std::uint32_t, REFERENCE_TIME> CMatroskaSplitter::FrameDurations() const {
  std::map<std::uint32_t, REFERENCE_TIME> durations;
  for (std::uint32_t index = 0; index < m_scanner.Tracks(); ++index) {
    const auto number = m_scanner.TrackAt(index)->Unsigned("KaxTrackNumber");
    if (!number) continue;
    const auto duration = static_cast<REFERENCE_TIME>(m_scanner.DefaultFrameDuration(*number));
    durations.emplace(static_cast<std::uint32_t>(*number), duration);
  }
  return durations;
}

void CMatroskaSplitter::OnTrack(std::uint32_t heapIndex) {
  const CHeap* heap = m_scanner.TrackAt(heapIndex);
  if (heap == nullptr) throw MessageError("<CMatroskaSplitter::OnTrack> no such track entry");
  m_creator.CreatePin(*heap);
}

// All of them or, when something throws, none.
void CMatroskaSplitter::CreateOutputPins(bool separate) {
  TearDownOutputPins();
  try {
    if (separate) {
      m_creator.CreatePinsForAllTracks();
    } else {
      m_creator.CreatePinsByType();
    }
  } catch (...) {
    TearDownOutputPins();
    throw;
  }
}

void CMatroskaSplitter::TearDownOutputPins() {
  if (m_outputPins.empty()) return;
  // Without the position lock, since peers take locks of their own.
  for (const auto& pin : m_outputPins) {
    const ComPtr<IPin> peer(pin->GetConnected());
    if (!peer) continue;
    peer->Disconnect();
    pin->Disconnect();
  }
  PinList leaving;
  {
    const CAutoLock positionLock(m_positionLock);
    leaving.swap(m_outputPins);
    m_seekingOwner = nullptr;
    m_gate.Clear();
  }
  IncrementPinVersion();
}

void CMatroskaSplitter::AppendOutputPin(ComPtr<CMatroskaOutputPin> pin) {
  if (!pin) return;
  const CAutoLock positionLock(m_positionLock);
  m_outputPins.emplace_back(pin);
  IncrementPinVersion();
}

}  // namespace tarvex
