// What a run of mkvhost answers to its caller. Stable: scripts and tests rely on the numbers.
#pragma once

namespace tarvex::host {

enum class ExitCode : int {
  kSuccess = 0,
  kInternal = 1,        ///< what should not happen
  kUsage = 2,           ///< wrong arguments
  kNoSuchFile = 3,      ///< the file is missing or cannot be read
  kNotMatroska = 4,     ///< the file does not begin like one
  kRefused = 5,         ///< the splitter refused it
  kPlayback = 6,        ///< it opened, but the graph could not deliver it to the end
  kModuleNotFound = 7,  ///< no splitter: not registered, or not the DLL that was named
};

}  // namespace tarvex::host
