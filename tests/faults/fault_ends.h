// The ends of a graph that faults run through: a sink that counts and can refuse, and the graph itself,
// which renders pins into such sinks. Neither meets faults of its own: what fails is the filter's. Owned
// through ComPtr by one FaultRig; called on any thread.
#pragma once

#include <atomic>
#include <vector>

#include "framework/base_filter.h"
#include "framework/base_input_pin.h"
#include "framework/event.h"
#include "framework/owned_pin.h"
#include "tests/support/linux/filter_graph.h"

namespace tarvex::test {

/// What all sinks of a graph share: the count of calls that one of them refuses, and of what happened.
struct Downstream {
  enum class Call { kNone, kReceive, kReceiveConnection, kNotifyAllocator, kEndOfStream, kNewSegment, kFlush };

  // To be set before anybody calls.
  Call refused = Call::kNone;
  int index = 0;         ///< of the refused call among its kind, from 0
  bool lasting = false;  ///< all later ones are refused as well
  HRESULT refusal = E_FAIL;

  std::atomic<int> calls{0};  ///< of the refused kind
  std::atomic<bool> hasRefused{false};
  std::atomic<int> samples{0};
  std::atomic<int> passesBegun{0};
  std::atomic<int> passesEnded{0};
  std::atomic<int> aborts{0};              ///< EC_ERRORABORT
  std::atomic<HRESULT> abortResult{S_OK};  ///< of the last
  Event happened{Event::Mode::kAuto};      ///< an end, an abort or a refusal

  HRESULT Answer(Call call);
};

class FaultSinkPin;

class FaultSink : public CBaseFilter {
 public:
  explicit FaultSink(Downstream& downstream);
  ~FaultSink() override;

  int GetPinCount() override { return 1; }
  CBasePin* GetPin(int index) override;
  FaultSinkPin* Pin() const noexcept { return m_pin.Get(); }
  /// The end of the stream has come, and no flush or start since.
  bool IsEnded() const noexcept { return m_ended; }

 private:
  friend class FaultSinkPin;
  CCritSec m_filterLock{"FaultSink", LockRank::kLastFilter};
  Downstream& m_downstream;
  std::atomic<bool> m_ended{false};
  OwnedPin<FaultSinkPin> m_pin;
};

class FaultSinkPin : public CBaseInputPin {
 public:
  FaultSinkPin(FaultSink* filter, CCritSec* lock);

  HRESULT CheckMediaType(const CMediaType* /*type*/) override { return S_OK; }
  HRESULT Active() override;

  HRESULT STDMETHODCALLTYPE ReceiveConnection(IPin* pConnector, const AM_MEDIA_TYPE* pmt) override;
  HRESULT STDMETHODCALLTYPE NotifyAllocator(IMemAllocator* pAllocator, BOOL bReadOnly) override;
  HRESULT STDMETHODCALLTYPE Receive(IMediaSample* pSample) override;
  HRESULT STDMETHODCALLTYPE EndOfStream() override;
  HRESULT STDMETHODCALLTYPE BeginFlush() override;
  HRESULT STDMETHODCALLTYPE EndFlush() override;
  HRESULT STDMETHODCALLTYPE NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate) override;

 private:
  FaultSink& m_sink;
};

class FaultGraph : public FilterGraph {
 public:
  explicit FaultGraph(Downstream& downstream) : m_downstream(downstream) {}

  /// Every sink that is connected has got the end of its stream.
  bool AllEnded();
  /// Sinks stay here when they are disconnected.
  const std::vector<ComPtr<FaultSink>>& Sinks() const noexcept { return m_sinks; }

  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) override;
  HRESULT STDMETHODCALLTYPE Notify(LONG EventCode, LONG_PTR EventParam1, LONG_PTR EventParam2) override;
  HRESULT STDMETHODCALLTYPE RemoveFilter(IBaseFilter* pFilter) override;
  HRESULT STDMETHODCALLTYPE Render(IPin* pin) override;
  HRESULT STDMETHODCALLTYPE WaitForCompletion(LONG msTimeout, LONG* pEvCode) override;

 private:
  Downstream& m_downstream;
  std::vector<ComPtr<FaultSink>> m_sinks;  // the test's thread
};

}  // namespace tarvex::test
