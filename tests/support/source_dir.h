// Where the checkout is, for tests that read files of it.
#pragma once

#include <string>

namespace tarvex::test {

/// The checkout's folder without a slash at the end, in a form that the program's own system understands.
std::string SourceDir();

}  // namespace tarvex::test
