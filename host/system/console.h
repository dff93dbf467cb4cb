// The program's standard output and error. Narrow text is UTF-8; a console gets it as wide text, a file
// or pipe gets the bytes. Main thread.
#pragma once

#include <string_view>

namespace tarvex::host {

/// Throws HostError when the output cannot be written.
void WriteOutput(std::string_view text);

/// One line beginning "mkvhost: ", escaped. Never fails.
void WriteError(std::string_view text) noexcept;

/// Somebody looks at standard output while it is written.
bool OutputIsTerminal() noexcept;

/// Characters in one line of the terminal, or 80.
int TerminalWidth() noexcept;

}  // namespace tarvex::host
