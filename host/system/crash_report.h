// What happens when a filter of somebody else's crashes inside this process: one line and an exit code, as
// for every other failure, instead of a debugger. Installed once by main.
#pragma once

namespace tarvex::host {

/// From now on an exception that nobody handles ends the process with ExitCode::kInternal.
void ReportCrashes() noexcept;

}  // namespace tarvex::host
