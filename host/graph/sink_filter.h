// The end of a stream that no renderer takes: a filter with one input pin that accepts everything, shows it to an
// observer and releases it at once. Made by the commands, owned by them and the graph. It offers seeking only on
// request: a graph that finds IMediaSeeking asks for the stop position when it runs. From then on the splitter ends at
// the duration that the file names, even if more data follow.
#pragma once

#include <memory>

#include "framework/base_filter.h"
#include "framework/base_input_pin.h"
#include "framework/owned_pin.h"
#include "host/graph/sample_observer.h"
#include "host/graph/seeking_pass_thru.h"

namespace tarvex::host {

class SinkPin;

enum class SinkSeeking { kNone, kOffered };

class SinkFilter : public CBaseFilter, public IAMFilterMiscFlags {
 public:
  explicit SinkFilter(std::shared_ptr<SampleObserver> observer, SinkSeeking seeking = SinkSeeking::kNone);
  ~SinkFilter() override;

  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) override;
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    return CBaseFilter::QueryInterface(iid, out);
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return CBaseFilter::AddRef(); }
  ULONG STDMETHODCALLTYPE Release() override { return CBaseFilter::Release(); }

  /// Marks this filter as one whose end of stream the graph waits for.
  ULONG STDMETHODCALLTYPE GetMiscFlags() override { return AM_FILTER_MISC_FLAGS_IS_RENDERER; }

  HRESULT STDMETHODCALLTYPE Run(REFERENCE_TIME tStart) override;
  HRESULT STDMETHODCALLTYPE Pause() override;
  HRESULT STDMETHODCALLTYPE Stop() override;

  int GetPinCount() override { return 1; }
  CBasePin* GetPin(int index) override;

  ComPtr<IPin> Input() const;

 private:
  friend class SinkPin;

  /// On the streaming thread.
  void EndReached();
  void ForgetEnd();
  void NotifyEnd();

  CCritSec m_filterLock{"host SinkFilter", LockRank::kLastFilter};

  // A renderer reports its end only while it runs; one that comes earlier is reported by Run.
  CCritSec m_endLock{"host SinkFilter end", LockRank::kVisited};
  bool m_ended = false;     // under m_endLock
  bool m_running = false;   // under m_endLock
  bool m_notified = false;  // under m_endLock

  const SinkSeeking m_offered;
  OwnedPin<SinkPin> m_pin;
  SeekingPassThru m_seeking;
};

}  // namespace tarvex::host
