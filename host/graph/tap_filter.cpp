#include "host/graph/tap_filter.h"

#include "host/graph/tap_input_pin.h"
#include "host/graph/tap_output_pin.h"

namespace tarvex::host {

namespace {

// {5D0E4F6E-2A53-4B0C-9F0B-0B7C9C8E6A52}
constexpr GUID kTapClass = {0x5D0E4F6E, 0x2A53, 0x4B0C, {0x9F, 0x0B, 0x0B, 0x7C, 0x9C, 0x8E, 0x6A, 0x52}};

}  // namespace

TapFilter::TapFilter(std::shared_ptr<SampleObserver> observer)
    : CBaseFilter("host TapFilter", nullptr, &m_filterLock, kTapClass),
      m_input(new TapInputPin(this, &m_filterLock, std::move(observer))),
      m_output(new TapOutputPin(this, &m_filterLock)) {}

TapFilter::~TapFilter() = default;

CBasePin* TapFilter::GetPin(int index) {
  if (index == 0) return m_input.Get();
  return index == 1 ? static_cast<CBasePin*>(m_output.Get()) : nullptr;
}

}  // namespace tarvex::host
