#include "host/commands/play_arguments.h"

#include <charconv>
#include <functional>

#include "host/report/time_text.h"
#include "host/system/host_error.h"
#include "host/system/player_key.h"

namespace tarvex::host {

namespace {

using TakeTime = std::function<void(std::int64_t)>;

CLI::Option* AddTime(CLI::App& command, const std::string& name, const TakeTime& take, const std::string& help) {
  const auto parse = [name, take](const std::string& text) {
    const auto time = ParseTime(text);
    if (!time) throw CLI::ValidationError(name, text + " is no time: H:MM:SS.mmm or seconds, as 90 or 90.5");
    take(*time);
  };
  return command.add_option_function<std::string>(name, parse, help)->type_name("TIME");
}

CLI::Option* AddTime(CLI::App& command, const std::string& name, std::optional<std::int64_t>& time,
                     const std::string& help) {
  return AddTime(
      command, name, [&time](std::int64_t value) { time = value; }, help);
}

void AddChapter(CLI::App& command, PlayOptions& options) {
  const auto parse = [&options](const std::string& text) {
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) {
      throw CLI::ValidationError("--chapter", text + " is no number of a chapter");
    }
    options.chapter = number;
  };
  command.add_option_function<std::string>("--chapter", parse, "play from chapter N as info numbers them, from 1")
      ->type_name("N")
      ->excludes("--start");
}

void AddPositions(CLI::App& command, PlayOptions& options) {
  AddTime(command, "--start", options.start, "play from this time of the file");
  AddTime(command, "--stop", options.stop, "play to this time of the file");
  AddChapter(command, options);
  AddTime(
      command, "--seek", [&options](std::int64_t time) { options.seeks.push_back(time); },
      "seek there while playing (see below)")
      ->trigger_on_parse();
}

void AddChoices(CLI::App& command, PlayOptions& options) {
  command.add_option("--audio", options.audio, "the sound to play (see below)")
      ->type_name("N|LANG")
      ->excludes("--separate-pins");
  command.add_option("--subtitle", options.subtitle, "the subtitles, or off for none")
      ->type_name("N|LANG|off")
      ->excludes("--separate-pins");
}

constexpr char kNotes[] =
    "TIME is H:MM:SS.mmm or seconds, as in 0:01:30.5, 90 or 90.5.\n"
    "N counts the streams of a kind, or the chapters, from 1, as info numbers\n"
    "them. LANG is a three-letter code or the English name of a language, and\n"
    "means the first stream in it.\n"
    "--seek may be given several times. The first seek is made when the first\n"
    "samples have arrived, each other one when those of the seek before it have;\n"
    "none waits longer than a second.\n"
    "The progress is one line, cut to the width of a terminal and printed whole\n"
    "once at the end.\n"
    "On a terminal, ";

}  // namespace

void AddPlayOptions(CLI::App& command, PlayOptions& options) {
  AddPositions(command, options);
  AddChoices(command, options);
  command.add_flag("--no-clock", options.withoutClock, "as fast as the data flows");
  AddTime(command, "--duration-limit", options.limit, "stop after this time on the wall");
  command.footer(std::string(kNotes) + kKeyHelp + ".");
}

void CheckPlayOptions(const PlayOptions& options) {
  if (options.limit && *options.limit == 0) throw HostError(ExitCode::kUsage, "--duration-limit: must not be 0");
  if (options.stop && *options.stop <= options.start.value_or(0)) {
    throw HostError(ExitCode::kUsage, "--stop: " + TimeText(*options.stop) + " is not after the start");
  }
}

}  // namespace tarvex::host
