// The file that a command is given: its full path, and what can be said about it before any graph.
// Free functions; main thread.
#pragma once

#include <string>

#include "framework/text_conversion.h"

namespace tarvex::host {

bool RunsUnderWine();

/// Absolute path of `name` (as NarrowFileName gives it). Under Wine a Unix path is understood too,
/// wherever the current folder is.
WideString FullPath(const std::string& name);

/// Throws HostError with kNoSuchFile when `path` is no file that can be opened for reading; `name` is
/// what the message calls it.
void RequireReadable(const WideString& path, const std::string& name);

/// The file begins with the four bytes that every EBML document begins with.
bool BeginsLikeMatroska(const WideString& path);

}  // namespace tarvex::host
