// The input pin: everything of it is the filter's doing.
#include "filter/stream_input_pin.h"

#include "filter/matroska_splitter.h"
#include "framework/com_boundary.h"
#include "include/tarvex/class_ids.h"

namespace tarvex {

CStreamInputPin::CStreamInputPin(CMatroskaSplitter* filter, CCritSec* lock)
    : CBaseInputPin("CStreamInputPin", filter, lock, OLESTR("Input")), m_splitter(filter) {}

HRESULT CStreamInputPin::Inactive() { return m_splitter->EndWorker(); }

HRESULT CStreamInputPin::CheckMediaType(const CMediaType* /*type*/) { return S_OK; }

HRESULT CStreamInputPin::CompleteConnect(IPin* peer) { return m_splitter->OpenSource(peer); }

HRESULT CStreamInputPin::GetMediaType(int position, CMediaType* type) {
  if (position != 0) return VFW_S_NO_MORE_ITEMS;
  *type = CMediaType(MEDIATYPE_Stream);
  type->subtype = MEDIASUBTYPE_MatroskaStream;
  // Nothing is claimed about the samples, not even what a new type says of them.
  type->bFixedSizeSamples = FALSE;
  type->lSampleSize = 0;
  return S_OK;
}

HRESULT CStreamInputPin::Disconnect() {
  return ComBoundary([this]() -> HRESULT {
    const PinScope scope(*this);
    const HRESULT result = CBaseInputPin::Disconnect();
    if (FAILED(result)) return result;
    if (scope) m_splitter->CloseSource();
    return S_OK;
  });
}

HRESULT CStreamInputPin::QueryInternalConnections(IPin** /*apPin*/, ULONG* /*nPin*/) { return E_NOTIMPL; }

// The filter is held, but not its lock: downstream may keep the thread, and a stop must get past it.

HRESULT CStreamInputPin::EndOfStream() {
  const auto filter = HoldFilter();
  if (!filter) return VFW_E_NOT_CONNECTED;
  return ComBoundary([this] { return m_splitter->EndOfStreamFromUpstream(); });
}

HRESULT CStreamInputPin::BeginFlush() {
  const auto filter = HoldFilter();
  if (!filter) return VFW_E_NOT_CONNECTED;
  return ComBoundary([this] { return m_splitter->BeginFlushFromUpstream(); });
}

HRESULT CStreamInputPin::EndFlush() {
  const auto filter = HoldFilter();
  if (!filter) return VFW_E_NOT_CONNECTED;
  return ComBoundary([this] { return m_splitter->EndFlushFromUpstream(); });
}

}  // namespace tarvex
