// The arguments of the play command. Used once, when the command line is parsed.
#pragma once

#include <CLI/CLI.hpp>

#include "host/commands/play_options.h"

namespace tarvex::host {

/// Has `command` fill in everything but the session, which is common to all commands. Both live until the
/// command line is parsed.
void AddPlayOptions(CLI::App& command, PlayOptions& options);

/// What the parser cannot know. Throws HostError with kUsage.
void CheckPlayOptions(const PlayOptions& options);

}  // namespace tarvex::host
