// The arguments of mkvhost. Used once by main.
#pragma once

#include <string>
#include <variant>
#include <vector>

#include "host/commands/dump_command.h"
#include "host/commands/info_command.h"
#include "host/commands/play_command.h"
#include "host/commands/settings_command.h"

namespace tarvex::host {

/// Something to print instead of a command: help or version.
struct TextOptions {
  std::string text;
};

using CommandOptions = std::variant<TextOptions, InfoOptions, DumpOptions, PlayOptions, SettingsOptions>;

/// `arguments` without the program's name, as NarrowFileName gives them. Throws HostError with kUsage.
CommandOptions ParseCommandLine(const std::vector<std::string>& arguments);

}  // namespace tarvex::host
