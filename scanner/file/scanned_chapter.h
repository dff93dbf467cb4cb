// One chapter as the scanner keeps it. A value: the name is copied along.
#pragma once

#include <cstdint>

#include "framework/bstr.h"

namespace tarvex {

struct ScannedChapter {
  BStr name;                ///< display string, empty when there is none
  std::uint64_t start = 0;  ///< 100 ns units
  std::uint64_t end = 0;    ///< 100 ns units; 0 when absent
};

}  // namespace tarvex
