// Registration with the system's filter mapper, in the category of DirectShow filters.
#include <utility>
#include <vector>

#include "framework/com_boundary.h"
#include "framework/com_ptr.h"
#include "framework/filter_setup.h"

namespace tarvex {

namespace {

/// COM on this thread as long as the object lives. A thread that is in another kind of apartment already stays there.
class ComApartment {
 public:
  ComApartment() noexcept : m_result(CoInitialize(nullptr)) {}
  ~ComApartment() {
    if (SUCCEEDED(m_result)) CoUninitialize();
  }
  ComApartment(const ComApartment&) = delete;
  ComApartment& operator=(const ComApartment&) = delete;

 private:
  HRESULT m_result;
};

DWORD PinFlags(const PinSetup& pin) {
  DWORD flags = 0;
  if (pin.zero) flags |= REG_PINFLAG_B_ZERO;
  if (pin.rendered) flags |= REG_PINFLAG_B_RENDERER;
  if (pin.many) flags |= REG_PINFLAG_B_MANY;
  if (pin.output) flags |= REG_PINFLAG_B_OUTPUT;
  return flags;
}

/// The mapper's own records of a filter's pins; views into this object.
class PinRecords {
 public:
  explicit PinRecords(const FilterSetup& setup) {
    m_types.reserve(setup.pins.size());
    for (const PinSetup& pin : setup.pins) Add(pin);
  }

  REGFILTER2 Filter(DWORD merit) const {
    REGFILTER2 filter{};
    filter.dwVersion = 2;
    filter.dwMerit = merit;
    filter.cPins2 = static_cast<ULONG>(m_pins.size());
    filter.rgPins2 = m_pins.data();
    return filter;
  }

 private:
  void Add(const PinSetup& pin) {
    std::vector<REGPINTYPES> types;
    for (const PinTypeSetup& type : pin.types) types.push_back({type.majorType, type.subtype});
    m_types.push_back(std::move(types));
    REGFILTERPINS2 record{};
    record.dwFlags = PinFlags(pin);
    record.nMediaTypes = static_cast<UINT>(m_types.back().size());
    record.lpMediaType = m_types.back().data();
    m_pins.push_back(record);
  }

  std::vector<std::vector<REGPINTYPES>> m_types;
  std::vector<REGFILTERPINS2> m_pins;
};

HRESULT RegisterWith(IFilterMapper2& mapper, const FilterSetup& setup, bool doRegister) {
  // Registering again replaces the entry of an older version. That there is nothing to remove is no failure.
  const HRESULT removed = mapper.UnregisterFilter(nullptr, nullptr, *setup.clsid);
  if (!doRegister) return removed == HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND) ? S_OK : removed;
  const PinRecords pins(setup);
  const REGFILTER2 filter = pins.Filter(setup.merit);
  return mapper.RegisterFilter(*setup.clsid, setup.name, nullptr, nullptr, nullptr, &filter);
}

}  // namespace

HRESULT RegisterFilterSetup(const FilterSetup& setup, bool doRegister) noexcept {
  return ComBoundary([&] {
    const ComApartment apartment;
    ComPtr<IFilterMapper2> mapper;
    const HRESULT hr =
        CoCreateInstance(CLSID_FilterMapper2, nullptr, CLSCTX_INPROC_SERVER, IID_IFilterMapper2, mapper.PutVoid());
    return FAILED(hr) ? hr : RegisterWith(*mapper, setup, doRegister);
  });
}

}  // namespace tarvex
