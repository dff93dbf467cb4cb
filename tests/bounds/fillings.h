// Files that are filled with one thing, for finding what costs more than its size. Pure functions.
#pragma once

#include <string>
#include <vector>

#include "tests/support/ebml_writer.h"

namespace tarvex::test {

struct Filling {
  std::string name;
  ByteString file;
  std::size_t largestCluster = 0;  ///< bytes of data
};

/// How many fillings there are, and the one with this index, about `size` bytes long.
std::size_t FillingCount();
Filling MakeFilling(std::size_t index, std::size_t size);
std::string FillingName(std::size_t index);

}  // namespace tarvex::test
