// The splitter's identity, state, and the source that comes and goes with the input pin's connection.
#include "filter/matroska_splitter.h"

#include "filter/filter_registration.h"
#include "filter/source_manners.h"
#include "framework/com_boundary.h"
#include "framework/log.h"
#include "include/tarvex/class_ids.h"

namespace tarvex {

CUnknown* CMatroskaSplitter::CreateInstance(IUnknown* outer, HRESULT* /*result*/) {
  return new CMatroskaSplitter(outer);
}

CMatroskaSplitter::CMatroskaSplitter(IUnknown* outer)
    : CBaseFilter("CMatroskaSplitter", outer, &m_filterLock, CLSID_MatroskaSplitter),
      m_gate(m_positions),
      m_worker(*this, m_source, m_outputPins, m_positions),
      m_source(m_creator, m_positions, m_worker),
      m_outputPins({*this, m_positions, m_gate, m_worker, m_source}),
      m_inputPin(new CStreamInputPin(this, &m_filterLock)),
      m_streams(*this, m_creator, m_outputPins, m_worker, m_positions),
      m_markers(*this, m_creator, m_source),
      m_parameters(*this, m_creator, m_outputPins, m_source, m_worker),
      m_log(*this) {}

CMatroskaSplitter::~CMatroskaSplitter() {
  // An owner that lets go without stopping leaves the worker to us, and the last reference may be given
  // back while pins are still connected. Nothing can be done about a failure here.
  static_cast<void>(ComBoundary([this] {
    m_worker.End();
    const CAutoLock lock(m_filterLock);
    CloseSource();
    return S_OK;
  }));
}

HRESULT CMatroskaSplitter::NonDelegatingQueryInterface(REFIID iid, void** out) {
  if (iid == IID_IAMStreamSelect) return GiveInterface(&m_streams, out);
  if (iid == IID_IAMExtendedSeeking) return GiveInterface(&m_markers, out);
  if (iid == IID_ISpecifyPropertyPages) return GiveInterface(static_cast<ISpecifyPropertyPages*>(&m_parameters), out);
  if (iid == IID_IModuleConfig || iid == IID_IPersistStream) {
    return GiveInterface(static_cast<IModuleConfig*>(&m_parameters), out);
  }
  if (iid == IID_IModuleLog) return GiveInterface(&m_log, out);
  return CBaseFilter::NonDelegatingQueryInterface(iid, out);
}

const FilterSetup* CMatroskaSplitter::GetSetupData() { return &kSplitterSetup; }

int CMatroskaSplitter::GetPinCount() { return 1 + static_cast<int>(m_outputPins.All().size()); }

CBasePin* CMatroskaSplitter::GetPin(int index) {
  if (index == 0) return m_inputPin.Get();
  if (index < 0 || index >= GetPinCount()) return nullptr;
  return m_outputPins.All()[static_cast<std::size_t>(index) - 1].Get();
}

HRESULT CMatroskaSplitter::Pause() {
  LogText("Pause");
  return ComBoundary([this] {
    // Held to the end, so that no stop comes between the pins' activation and the worker's start.
    const CAutoLock filterLock(m_filterLock);
    if (IsStopped()) {
      // One that was started for pins that could not be activated has delivered nothing, and is done.
      m_worker.End();
      // A run that was cut short leaves pins holding, perhaps for a video pin that is no longer connected.
      m_gate.SetHolding(false);
    }
    static_cast<void>(CBaseFilter::Pause());  // pins that failed to activate refuse frames, which ends the pass
    const CAutoLock positionLock(m_positions.PositionLock());
    return m_worker.Start();
  });
}

HRESULT CMatroskaSplitter::Stop() {
  LogText("Stop");
  return ComBoundary([this] {
    const CAutoLock filterLock(m_filterLock);  // no start may come in between
    const bool hadWorker = m_worker.Exists();  // which one of several steps ends
    if (m_inputPin->IsConnected() && m_worker.End() == S_OK) m_outputPins.EndQueues();
    static_cast<void>(CBaseFilter::Stop());  // stopped whatever the pins answer
    m_positions.ClearSeekingOwner();
    m_worker.End();
    return hadWorker ? S_OK : S_FALSE;
  });
}

HRESULT CMatroskaSplitter::OpenSource(IPin* peer) {
  ComPtr<IAsyncReader> upstream;
  const HRESULT result = ComPtr<IPin>(peer).Query(upstream);
  if (FAILED(result)) return result;
  // What is thrown is logged here; the caller learns only of the refusal.
  const HRESULT opened = ComBoundary([&] {
    CloseSource();
    m_source.Open(upstream.Get(), ReadsTakenBy(peer));
    m_outputPins.Create(m_creator, m_parameters.HasSeparatePins());
    return S_OK;
  });
  if (SUCCEEDED(opened)) return S_OK;
  CloseSource();
  return VFW_E_TYPE_NOT_ACCEPTED;
}

void CMatroskaSplitter::CloseSource() {
  m_worker.End();
  m_outputPins.RemoveAll();
  m_source.Close();
}

// Under the position lock, as seeks flush, so that the two do not mix and the pin list stays.
HRESULT CMatroskaSplitter::BeginFlushFromUpstream() {
  const CAutoLock lock(m_positions.PositionLock());
  m_outputPins.BeginFlush();
  return S_OK;
}

HRESULT CMatroskaSplitter::EndFlushFromUpstream() {
  const CAutoLock lock(m_positions.PositionLock());
  m_outputPins.EndFlush();
  return S_OK;
}

// A worker that delivers tells the pins, behind what it has on its way to them. It is not waited for, since upstream
// may say so in the middle of a read that the worker waits for.
HRESULT CMatroskaSplitter::EndOfStreamFromUpstream() {
  m_worker.EndPass();
  return S_OK;
}

}  // namespace tarvex
