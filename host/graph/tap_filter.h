// Stands between the splitter and a decoder, shows every sample to an observer and passes it on
// unchanged: same media type, same allocator, same samples, on the same thread. Made by the play
// command, owned by it and the graph.
#pragma once

#include <memory>
#include <optional>

#include "framework/base_filter.h"
#include "framework/owned_pin.h"
#include "host/graph/sample_observer.h"
#include "host/graph/seeking_pass_thru.h"

namespace tarvex::host {

/// What it is called in a graph.
inline constexpr OLECHAR kTapName[] = OLESTR("Counter");

class TapInputPin;
class TapOutputPin;

class TapFilter : public CBaseFilter {
 public:
  explicit TapFilter(std::shared_ptr<SampleObserver> observer);
  ~TapFilter() override;

  int GetPinCount() override { return 2; }
  CBasePin* GetPin(int index) override;

  TapInputPin* InputPin() const noexcept { return m_input.Get(); }
  TapOutputPin* OutputPin() const noexcept { return m_output.Get(); }

 protected:
  CCritSec m_filterLock{"host TapFilter", LockRank::kDownstreamFilter};
  // A derived class may put others in their places while it is constructed.
  OwnedPin<TapInputPin> m_input;
  OwnedPin<TapOutputPin> m_output;
};

}  // namespace tarvex::host
