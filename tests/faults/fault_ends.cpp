// See fault_ends.h.
#include "tests/faults/fault_ends.h"

#include <algorithm>

#include "tests/faults/fault_points.h"
#include "tests/support/test_graph.h"

namespace tarvex::test {
namespace {

// {0F2F4E6A-3C2B-4C55-8E63-0B1C4A5D7E21}
constexpr GUID kFaultSinkClass = {0x0F2F4E6A, 0x3C2B, 0x4C55, {0x8E, 0x63, 0x0B, 0x1C, 0x4A, 0x5D, 0x7E, 0x21}};
constexpr LONG kErrorAbort = 3;  // EC_ERRORABORT

}  // namespace

HRESULT Downstream::Answer(Call call) {
  if (call != refused) return S_OK;
  const int number = calls++;
  if (lasting ? number < index : number != index) return S_OK;
  hasRefused = true;
  happened.Set();
  return refusal;
}

FaultSink::FaultSink(Downstream& downstream)
    : CBaseFilter("FaultSink", nullptr, &m_filterLock, kFaultSinkClass),
      m_downstream(downstream),
      m_pin(new FaultSinkPin(this, &m_filterLock)) {}

FaultSink::~FaultSink() = default;

CBasePin* FaultSink::GetPin(int index) { return index == 0 ? m_pin.Get() : nullptr; }

FaultSinkPin::FaultSinkPin(FaultSink* filter, CCritSec* lock)
    : CBaseInputPin("FaultSinkPin", filter, lock, OLESTR("In")), m_sink(*filter) {}

HRESULT FaultSinkPin::Active() {
  m_sink.m_ended = false;
  return CBaseInputPin::Active();
}

HRESULT STDMETHODCALLTYPE FaultSinkPin::ReceiveConnection(IPin* pConnector, const AM_MEDIA_TYPE* pmt) {
  const HRESULT answer = m_sink.m_downstream.Answer(Downstream::Call::kReceiveConnection);
  return answer == S_OK ? CBaseInputPin::ReceiveConnection(pConnector, pmt) : answer;
}

HRESULT STDMETHODCALLTYPE FaultSinkPin::NotifyAllocator(IMemAllocator* pAllocator, BOOL bReadOnly) {
  const HRESULT answer = m_sink.m_downstream.Answer(Downstream::Call::kNotifyAllocator);
  return answer == S_OK ? CBaseInputPin::NotifyAllocator(pAllocator, bReadOnly) : answer;
}

HRESULT STDMETHODCALLTYPE FaultSinkPin::Receive(IMediaSample* pSample) {
  const HRESULT result = CBaseInputPin::Receive(pSample);
  if (result != S_OK) return result;
  const HRESULT answer = m_sink.m_downstream.Answer(Downstream::Call::kReceive);
  if (answer == S_OK) ++m_sink.m_downstream.samples;
  return answer;
}

HRESULT STDMETHODCALLTYPE FaultSinkPin::EndOfStream() {
  m_sink.m_ended = true;
  m_sink.m_downstream.happened.Set();
  return m_sink.m_downstream.Answer(Downstream::Call::kEndOfStream);
}

HRESULT STDMETHODCALLTYPE FaultSinkPin::BeginFlush() {
  CBaseInputPin::BeginFlush();
  return m_sink.m_downstream.Answer(Downstream::Call::kFlush);
}

HRESULT STDMETHODCALLTYPE FaultSinkPin::EndFlush() {
  m_sink.m_ended = false;
  CBaseInputPin::EndFlush();
  return m_sink.m_downstream.Answer(Downstream::Call::kFlush);
}

HRESULT STDMETHODCALLTYPE FaultSinkPin::NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate) {
  CBaseInputPin::NewSegment(tStart, tStop, dRate);
  return m_sink.m_downstream.Answer(Downstream::Call::kNewSegment);
}

bool FaultGraph::AllEnded() {
  return std::all_of(m_sinks.begin(), m_sinks.end(),
                     [](const ComPtr<FaultSink>& sink) { return !sink->Pin()->IsConnected() || sink->IsEnded(); });
}

// The way to the splitter's seeking is made of this program's own lists.
HRESULT STDMETHODCALLTYPE FaultGraph::NonDelegatingQueryInterface(REFIID iid, void** out) {
  const MeetsNoFaults own;
  return FilterGraph::NonDelegatingQueryInterface(iid, out);
}

HRESULT STDMETHODCALLTYPE FaultGraph::Notify(LONG EventCode, LONG_PTR EventParam1, LONG_PTR /*EventParam2*/) {
  if (EventCode != kErrorAbort) return S_OK;
  m_downstream.abortResult = static_cast<HRESULT>(EventParam1);
  ++m_downstream.aborts;
  m_downstream.happened.Set();
  return S_OK;
}

HRESULT STDMETHODCALLTYPE FaultGraph::RemoveFilter(IBaseFilter* pFilter) {
  const MeetsNoFaults own;
  return FilterGraph::RemoveFilter(pFilter);
}

HRESULT STDMETHODCALLTYPE FaultGraph::Render(IPin* pin) {
  const MeetsNoFaults own;
  m_sinks.push_back(MakeCom<FaultSink>(m_downstream));
  const HRESULT result = AddFilter(m_sinks.back().Get(), OLESTR("Sink"));
  if (FAILED(result)) return result;
  const MeetsFaults theirs;
  return pin->Connect(m_sinks.back()->Pin(), nullptr);
}

HRESULT STDMETHODCALLTYPE FaultGraph::WaitForCompletion(LONG msTimeout, LONG* /*pEvCode*/) {
  while (!AllEnded()) {
    if (!m_downstream.happened.Wait(static_cast<DWORD>(msTimeout))) return E_ABORT;
  }
  return S_OK;
}

}  // namespace tarvex::test
