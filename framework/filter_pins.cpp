#include "framework/filter_pins.h"

#include <utility>

namespace tarvex {

namespace {

// A pin that does not say counts for neither direction.
bool HasDirection(IPin* pin, PIN_DIRECTION wanted) {
  PIN_DIRECTION direction = PINDIR_INPUT;
  return SUCCEEDED(pin->QueryDirection(&direction)) && direction == wanted;
}

}  // namespace

std::vector<ComPtr<IPin>> PinsOf(IBaseFilter* filter) {
  std::vector<ComPtr<IPin>> pins;
  ComPtr<IEnumPins> list;
  if (FAILED(filter->EnumPins(list.Put()))) return pins;
  for (;;) {
    ComPtr<IPin> pin;
    if (list->Next(1, pin.Put(), nullptr) != S_OK) return pins;
    pins.push_back(std::move(pin));
  }
}

std::vector<ComPtr<IPin>> PinsOf(IBaseFilter* filter, PIN_DIRECTION direction) {
  std::vector<ComPtr<IPin>> pins = PinsOf(filter);
  std::erase_if(pins, [direction](const auto& pin) { return !HasDirection(pin.Get(), direction); });
  return pins;
}

bool IsConnected(IPin* pin) {
  ComPtr<IPin> peer;
  return SUCCEEDED(pin->ConnectedTo(peer.Put())) && peer;
}

}  // namespace tarvex
