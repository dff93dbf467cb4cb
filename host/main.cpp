// mkvhost: looks into Matroska files and plays them, through the splitter in a DirectShow graph of the
// platform's. From the arguments to the exit code; everything between is in the commands.
#include <memory>
#include <new>

#include "host/commands/command_line.h"
#include "host/system/console.h"
#include "host/system/crash_report.h"
#include "host/system/file_name_text.h"
#include "host/system/host_error.h"
#include "host/system/main_thread_apartment.h"

#include <shellapi.h>

namespace tarvex::host {

namespace {

struct LocalFreer {
  void operator()(void* block) const noexcept { LocalFree(block); }
};

// From the system, not from main: those are in a code page that cannot say every name.
std::vector<std::string> Arguments() {
  int count = 0;
  const std::unique_ptr<LPWSTR, LocalFreer> texts(CommandLineToArgvW(GetCommandLineW(), &count));
  std::vector<std::string> arguments;
  for (int i = 1; texts && i < count; ++i) arguments.push_back(NarrowFileName(texts.get()[i]));
  return arguments;
}

struct Runner {
  void operator()(const TextOptions& options) const { WriteOutput(options.text); }
  void operator()(const InfoOptions& options) const { RunInfo(options); }
  void operator()(const DumpOptions& options) const { RunDump(options); }
  void operator()(const PlayOptions& options) const { RunPlay(options); }
  void operator()(const SettingsOptions& options) const { RunSettings(options); }
};

ExitCode Run() {
  try {
    const CommandOptions options = ParseCommandLine(Arguments());
    const MainThreadApartment apartment;
    std::visit(Runner{}, options);
    return ExitCode::kSuccess;
  } catch (const HostError& error) {
    WriteError(error.what());
    return error.Code();
  } catch (const std::bad_alloc&) {
    WriteError("out of memory");
  } catch (const std::exception& error) {
    WriteError(error.what());
  }
  return ExitCode::kInternal;
}

}  // namespace

}  // namespace tarvex::host

int main() {
  tarvex::host::ReportCrashes();
  return static_cast<int>(tarvex::host::Run());
}
