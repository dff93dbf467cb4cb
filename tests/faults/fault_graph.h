// The graph that faults run through: it renders each pin into a new sink, whose answers can be faults, and counts what
// it is told. Neither it nor its sinks meet faults of their own: what fails is the filter's. Owned through ComPtr by
// one FaultRig; called on any thread.
#pragma once

#include <algorithm>
#include <atomic>
#include <numeric>
#include <vector>

#include "fuzz/heap.h"
#include "tests/support/linux/filter_graph.h"
#include "tests/support/sink_filter.h"

namespace tarvex::test {

using fuzz::FaultKind;
using fuzz::MeetsFaults;
using fuzz::MeetsNoFaults;

class FaultGraph : public FilterGraph {
 public:
  /// `refusal` is what a sink answers whose turn it is to fail.
  explicit FaultGraph(HRESULT refusal) : m_refusal(refusal) {}

  std::atomic<bool> hasRefused{false};
  std::atomic<int> aborts{0};  ///< EC_ERRORABORT

  /// Sinks stay here when they are disconnected.
  const std::vector<ComPtr<SinkFilter>>& Sinks() const noexcept { return m_sinks; }
  bool AllEnded() const {
    return std::ranges::all_of(m_sinks, [](const auto& sink) { return !sink->Pin()->IsConnected() || sink->IsOver(); });
  }
  int Samples() const {
    return std::accumulate(m_sinks.begin(), m_sinks.end(), 0, [](int sum, const auto& sink) {
      return sum + static_cast<int>(sink->CountOf(SinkEvent::Kind::kSample));
    });
  }

  // The way to the splitter's seeking is made of this program's own lists.
  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) override {
    const MeetsNoFaults own;
    return FilterGraph::NonDelegatingQueryInterface(iid, out);
  }
  HRESULT STDMETHODCALLTYPE Notify(LONG EventCode, LONG_PTR /*EventParam1*/, LONG_PTR EventParam2) override {
    EXPECT_EQ(EventParam2, 0);
    aborts += EventCode == EC_ERRORABORT ? 1 : 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE RemoveFilter(IBaseFilter* pFilter) override {
    const MeetsNoFaults own;
    return FilterGraph::RemoveFilter(pFilter);
  }
  HRESULT STDMETHODCALLTYPE Render(IPin* pin) override {
    const MeetsNoFaults own;
    const auto sink = SinkFilter::Create(SinkKind::kForgetful);
    sink->BeforeEachCall([this](SinkCall call) { return Answer(call); });
    m_sinks.push_back(sink);
    const HRESULT result = AddFilter(sink.Get(), OLESTR("Sink"));
    if (FAILED(result)) return result;
    const MeetsFaults theirs;
    return pin->Connect(sink->Pin(), nullptr);
  }

 private:
  HRESULT Answer(SinkCall call) {
    // In the order of the calls.
    static constexpr FaultKind kKinds[] = {
        FaultKind::kReceiveConnection, FaultKind::kNotifyAllocator, FaultKind::kReceive, FaultKind::kNewSegment,
        FaultKind::kEndOfStream,       FaultKind::kFlush,           FaultKind::kFlush};
    if (!fuzz::Fails(kKinds[static_cast<int>(call)])) return S_OK;
    hasRefused = true;
    return m_refusal;
  }

  const HRESULT m_refusal;
  std::vector<ComPtr<SinkFilter>> m_sinks;  // the test's thread
};

}  // namespace tarvex::test
