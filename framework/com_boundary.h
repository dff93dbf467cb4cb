// The border where exceptions become result codes: the body of every COM method that can throw runs
// inside ComBoundary. Any thread.
#pragma once

#include <utility>

#include "framework/platform/platform.h"

namespace tarvex {

/// The code for the exception being handled: E_OUTOFMEMORY for lack of memory, E_FAIL for a message
/// text (which is logged) and E_UNEXPECTED for everything else (logged too). Call it in a catch block.
HRESULT ResultOfCurrentException() noexcept;

/// Runs `body` and gives its result, or the code of what it threw.
template <class F>
HRESULT ComBoundary(F&& body) noexcept {
  try {
    return std::forward<F>(body)();
  } catch (...) {
    return ResultOfCurrentException();
  }
}

}  // namespace tarvex
