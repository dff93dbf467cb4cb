// The one function that every diagnostic text goes to. Without a sink nothing is formatted and
// nothing is kept. Callable from any thread; a sink may be set and taken away at any time.
#pragma once

#include "framework/compiler.h"

namespace tarvex {

/// Receives one finished text, without a newline. Called on the thread that logs, one call at a time.
using LogSink = void (*)(void* context, const char* text);

/// Directs all texts to `sink`, or nowhere when it is null. When this returns, the former sink is no longer called. Not
/// to be called from inside a sink.
void SetLogSink(LogSink sink, void* context) noexcept;

/// Logs a fixed text.
void LogText(const char* text) noexcept;

/// Logs a printf-style text, cut to 199 characters.
TARVEX_PRINTF_LIKE(1, 2) void LogFormat(const char* format, ...) noexcept;

}  // namespace tarvex
