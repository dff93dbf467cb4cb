#include "host/commands/command_line.h"

#include <CLI/CLI.hpp>

#include <sstream>

#include "host/commands/play_arguments.h"
#include "host/system/host_error.h"

namespace tarvex::host {

namespace {

// The options of all commands, as the parser fills them in.
struct Parsed {
  SessionOptions session;
  bool json = false;
  std::string bytesFolder;
  PlayOptions play;
};

void AddSessionOptions(CLI::App& command, SessionOptions& session) {
  command.add_option("FILE", session.file, "the Matroska file")->required()->type_name("");
  command.add_option("--module", session.module, "load the splitter from this DLL instead of the registered one")
      ->type_name("PATH");
  command.add_option("--log", session.logFile, "write what the module logs to this file")->type_name("PATH");
  command.add_flag("--separate-pins", session.separatePins, "one pin for each stream, not one for each kind");
  command.add_flag("--annexb", session.annexB, "H.264 with start codes instead of lengths");
}

CLI::App* AddInfo(CLI::App& app, Parsed& parsed) {
  CLI::App* command = app.add_subcommand("info", "Print the streams, pins, media types and chapters of a file");
  AddSessionOptions(*command, parsed.session);
  command->add_flag("--json", parsed.json, "as one JSON object");
  return command;
}

CLI::App* AddDump(CLI::App& app, Parsed& parsed) {
  CLI::App* command = app.add_subcommand("dump", "Print time, flags, size and checksum of every sample");
  AddSessionOptions(*command, parsed.session);
  command->add_flag("--json", parsed.json, "as JSON, one object on each line");
  command->add_option("--bytes", parsed.bytesFolder, "also write the bytes, into one file for each pin")
      ->type_name("FOLDER");
  return command;
}

CLI::App* AddPlay(CLI::App& app, Parsed& parsed) {
  CLI::App* command = app.add_subcommand("play", "Play a file; streams that nothing can render are counted");
  AddSessionOptions(*command, parsed.session);
  AddPlayOptions(*command, parsed.play);
  return command;
}

void AddSettings(CLI::App& app, Parsed& parsed) {
  CLI::App* command = app.add_subcommand("settings", "Show the settings and chapters of the splitter in a window");
  AddSessionOptions(*command, parsed.session);
}

// The parser itself would only say that a command is missing.
void RequireCommand(const CLI::App& app, const std::vector<std::string>& arguments) {
  if (arguments.empty())
    throw HostError(ExitCode::kUsage, "no command: info, dump, play or settings (mkvhost --help says more)");
  const std::string& first = arguments.front();
  const auto isFirst = [&first](const CLI::App* command) { return command->get_name() == first; };
  if (first.starts_with('-') || !app.get_subcommands(isFirst).empty()) return;
  throw HostError(ExitCode::kUsage, first + " is no command: info, dump, play or settings (mkvhost --help says more)");
}

void Parse(CLI::App& app, const std::vector<std::string>& arguments) {
  RequireCommand(app, arguments);
  std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());  // as the parser wants them
  app.parse(reversed);
}

}  // namespace

CommandOptions ParseCommandLine(const std::vector<std::string>& arguments) {
  Parsed parsed;
  CLI::App app("Looks into Matroska files and plays them through the Tarvex Matroska Splitter", "mkvhost");
  app.allow_windows_style_options(false);  // a name that begins with a slash is a file
  app.require_subcommand(1);
  app.set_version_flag("--version", "mkvhost " TARVEX_VERSION);
  const CLI::App* info = AddInfo(app, parsed);
  const CLI::App* dump = AddDump(app, parsed);
  const CLI::App* play = AddPlay(app, parsed);
  AddSettings(app, parsed);
  try {
    Parse(app, arguments);
  } catch (const CLI::Success& success) {
    std::ostringstream text;
    app.exit(success, text, text);
    return TextOptions{text.str()};
  } catch (const CLI::Error& error) {
    throw HostError(ExitCode::kUsage, std::string(error.what()) + " (mkvhost --help says more)");
  }
  if (*info) return InfoOptions{parsed.session, parsed.json};
  if (*dump) return DumpOptions{parsed.session, parsed.json, parsed.bytesFolder};
  if (!*play) return SettingsOptions{parsed.session};
  parsed.play.session = parsed.session;
  CheckPlayOptions(parsed.play);
  return parsed.play;
}

}  // namespace tarvex::host
