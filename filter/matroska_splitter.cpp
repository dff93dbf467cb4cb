// The splitter's identity, pins and state.
#include "filter/matroska_splitter.h"

#include <memory>
#include <utility>
#include <vector>

#include "filter/filter_registration.h"
#include "filter/module_log.h"
#include "framework/co_task_mem.h"
#include "framework/com_boundary.h"
#include "framework/log.h"
#include "include/tarvex/class_ids.h"

namespace tarvex {

CUnknown* CMatroskaSplitter::CreateInstance(IUnknown* outer, HRESULT* /*result*/) {
  return new CMatroskaSplitter(outer);
}

CMatroskaSplitter::CMatroskaSplitter(IUnknown* outer)
    : CBaseFilter("CMatroskaSplitter", outer, &m_filterLock, CLSID_MatroskaSplitter),
      m_inputPin(new CStreamInputPin(this, &m_filterLock)) {}

CMatroskaSplitter::~CMatroskaSplitter() {
  // An owner that lets go without stopping leaves the worker to us, and the last reference may be given
  // back while pins are still connected. Nothing can be done about a failure here.
  static_cast<void>(ComBoundary([this] {
    EndWorker();
    const CAutoLock lock(m_filterLock);
    CloseSource();
    return S_OK;
  }));
}

HRESULT CMatroskaSplitter::NonDelegatingQueryInterface(REFIID iid, void** out) {
  if (iid == IID_ISpecifyPropertyPages) return GiveInterface(static_cast<ISpecifyPropertyPages*>(this), out);
  if (iid == IID_IAMStreamSelect) return GiveInterface(static_cast<IAMStreamSelect*>(this), out);
  if (iid == IID_IAMExtendedSeeking) return GiveInterface(static_cast<IAMExtendedSeeking*>(this), out);
  if (iid == IID_IModuleConfig) return GiveInterface(static_cast<IModuleConfig*>(this), out);
  if (iid == IID_IPersistStream) return GiveInterface(static_cast<IPersistStream*>(this), out);
  if (iid == IID_IModuleLog) return GiveInterface(static_cast<IModuleLog*>(this), out);
  return CBaseFilter::NonDelegatingQueryInterface(iid, out);
}

HRESULT CMatroskaSplitter::GetPages(CAUUID* pPages) {
  if (pPages == nullptr) return E_POINTER;
  return ComBoundary([&] {
    auto pages = CoTaskMem<GUID>::Allocate(2);
    pages[0] = CLSID_MatroskaSettingsPage;
    pages[1] = CLSID_MatroskaAboutPage;
    *pPages = {.cElems = 2, .pElems = pages.Detach()};
    return S_OK;
  });
}

HRESULT CMatroskaSplitter::SetSink(ModuleLogSink sink, void* context) {
  SetModuleLogSink(sink, context);
  return S_OK;
}

const FilterSetup* CMatroskaSplitter::GetSetupData() { return &kSplitterSetup; }

int CMatroskaSplitter::GetPinCount() { return 1 + static_cast<int>(m_outputPins.size()); }

CBasePin* CMatroskaSplitter::GetPin(int index) {
  if (index == 0) return m_inputPin.Get();
  if (index < 0 || index >= GetPinCount()) return nullptr;
  return m_outputPins[static_cast<std::size_t>(index) - 1].Get();
}

HRESULT CMatroskaSplitter::Pause() {
  LogText("Pause");
  return ComBoundary([this] {
    // Held to the end, so that no stop comes between the pins' activation and the worker's start.
    const CAutoLock filterLock(m_filterLock);
    if (IsStopped()) {
      // One that was started for pins that could not be activated has delivered nothing, and is done.
      EndWorker();
      // A run that was cut short leaves pins holding, perhaps for a video pin that is no longer connected.
      m_gate.SetHolding(false);
    }
    static_cast<void>(CBaseFilter::Pause());  // pins that failed to activate refuse frames, which ends the pass
    // A seek that met no worker moves the scanner without one.
    const CAutoLock positionLock(m_positions.PositionLock());
    return StartWorker();
  });
}

HRESULT CMatroskaSplitter::Stop() {
  LogText("Stop");
  return ComBoundary([this] {
    const CAutoLock filterLock(m_filterLock);  // no start may come in between
    const bool hadWorker = ThreadExists();     // which one of several steps ends
    if (m_inputPin->IsConnected()) EndQueues();
    static_cast<void>(CBaseFilter::Stop());  // stopped whatever the pins answer
    m_positions.ClearSeekingOwner();
    EndWorker();
    return hadWorker ? S_OK : S_FALSE;
  });
}

// All at once, since each may have to wait for downstream. Nobody feeds them any more.
void CMatroskaSplitter::EndQueues() {
  if (EndWorker() == S_FALSE) return;  // nothing was started
  // Without memory for the list each ends with its pin.
  static_cast<void>(ComBoundary([this] {
    std::vector<std::shared_ptr<COutputQueue>> queues;
    for (const auto& pin : m_outputPins) {
      if (auto queue = pin->Queue()) queues.push_back(std::move(queue));
    }
    COutputQueue::End(queues);
    return S_OK;
  }));
}

// Under the position lock, as seeks flush, so that the two do not mix and the pin list stays.
HRESULT CMatroskaSplitter::FlushFromUpstream(bool begin) {
  const CAutoLock lock(m_positions.PositionLock());
  return begin ? BeginFlush() : EndFlush();
}

// What the pins hold back is the worker's while it delivers; then the end is its to pass on.
HRESULT CMatroskaSplitter::EndOfStreamFromUpstream() {
  m_endAsked = true;
  if (m_isPassing) return S_OK;  // at the end of the pass, without a wait for whoever is ending it
  const CAutoLock lock(m_positions.PositionLock());
  const CAutoLock control(m_AccessLock);  // no pass begins meanwhile
  if (m_isPassing || !m_endAsked.exchange(false)) return S_OK;
  for (const auto& pin : m_outputPins) pin->DropHeld();
  return EndOfStream();
}

HRESULT CMatroskaSplitter::BeginFlush() {
  LogText("BeginFlush");
  for (const auto& pin : m_outputPins) {
    if (pin->IsConnected()) pin->DeliverBeginFlush();
  }
  return S_OK;
}

HRESULT CMatroskaSplitter::EndFlush() {
  LogText("EndFlush");
  for (const auto& pin : m_outputPins) {
    if (pin->IsConnected()) pin->DeliverEndFlush();
  }
  return S_OK;
}

HRESULT CMatroskaSplitter::EndOfStream() {
  LogText("EndOfStream");
  // When one pin fails to deliver what it held, no pin holds anything afterwards. Then the end reaches
  // those that it did not reach before.
  if (!EndEveryPin()) EndEveryPin();
  return S_OK;
}

bool CMatroskaSplitter::EndEveryPin() {
  bool all = true;
  for (const auto& pin : m_outputPins) {
    if (pin->IsConnected() && FAILED(pin->DeliverEndOfStream())) all = false;
  }
  return all;
}

CMatroskaOutputPin* CMatroskaSplitter::FindPinByTrack(std::uint32_t trackNumber) const {
  for (const auto& pin : m_outputPins) {
    if (pin->Track().Number() == trackNumber) return pin.Get();
  }
  return nullptr;
}

CMatroskaOutputPin* CMatroskaSplitter::FindPinByType(std::uint32_t trackType) const {
  for (const auto& pin : m_outputPins) {
    if (pin->Track().Type() == trackType) return pin.Get();
  }
  return nullptr;
}

bool CMatroskaSplitter::AnyOutputConnected() const {
  for (const auto& pin : m_outputPins) {
    if (pin->IsConnected()) return true;
  }
  return false;
}

}  // namespace tarvex
