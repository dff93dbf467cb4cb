// What the tools begin with: the files of a corpus, and what the environment asks for. Free functions; any thread.
#pragma once

#include <string>
#include <vector>

namespace tarvex::test {}

namespace tarvex::fuzz {

using namespace test;  // NOLINT(google-build-using-namespace): a tool is made of what the tests have

struct CorpusFile {
  std::string name;  ///< below the folder
  std::string path;  ///< as the program's own system has it
  /// Letters and digits of the name, for that of a test.
  std::string Letters() const;
};

/// Those of the repository, or of the folder that TARVEX_CORPUS names, in order of their names.
const std::vector<CorpusFile>& CorpusFiles();

/// The number that the variable gives.
unsigned FromEnvironment(const char* name, unsigned otherwise);

/// So many cases or rounds: the few of each run, or all for TARVEX_LONG=1.
unsigned Many(unsigned few, unsigned all);

}  // namespace tarvex::fuzz
