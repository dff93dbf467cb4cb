// What the graph builder is told about the filter: constant data, used by registration and by
// IAMovieSetup.
#pragma once

#include "framework/filter_setup.h"

namespace tarvex {

inline constexpr OLECHAR kFilterName[] = OLESTR("Tarvex Matroska Splitter");

/// The platform's MERIT_NORMAL. Below MERIT_UNLIKELY (0x00400000) a graph builder never tries a filter.
inline constexpr DWORD kFilterMerit = 0x00600000;

extern const FilterSetup kSplitterSetup;

}  // namespace tarvex
