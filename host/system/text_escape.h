// Makes text from files and command lines safe to show. Free functions over values; any thread.
#pragma once

#include <string>
#include <string_view>

namespace tarvex::host {

/// UTF-8 in, valid UTF-8 out, on one line: control characters, line separators, characters that change
/// the direction of writing and bytes that are no UTF-8 appear as \n, \x1B or \u{202E}. A backslash
/// stays as it is, so that paths remain readable.
std::string EscapeForTerminal(std::string_view text);

/// The same for text whose length is the file's choice: at most 500 characters, the last three of which are
/// dots when there are more.
std::string EscapeAndShorten(std::string_view text);

/// Text that is safe to show already, cut to `most` characters, the last three of which are dots then.
std::string Shorten(const std::string& text, std::size_t most);

/// Number of characters, for column widths. Counts what is no UTF-8 byte by byte.
std::size_t CharacterCount(std::string_view text);

}  // namespace tarvex::host
