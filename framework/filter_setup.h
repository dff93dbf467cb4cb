// What the filter mapper is told about a filter: constant data of the module, used at registration.
#pragma once

#include <span>

#include "framework/platform/platform.h"

namespace tarvex {

struct PinTypeSetup {
  const GUID* majorType = nullptr;
  const GUID* subtype = nullptr;  ///< &GUID_NULL for any
};

struct PinSetup {
  const OLECHAR* name = nullptr;
  bool rendered = false;
  bool output = false;
  bool zero = false;                        ///< may have no instance
  bool many = false;                        ///< may have several
  const CLSID* connectsToFilter = nullptr;  ///< &CLSID_NULL or null for any
  std::span<const PinTypeSetup> types;
};

struct FilterSetup {
  const CLSID* clsid = nullptr;
  const OLECHAR* name = nullptr;
  DWORD merit = 0;
  std::span<const PinSetup> pins;
};

/// Tells the filter mapper about the filter, or makes it forget it. E_NOTIMPL where there is none.
HRESULT RegisterFilterSetup(const FilterSetup& setup, bool doRegister) noexcept;

}  // namespace tarvex
