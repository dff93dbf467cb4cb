#include "host/graph/tap_output_pin.h"

#include "host/graph/tap_filter.h"
#include "host/graph/tap_input_pin.h"

namespace tarvex::host {

TapOutputPin::TapOutputPin(TapFilter* filter, CCritSec* lock)
    : CBaseOutputPin("host TapOutputPin", filter, lock, OLESTR("Out")),
      m_tap(filter),
      m_seeking(Owner(), filter->InputPin(), SeekingPassThru::Place::kMiddle) {}

HRESULT STDMETHODCALLTYPE TapOutputPin::NonDelegatingQueryInterface(REFIID iid, void** out) {
  if (SUCCEEDED(m_seeking.Query(iid, out))) return S_OK;
  return CBaseOutputPin::NonDelegatingQueryInterface(iid, out);
}

HRESULT TapOutputPin::CheckMediaType(const CMediaType* type) {
  const TapInputPin* input = m_tap->InputPin();
  return input->IsConnected() && *type == input->CurrentMediaType() ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
}

HRESULT TapOutputPin::GetMediaType(int position, CMediaType* type) {
  const TapInputPin* input = m_tap->InputPin();
  if (position != 0 || !input->IsConnected()) return VFW_S_NO_MORE_ITEMS;
  *type = input->CurrentMediaType();
  return S_OK;
}

HRESULT TapOutputPin::DecideAllocator(IMemInputPin* peer, IMemAllocator** allocator) {
  *allocator = nullptr;
  const TapInputPin* input = m_tap->InputPin();
  if (input->Allocator() == nullptr) return VFW_E_NO_ALLOCATOR;
  const HRESULT result = peer->NotifyAllocator(input->Allocator(), input->IsReadOnly() ? TRUE : FALSE);
  if (SUCCEEDED(result)) ComPtr<IMemAllocator>(input->Allocator()).CopyTo(allocator);
  return result;
}

HRESULT TapOutputPin::DecideBufferSize(IMemAllocator* /*allocator*/, ALLOCATOR_PROPERTIES* /*request*/) {
  return E_UNEXPECTED;
}

}  // namespace tarvex::host
