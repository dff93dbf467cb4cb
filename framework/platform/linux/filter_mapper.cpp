// There is no filter mapper here.
#include "framework/filter_setup.h"

namespace tarvex {

HRESULT RegisterFilterSetup(const FilterSetup& /*setup*/, bool /*doRegister*/) noexcept { return E_NOTIMPL; }

}  // namespace tarvex
