// A corpus's manifest with our decisions in it, as JSON. Free function; any thread.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace tarvex::test {

/// The files of the corpus in `folder`, by name. Throws std::exception when the manifest cannot be read.
nlohmann::json ReadManifestFiles(const std::string& folder);

}  // namespace tarvex::test
