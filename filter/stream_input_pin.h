// The filter's only input pin: pulls from an upstream pin that offers IAsyncReader. Owned by the filter,
// to which it passes everything on; called on application threads under the filter's lock, and by
// upstream for flushes and end of stream.
#pragma once

#include "framework/base_input_pin.h"

namespace tarvex {

class CMatroskaSplitter;

class CStreamInputPin : public CBaseInputPin {
 public:
  /// `filter` is not counted; it owns the pin.
  CStreamInputPin(CMatroskaSplitter* filter, CCritSec* lock);

  HRESULT Active() override { return S_OK; }
  /// Ends the worker. S_FALSE when there was none.
  HRESULT Inactive() override;
  HRESULT Run(REFERENCE_TIME /*start*/) override { return S_OK; }

  /// Takes every type: only opening the stream tells what it is.
  HRESULT CheckMediaType(const CMediaType* type) override;
  HRESULT BreakConnect() override { return S_OK; }
  /// Opens the source; its failure refuses the connection.
  HRESULT CompleteConnect(IPin* peer) override;
  HRESULT GetMediaType(int position, CMediaType* type) override;

  /// Closes the source as well. S_OK also when there was no connection.
  HRESULT STDMETHODCALLTYPE Disconnect() override;
  HRESULT STDMETHODCALLTYPE QueryInternalConnections(IPin** apPin, ULONG* nPin) override;
  HRESULT STDMETHODCALLTYPE EndOfStream() override;
  HRESULT STDMETHODCALLTYPE BeginFlush() override;
  HRESULT STDMETHODCALLTYPE EndFlush() override;

 private:
  CMatroskaSplitter* const m_splitter;
};

}  // namespace tarvex
