// Files that are filled with one thing, for finding what costs more than its size. Pure functions.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/support/ebml_writer.h"

namespace tarvex::fuzz {

struct Filling {
  std::string name;
  std::function<test::ByteString(std::size_t size)> make;  ///< about so many bytes
};

/// A file for every content in every place.
std::vector<Filling> MakeFillings();

}  // namespace tarvex::fuzz
