// The entry that libFuzzer calls; each fuzzer is this file with its own TARVEX_FUZZ_TARGET.
#include <cstddef>

#include "fuzz/targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  tarvex::fuzz::TARVEX_FUZZ_TARGET({data, size});
  return 0;
}
