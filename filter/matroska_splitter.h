// The splitter filter: what a graph sees of the module. A shell around its parts: has their locks and their life,
// starts and stops them, and gives out the interfaces that they implement. Made by the class factory for a graph;
// driven by application threads.
#pragma once

#include "filter/chapter_markers.h"
#include "filter/module_log.h"
#include "filter/output_pins.h"
#include "filter/parameters.h"
#include "filter/source.h"
#include "filter/stream_input_pin.h"
#include "filter/stream_selection.h"
#include "filter/worker.h"
#include "framework/base_filter.h"
#include "framework/owned_pin.h"
#include "pins/creator/out_pins_creator.h"
#include "pins/output/play_positions.h"
#include "pins/output/segment_gate.h"

namespace tarvex {

class CMatroskaSplitter final : public CBaseFilter {
 public:
  /// For the class factory; `outer` is the aggregating object, or null. May throw std::bad_alloc.
  static CUnknown* CreateInstance(IUnknown* outer, HRESULT* result);
  ~CMatroskaSplitter() override;

  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) override;

  // CBaseFilter
  int GetPinCount() override;
  CBasePin* GetPin(int index) override;
  const FilterSetup* GetSetupData() override;
  /// Also starts the worker, whose result it gives.
  HRESULT STDMETHODCALLTYPE Pause() override;
  /// Also ends the worker. S_OK when there was one, S_FALSE when there was none.
  HRESULT STDMETHODCALLTYPE Stop() override;

  // For the input pin.
  /// E_NOINTERFACE for a peer that cannot be read; VFW_E_TYPE_NOT_ACCEPTED, with the reason in the log, for
  /// a source that cannot be played. After a failure nothing is open. Filter stopped, filter lock held.
  HRESULT OpenSource(IPin* peer);
  /// With all that came from it, the output pins too. Filter stopped, filter lock held.
  void CloseSource();
  /// Ends the worker and waits for it. S_FALSE when there is none.
  HRESULT EndWorker() { return m_worker.End(); }
  // What upstream says of its own accord goes to every connected output pin. S_OK. Any thread.
  HRESULT BeginFlushFromUpstream();
  HRESULT EndFlushFromUpstream();
  /// Ends the pass in progress.
  HRESULT EndOfStreamFromUpstream();

 private:
  explicit CMatroskaSplitter(IUnknown* outer);

  // State changes and connections, settings, and the open source.
  CCritSec m_filterLock{"CMatroskaSplitter filter", LockRank::kFilter};

  // In this order, as those further down are built with those above.
  PlayPositions m_positions;
  SegmentGate m_gate;
  COutPinsCreator m_creator;
  Worker m_worker;
  Source m_source;
  OutputPins m_outputPins;
  OwnedPin<CStreamInputPin> m_inputPin;
  StreamSelection m_streams;
  ChapterMarkers m_markers;
  Parameters m_parameters;
  ModuleLog m_log;
};

}  // namespace tarvex
