// The splitter filter: owns the input pin, the scanner, the pin creator, the output pins and the worker
// that delivers from the one to the others. Made by the class factory for a graph; driven by application
// threads, with its worker in between.
#pragma once

#include <atomic>
#include <cstdint>
#include <span>
#include <vector>

#include "filter/interface_ids.h"
#include "filter/stream_input_pin.h"
#include "framework/am_thread.h"
#include "framework/base_filter.h"
#include "framework/owned_pin.h"
#include "framework/persist_stream.h"
#include "pins/creator/out_pins_creator.h"
#include "pins/output/matroska_output_pin.h"
#include "pins/output/pass_control.h"
#include "pins/output/play_positions.h"
#include "pins/output/segment_gate.h"
#include "pins/output/shared_by_pins.h"
#include "scanner/ebml_scanner.h"
#include "scanner/matroska_callback.h"
#include "scanner/source/read_ahead_reader.h"

namespace tarvex {

/// Locks, in the order in which they are taken:
///   filter lock     framework state, connections, settings, the open source;
///   position lock   changes of the play range as a whole, flushes;
///   access lock     (CAMThread) starting, pausing and ending the worker.
/// The pin list changes with the first two held and no worker alive. Whoever holds either of them, or the
/// access lock while there is a worker, may read it; so may the worker, which takes none of the three:
/// controllers wait for it with any of them held.
///
/// Waits here: a controller waits for the worker's reply or end. The worker waits for a read and for room
/// in a pin's ring, and WorkerWaitsCancelled ends both.
class CMatroskaSplitter final : public CBaseFilter,
                                public CMatroskaCallback,
                                public CAMThread,
                                public ISpecifyPropertyPages,
                                public IAMStreamSelect,
                                public IAMExtendedSeeking,
                                public IModuleConfig,
                                public CPersistStream,
                                public IModuleLog,
                                public PassControl {
 public:
  /// For the class factory. May throw std::bad_alloc.
  static CUnknown* CreateInstance(IUnknown* outer, HRESULT* result);
  ~CMatroskaSplitter() override;

  // IUnknown of all the interfaces.
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    return Owner()->QueryInterface(iid, out);
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return Owner()->AddRef(); }
  ULONG STDMETHODCALLTYPE Release() override { return Owner()->Release(); }
  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** out) override;

  // CBaseFilter
  HRESULT STDMETHODCALLTYPE GetClassID(CLSID* pClassID) override { return CBaseFilter::GetClassID(pClassID); }
  int GetPinCount() override;
  CBasePin* GetPin(int index) override;
  const FilterSetup* GetSetupData() override;
  /// Also prepares the seek index and starts the worker, whose result it gives.
  HRESULT STDMETHODCALLTYPE Pause() override;
  /// Also ends the worker. S_OK when there was one, S_FALSE when there was none.
  HRESULT STDMETHODCALLTYPE Stop() override;

  // ISpecifyPropertyPages
  /// The settings page and the about page.
  HRESULT STDMETHODCALLTYPE GetPages(CAUUID* pPages) override;

  // IAMStreamSelect
  HRESULT STDMETHODCALLTYPE Count(DWORD* pcStreams) override;
  HRESULT STDMETHODCALLTYPE Info(LONG lIndex, AM_MEDIA_TYPE** ppmt, DWORD* pdwFlags, LCID* plcid, DWORD* pdwGroup,
                                 WCHAR** ppszName, IUnknown** ppObject, IUnknown** ppUnk) override;
  HRESULT STDMETHODCALLTYPE Enable(LONG lIndex, DWORD dwFlags) override;

  // IAMExtendedSeeking
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override;
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) override;
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* parameters,
                                   VARIANT* result, EXCEPINFO* exception, UINT* argument) override;
  HRESULT STDMETHODCALLTYPE get_ExSeekCapabilities(LONG* pExCapabilities) override;
  HRESULT STDMETHODCALLTYPE get_MarkerCount(LONG* pMarkerCount) override;
  HRESULT STDMETHODCALLTYPE get_CurrentMarker(LONG* pCurrentMarker) override;
  HRESULT STDMETHODCALLTYPE GetMarkerTime(LONG MarkerNum, double* pMarkerTime) override;
  HRESULT STDMETHODCALLTYPE GetMarkerName(LONG MarkerNum, BSTR* pbstrMarkerName) override;
  HRESULT STDMETHODCALLTYPE put_PlaybackSpeed(double Speed) override;
  HRESULT STDMETHODCALLTYPE get_PlaybackSpeed(double* pSpeed) override;

  // IModuleConfig
  HRESULT STDMETHODCALLTYPE IsDirty() override { return CPersistStream::IsDirty(); }
  HRESULT STDMETHODCALLTYPE Load(IStream* stream) override { return CPersistStream::Load(stream); }
  HRESULT STDMETHODCALLTYPE Save(IStream* stream, BOOL clear) override { return CPersistStream::Save(stream, clear); }
  HRESULT STDMETHODCALLTYPE GetSizeMax(ULARGE_INTEGER* size) override { return CPersistStream::GetSizeMax(size); }
  HRESULT STDMETHODCALLTYPE SetValue(const GUID* parameter, const VARIANT* value) override;
  HRESULT STDMETHODCALLTYPE GetValue(const GUID* parameter, VARIANT* value) override;
  HRESULT STDMETHODCALLTYPE Reserved1() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reserved2() override { return E_NOTIMPL; }

  // IModuleLog
  HRESULT STDMETHODCALLTYPE SetSink(ModuleLogSink sink, void* context) override;

  // For the input pin. Opening and closing run with the filter lock held, on a stopped filter.
  /// E_NOINTERFACE for a peer that cannot be read; VFW_E_TYPE_NOT_ACCEPTED, with the reason in the log, for
  /// a source that cannot be played. After a failure nothing is open.
  HRESULT OpenSource(IPin* peer);
  void CloseSource();
  /// Ends the worker and waits for it. S_FALSE when there is none.
  HRESULT EndWorker();
  // What upstream says of its own accord goes to every connected output pin. S_OK. Any thread.
  HRESULT FlushFromUpstream(bool begin);
  HRESULT EndOfStreamFromUpstream();

 private:
  /// The worker's commands and, as the run state, the last one sent.
  enum Command : DWORD { kPause = 0, kStart = 1, kExit = 2 };
  class WorkerWaitsCancelled;
  using PinList = std::vector<OwnedPin<CMatroskaOutputPin>>;

  explicit CMatroskaSplitter(IUnknown* outer);

  // CMatroskaCallback
  void OnTrack(std::uint32_t heapIndex) override;
  bool ProcessEvents() override;
  bool OnData(const FrameInfo& frame) override;
  bool OnLace(std::span<const FrameInfo> frames) override;

  // CAMThread
  DWORD ThreadProc() override;

  // CPersistStream
  HRESULT WriteToStream(IStream* stream) override;
  HRESULT ReadFromStream(IStream* stream) override;

  // PassControl
  bool Interrupt() override;
  void Resume() override;
  void BeforeWait() override;

  // Opening; filter lock held.
  void ReadSource(IAsyncReader* upstream, SourceReads reads);
  void CreateOutputPins(bool separate);
  void TearDownOutputPins();
  std::map<std::uint32_t, REFERENCE_TIME> FrameDurations() const;

  // Output pins; see the rules for the list.
  CMatroskaOutputPin* FindPinByTrack(std::uint32_t trackNumber) const;
  CMatroskaOutputPin* FindPinByType(std::uint32_t trackType) const;
  bool AnyOutputConnected() const;

  // Worker.
  HRESULT StartWorker();
  HRESULT PauseWorker();
  HRESULT SendStart();
  bool IsWorkerThread() const;
  void EndQueues();
  bool GiveFrame(CMatroskaOutputPin& pin, const FrameInfo& frame);
  void RunPass();
  void EndPass();
  void ReportFailedPass(HRESULT result);
  // To every connected output pin, in pin order. S_OK.
  HRESULT BeginFlush();
  HRESULT EndFlush();
  HRESULT EndOfStream();
  bool EndEveryPin();

  // Stream selection.
  HRESULT SwitchStream(std::uint32_t streamIndex, ComPtr<CMatroskaOutputPin>& connectedPin, TrackPinInfo& track);
  HRESULT SwitchConnectedPin(CMatroskaOutputPin& pin, const TrackPinInfo& track);
  HRESULT SetTrack(CMatroskaOutputPin& pin, const TrackPinInfo& track);
  void EndDelivery();
  std::vector<ComPtr<IPin>> ConnectedOutputsBut(const CMatroskaOutputPin& one);

  // Settings; filter lock held.
  struct Parameter;
  static const Parameter* FindParameter(const GUID& id);
  HRESULT SetAnnexBOutput(const VARIANT& value);
  HRESULT GetAnnexBOutput(VARIANT& value);
  HRESULT SetSeparatePins(const VARIANT& value);
  HRESULT GetSeparatePins(VARIANT& value);
  HRESULT GetChapterList(VARIANT& value);
  HRESULT GetDocType(VARIANT& value);
  HRESULT SetPosition(const VARIANT& value);
  HRESULT ChangeSeparatePins(bool separate);
  void ApplyH264Form();

  CCritSec m_filterLock{"CMatroskaSplitter filter", LockRank::kFilter};
  // Around a whole switch of a connected pin, during which the graph is called and neither of the two
  // others may be held: the graph has a lock of its own, under which it calls us.
  CCritSec m_switchLock{"CMatroskaSplitter stream switch", LockRank::kStreamSwitch};

  PlayPositions m_positions;
  SegmentGate m_gate{m_positions};
  CEbmlScanner m_scanner;         // application threads while no worker exists or delivers, else the worker
  ComPtr<IAsyncReader> m_reader;  // what the scanner reads from; null while nothing is open
  COutPinsCreator m_creator;
  OwnedPin<CStreamInputPin> m_inputPin;
  PinList m_outputPins;  // no entry is empty

  std::atomic<DWORD> m_runState{kPause};  // written under the access lock
  std::atomic<DWORD> m_workerId{0};
  std::atomic<bool> m_isPassing{false};      // set under the access lock, and cleared by the worker
  std::atomic<bool> m_endAsked{false};       // upstream said that the stream has ended
  std::atomic<bool> m_commandComing{false};  // a failing read or a refused frame may be our own doing
  HRESULT m_passFailure = S_OK;              // what ended the pass, if the graph is to know it; the worker's
  bool m_annexBOutput = false;               // under the filter lock
  bool m_separatePins = false;               // under the filter lock
};

}  // namespace tarvex
