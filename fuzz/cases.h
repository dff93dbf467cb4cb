// What the environment asks for. Free functions; any thread.
#pragma once

namespace tarvex::test {}

namespace tarvex::fuzz {

using namespace test;  // NOLINT(google-build-using-namespace): a tool is made of what the tests have

/// The number that the variable gives.
unsigned FromEnvironment(const char* name, unsigned otherwise);

/// So many cases or rounds: the few of each run, or all for TARVEX_LONG=1.
unsigned Many(unsigned few, unsigned all);

}  // namespace tarvex::fuzz
