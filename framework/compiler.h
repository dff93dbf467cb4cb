// Attributes and hints that each compiler spells in its own way. Without them the same code runs. Any thread.
#pragma once

#if !defined(__GNUC__) && (defined(_M_X64) || defined(_M_IX86))
#include <xmmintrin.h>
#endif

// A function's argument FORMAT, counted from 1, is a printf text for the arguments from FIRST on.
#if defined(__GNUC__)
#define TARVEX_PRINTF_LIKE(FORMAT, FIRST) [[gnu::format(printf, FORMAT, FIRST)]]
#else
#define TARVEX_PRINTF_LIKE(FORMAT, FIRST)
#endif

namespace tarvex {

/// Has the processor fetch memory that will soon be written. Any address is allowed.
inline void FetchAhead(const void* address) noexcept {
#if defined(__GNUC__)
  __builtin_prefetch(address, 1);
#elif defined(_M_X64) || defined(_M_IX86)
  _mm_prefetch(static_cast<const char*>(address), _MM_HINT_T0);
#else
  static_cast<void>(address);
#endif
}

}  // namespace tarvex
