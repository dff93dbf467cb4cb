// The fake filter of the creation tests.
#include "tests/pins_creator/fake_splitter.h"

#include <new>

namespace tarvex::test {

FakeSplitter::FakeSplitter() : CBaseFilter("FakeSplitter", nullptr, &m_lock, CLSID_NULL) {}

void FakeSplitter::AppendOutputPin(ComPtr<CMatroskaOutputPin> pin) {
  if (pins.size() >= refuseAfter) throw std::bad_alloc();
  pins.emplace_back(pin);
}

HRESULT FakeSplitter::EnableStream(std::uint32_t streamIndex) {
  enabled.push_back(streamIndex);
  return S_OK;
}

}  // namespace tarvex::test
