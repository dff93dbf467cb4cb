#include "host/graph/seeking_pass_thru.h"

namespace tarvex::host {

void SeekingPassThru::Create() {
  ComPtr<IUnknown> inner;
  if (FAILED(CoCreateInstance(CLSID_SeekingPassThru, m_owner, CLSCTX_INPROC_SERVER, IID_IUnknown, inner.PutVoid()))) {
    return;
  }
  ComPtr<ISeekingPassThru> setup;
  if (FAILED(inner->QueryInterface(IID_ISeekingPassThru, setup.PutVoid()))) return;
  if (SUCCEEDED(setup->Init(m_place == Place::kEnd ? TRUE : FALSE, m_input))) m_inner = inner;
}

HRESULT SeekingPassThru::Query(REFIID iid, void** out) {
  if (iid != IID_IMediaSeeking && iid != IID_IMediaPosition) return E_NOINTERFACE;
  const CAutoLock hold(m_lock);
  if (!m_inner) Create();
  return m_inner ? m_inner->QueryInterface(iid, out) : E_NOINTERFACE;
}

}  // namespace tarvex::host
