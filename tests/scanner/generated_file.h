// Matroska files made at random: every way in which muxers write Clusters, with times that rise. Pure functions of
// the generator's state; any thread.
#pragma once

#include <random>

#include "tests/support/ebml_writer.h"

namespace tarvex::test {

struct GeneratedShape {
  std::size_t frameBytes = 60;  ///< at most, about
  std::size_t length = 1;       ///< so many times the usual number of Clusters
};

/// Without Cues. No two frames are the same.
ByteString GenerateFile(std::mt19937& random, const GeneratedShape& shape = {});

}  // namespace tarvex::test
