// A filter that owns what pin creation makes, and records what pin creation asks of it. Owned by one
// test; everything happens on the test's thread.
#pragma once

#include <vector>

#include "framework/base_filter.h"
#include "framework/owned_pin.h"
#include "pins/creator/pin_owner.h"
#include "pins/output/matroska_output_pin.h"
#include "pins/output/pin_host.h"

namespace tarvex::test {

class FakeSplitter : public CBaseFilter, public PinOwner, public PinHost {
 public:
  FakeSplitter();

  // What a test sets and reads.
  std::size_t refuseAfter = 1000;  ///< pins from this one on are refused by an exception
  std::vector<std::uint32_t> enabled;
  std::vector<OwnedPin<CMatroskaOutputPin>> pins;

  // CBaseFilter
  int GetPinCount() override { return static_cast<int>(pins.size()); }
  CBasePin* GetPin(int index) override { return pins.at(static_cast<std::size_t>(index)).Get(); }

  // PinOwner
  CBaseFilter* Filter() override { return this; }
  CCritSec* FilterLock() override { return &m_lock; }
  PinHost* Host() override { return this; }
  bool AnnexBOutput() const override { return false; }
  void AppendOutputPin(ComPtr<CMatroskaOutputPin> pin) override;
  HRESULT EnableStream(std::uint32_t streamIndex) override;

  // PinHost: nothing plays here.
  PlayRange Range() const override { return {}; }
  PlayRange Positions() override { return {}; }
  REFERENCE_TIME Duration() const override { return 0; }
  HRESULT SetPlayRange(REFERENCE_TIME, REFERENCE_TIME, double) override { return S_OK; }
  void SetRate(double) override {}
  void SetStartPosition(REFERENCE_TIME) override {}
  bool ClaimSeekingOwner(const CMatroskaOutputPin*) override { return true; }
  void ClearSeekingOwner() override {}
  void SetTimeFormatOnAllPins(const GUID&) override {}
  REFERENCE_TIME DefaultFrameDuration(std::uint32_t) const override { return 0; }
  void SetHoldingOnAllPins(bool) override {}
  HRESULT ReleaseHeldFrames(REFERENCE_TIME) override { return S_OK; }

 private:
  CCritSec m_lock{"FakeSplitter", LockRank::kFilter};
};

}  // namespace tarvex::test
