// The files that are damaged: those of the repository, or of the folder that TARVEX_CORPUS names. How many
// cases are made of each is few by default; TARVEX_LONG=1 asks for all.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tarvex::test {

struct CorpusPath {
  std::string name;  ///< below the folder
  std::string path;
};

/// In order of their names.
const std::vector<CorpusPath>& CorpusPaths();

/// Letters and digits of a name, for the name of a test.
std::string TestNameOf(const std::string& name);

/// TARVEX_LONG is set.
bool IsLongRun();

/// TARVEX_SEED, or 1: cases are the same from run to run unless somebody wants others.
std::uint32_t FirstSeed();

}  // namespace tarvex::test
