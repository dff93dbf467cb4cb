// Stream selection: which streams there are, which of them pins carry, and the switch to another. A part of the filter;
// application threads.
#pragma once

#include <cstdint>
#include <vector>

#include "filter/output_pins.h"
#include "filter/worker.h"
#include "framework/base_filter.h"
#include "framework/interface_part.h"
#include "pins/creator/out_pins_creator.h"
#include "pins/output/play_positions.h"

namespace tarvex {

class StreamSelection final : public InterfacePart<IAMStreamSelect> {
 public:
  StreamSelection(CBaseFilter& filter, COutPinsCreator& creator, OutputPins& pins, Worker& worker,
                  PlayPositions& positions)
      : InterfacePart(filter),
        m_filter(filter),
        m_creator(creator),
        m_pins(pins),
        m_worker(worker),
        m_positions(positions) {}

  HRESULT STDMETHODCALLTYPE Count(DWORD* pcStreams) override;
  HRESULT STDMETHODCALLTYPE Info(LONG lIndex, AM_MEDIA_TYPE** ppmt, DWORD* pdwFlags, LCID* plcid, DWORD* pdwGroup,
                                 WCHAR** ppszName, IUnknown** ppObject, IUnknown** ppUnk) override;
  /// Stops the graph, renders the pin anew and brings the graph's state back where the stream's pin is connected. What
  /// the graph answers then, VFW_E_NOT_IN_GRAPH, VFW_E_NOT_STOPPED, E_INVALIDARG, E_NOTIMPL, E_FAIL.
  HRESULT STDMETHODCALLTYPE Enable(LONG lIndex, DWORD dwFlags) override;

 private:
  HRESULT SwitchStream(std::uint32_t streamIndex, ComPtr<CMatroskaOutputPin>& connectedPin, TrackPinInfo& track);
  HRESULT SwitchConnectedPin(CMatroskaOutputPin& pin, const TrackPinInfo& track);
  HRESULT SetTrack(CMatroskaOutputPin& pin, const TrackPinInfo& track);
  void EndDelivery();
  std::vector<ComPtr<IPin>> ConnectedPinsBut(const CMatroskaOutputPin& one);

  CBaseFilter& m_filter;
  COutPinsCreator& m_creator;
  OutputPins& m_pins;
  Worker& m_worker;
  PlayPositions& m_positions;

  // Around a whole switch of a connected pin, during which the graph is called and neither the filter lock nor the
  // position lock may be held: the graph has a lock of its own, under which it calls us.
  CCritSec m_switchLock{"stream switch", LockRank::kStreamSwitch};
};

}  // namespace tarvex
