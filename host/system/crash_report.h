// When a filter from elsewhere crashes inside this process, this gives one line and an exit code, as for every other
// failure, instead of a debugger. Installed once by main.
#pragma once

namespace tarvex::host {

/// From now on an exception that nobody handles ends the process with ExitCode::kInternal.
void ReportCrashes() noexcept;

}  // namespace tarvex::host
