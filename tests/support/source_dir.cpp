#include "tests/support/source_dir.h"

namespace tarvex::test {

std::string SourceDir() { return TARVEX_SOURCE_DIR; }

}  // namespace tarvex::test
