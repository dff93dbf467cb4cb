// The ends of a graph that faults run through: a sink that counts and can refuse, and the graph itself,
// which renders pins into such sinks. Neither meets faults of its own: what fails is the filter's. Owned
// through ComPtr by one FaultRig; called on any thread.
#pragma once

#include <algorithm>
#include <atomic>
#include <vector>

#include "framework/base_filter.h"
#include "framework/base_input_pin.h"
#include "framework/event.h"
#include "framework/owned_pin.h"
#include "fuzz/heap.h"
#include "tests/support/linux/filter_graph.h"

namespace tarvex::test {

using fuzz::FaultKind;
using fuzz::MeetsFaults;
using fuzz::MeetsNoFaults;

/// What all sinks of a graph share.
struct Downstream {
  HRESULT refusal = E_FAIL;  ///< to be set before anybody calls
  std::atomic<bool> hasRefused{false};
  std::atomic<int> samples{0};
  std::atomic<int> passesBegun{0};
  std::atomic<int> passesEnded{0};
  std::atomic<int> aborts{0};          ///< EC_ERRORABORT
  Event happened{Event::Mode::kAuto};  ///< an end, an abort or a refusal

  HRESULT Answer(FaultKind call) {
    if (!fuzz::Fails(call)) return S_OK;
    hasRefused = true;
    happened.Set();
    return refusal;
  }
};

class FaultSinkPin : public CBaseInputPin {
 public:
  FaultSinkPin(Downstream& downstream, CBaseFilter* filter, CCritSec* lock)
      : CBaseInputPin("FaultSinkPin", filter, lock, OLESTR("In")), m_downstream(downstream) {}

  /// The end of the stream has come, and no flush or start since.
  bool IsEnded() const noexcept { return m_ended; }

  HRESULT CheckMediaType(const CMediaType* /*type*/) override { return S_OK; }
  HRESULT Active() override {
    m_ended = false;
    return CBaseInputPin::Active();
  }
  HRESULT STDMETHODCALLTYPE ReceiveConnection(IPin* pConnector, const AM_MEDIA_TYPE* pmt) override {
    const HRESULT answer = m_downstream.Answer(FaultKind::kReceiveConnection);
    return answer == S_OK ? CBaseInputPin::ReceiveConnection(pConnector, pmt) : answer;
  }
  HRESULT STDMETHODCALLTYPE NotifyAllocator(IMemAllocator* pAllocator, BOOL bReadOnly) override {
    const HRESULT answer = m_downstream.Answer(FaultKind::kNotifyAllocator);
    return answer == S_OK ? CBaseInputPin::NotifyAllocator(pAllocator, bReadOnly) : answer;
  }
  HRESULT STDMETHODCALLTYPE Receive(IMediaSample* pSample) override {
    HRESULT result = CBaseInputPin::Receive(pSample);
    if (result == S_OK) result = m_downstream.Answer(FaultKind::kReceive);
    if (result == S_OK) ++m_downstream.samples;
    return result;
  }
  HRESULT STDMETHODCALLTYPE EndOfStream() override {
    m_ended = true;
    m_downstream.happened.Set();
    return m_downstream.Answer(FaultKind::kEndOfStream);
  }
  HRESULT STDMETHODCALLTYPE BeginFlush() override {
    CBaseInputPin::BeginFlush();
    return m_downstream.Answer(FaultKind::kFlush);
  }
  HRESULT STDMETHODCALLTYPE EndFlush() override {
    m_ended = false;
    CBaseInputPin::EndFlush();
    return m_downstream.Answer(FaultKind::kFlush);
  }
  HRESULT STDMETHODCALLTYPE NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate) override {
    CBaseInputPin::NewSegment(tStart, tStop, dRate);
    return m_downstream.Answer(FaultKind::kNewSegment);
  }

 private:
  Downstream& m_downstream;
  std::atomic<bool> m_ended{false};
};

class FaultSink : public CBaseFilter {
 public:
  explicit FaultSink(Downstream& downstream)
      : CBaseFilter("FaultSink", nullptr, &m_filterLock, IID_IBaseFilter),  // no class of its own
        m_pin(new FaultSinkPin(downstream, this, &m_filterLock)) {}

  int GetPinCount() override { return 1; }
  CBasePin* GetPin(int index) override { return index == 0 ? m_pin.Get() : nullptr; }
  FaultSinkPin* Pin() const noexcept { return m_pin.Get(); }

 private:
  CCritSec m_filterLock{"FaultSink", LockRank::kLastFilter};
  OwnedPin<FaultSinkPin> m_pin;
};

class FaultGraph : public FilterGraph {
 public:
  explicit FaultGraph(Downstream& downstream) : m_downstream(downstream) {}

  /// Sinks stay here when they are disconnected.
  const std::vector<ComPtr<FaultSink>>& Sinks() const noexcept { return m_sinks; }
  bool AllEnded() const {
    return std::ranges::all_of(m_sinks,
                               [](const auto& sink) { return !sink->Pin()->IsConnected() || sink->Pin()->IsEnded(); });
  }

  // The way to the splitter's seeking is made of this program's own lists.
  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) override {
    const MeetsNoFaults own;
    return FilterGraph::NonDelegatingQueryInterface(iid, out);
  }
  HRESULT STDMETHODCALLTYPE Notify(LONG EventCode, LONG_PTR /*EventParam1*/, LONG_PTR /*EventParam2*/) override {
    if (EventCode != EC_ERRORABORT) return S_OK;
    ++m_downstream.aborts;
    m_downstream.happened.Set();
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE RemoveFilter(IBaseFilter* pFilter) override {
    const MeetsNoFaults own;
    return FilterGraph::RemoveFilter(pFilter);
  }
  HRESULT STDMETHODCALLTYPE Render(IPin* pin) override {
    const MeetsNoFaults own;
    m_sinks.push_back(MakeCom<FaultSink>(m_downstream));
    const HRESULT result = AddFilter(m_sinks.back().Get(), OLESTR("Sink"));
    if (FAILED(result)) return result;
    const MeetsFaults theirs;
    return pin->Connect(m_sinks.back()->Pin(), nullptr);
  }
  HRESULT STDMETHODCALLTYPE WaitForCompletion(LONG msTimeout, LONG* /*pEvCode*/) override {
    while (!AllEnded()) {
      if (!m_downstream.happened.Wait(static_cast<DWORD>(msTimeout))) return E_ABORT;
    }
    return S_OK;
  }

 private:
  Downstream& m_downstream;
  std::vector<ComPtr<FaultSink>> m_sinks;  // the test's thread
};

}  // namespace tarvex::test
