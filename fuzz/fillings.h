// Files that are filled with one thing, for finding what costs more than its size. Pure functions.
#pragma once

#include <string>

#include "tests/support/ebml_writer.h"

namespace tarvex::fuzz {

/// How many there are: every content in every place. They are counted from 0.
std::size_t FillingCount();
/// A file with about `size` bytes of it.
test::ByteString MakeFilling(std::size_t index, std::size_t size);
std::string FillingName(std::size_t index);

}  // namespace tarvex::fuzz
