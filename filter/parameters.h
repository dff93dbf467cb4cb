// The settings, and what else hosts ask and set by the identifier of a parameter; saved with a graph, and shown by
// property pages. A part of the filter; application threads.
#pragma once

#include "filter/output_pins.h"
#include "filter/source.h"
#include "filter/worker.h"
#include "framework/base_filter.h"
#include "framework/interface_part.h"
#include "framework/persist_stream.h"
#include "include/tarvex/module_config.h"
#include "pins/creator/out_pins_creator.h"

namespace tarvex {

class Parameters final : public InterfacePart<IModuleConfig, ISpecifyPropertyPages>, private CPersistStream {
 public:
  Parameters(CBaseFilter& filter, COutPinsCreator& creator, OutputPins& pins, Source& source, Worker& worker)
      : InterfacePart(filter), m_filter(filter), m_creator(creator), m_pins(pins), m_source(source), m_worker(worker) {}

  /// One pin for every track, else one for every kind of track. Filter lock held.
  bool HasSeparatePins() const noexcept { return m_separatePins; }

  // IModuleConfig. E_NOTIMPL for a parameter that cannot be set or read, and what each answers.
  HRESULT STDMETHODCALLTYPE GetClassID(CLSID* pClassID) override { return m_filter.GetClassID(pClassID); }
  HRESULT STDMETHODCALLTYPE IsDirty() override { return CPersistStream::IsDirty(); }
  HRESULT STDMETHODCALLTYPE Load(IStream* stream) override { return CPersistStream::Load(stream); }
  HRESULT STDMETHODCALLTYPE Save(IStream* stream, BOOL clear) override { return CPersistStream::Save(stream, clear); }
  HRESULT STDMETHODCALLTYPE GetSizeMax(ULARGE_INTEGER* size) override { return CPersistStream::GetSizeMax(size); }
  HRESULT STDMETHODCALLTYPE SetValue(const GUID* parameter, const VARIANT* value) override;
  HRESULT STDMETHODCALLTYPE GetValue(const GUID* parameter, VARIANT* value) override;
  HRESULT STDMETHODCALLTYPE Reserved1() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reserved2() override { return E_NOTIMPL; }

  // ISpecifyPropertyPages
  /// The settings page and the about page.
  HRESULT STDMETHODCALLTYPE GetPages(CAUUID* pPages) override;

 private:
  struct Parameter;

  // CPersistStream
  HRESULT WriteToStream(IStream* stream) override;
  HRESULT ReadFromStream(IStream* stream) override;

  static const Parameter* FindParameter(const GUID& id);
  HRESULT SetAnnexBOutput(const VARIANT& value);
  HRESULT SetSeparatePins(const VARIANT& value);
  HRESULT SetPosition(const VARIANT& value);
  // Filter lock held.
  HRESULT GetAnnexBOutput(VARIANT& value);
  HRESULT GetSeparatePins(VARIANT& value);
  HRESULT GetChapterList(VARIANT& value);
  HRESULT GetDocType(VARIANT& value);
  HRESULT ChangeSeparatePins(bool separate);
  void ApplyH264Form();

  CBaseFilter& m_filter;
  COutPinsCreator& m_creator;
  OutputPins& m_pins;
  Source& m_source;
  Worker& m_worker;
  bool m_annexBOutput = false;  // under the filter lock
  bool m_separatePins = false;  // under the filter lock
};

}  // namespace tarvex
