// One chapter as the module hands it to a host through IModuleConfig. The host owns the array and
// frees each name with SysFreeString.
#pragma once

#if __has_include(<oaidl.h>)
#include <oaidl.h>
#else
#include "framework/platform/platform.h"
#endif

namespace tarvex {

struct ChapterEntry {
  BSTR name;       ///< display string; owned by whoever holds the entry
  LONGLONG start;  ///< 100 ns units
  LONGLONG end;    ///< 100 ns units; 0 when the file gives none
};

}  // namespace tarvex
