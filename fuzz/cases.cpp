// See cases.h.
#include "fuzz/cases.h"

#include <cstdlib>

namespace tarvex::fuzz {

unsigned FromEnvironment(const char* name, unsigned otherwise) {
  const char* given = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): nobody sets it
  return given != nullptr ? static_cast<unsigned>(std::strtoul(given, nullptr, 10)) : otherwise;
}

unsigned Many(unsigned few, unsigned all) { return FromEnvironment("TARVEX_LONG", 0) != 0 ? all : few; }

}  // namespace tarvex::fuzz
