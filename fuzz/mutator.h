// Damages a file's bytes in repeatable ways. Made once for a file; a value, used by one thread at a time.
#pragma once

#include <cstdint>
#include <random>
#include <set>
#include <vector>

#include "scanner/elements/element_header.h"

namespace tarvex::fuzz {

/// Of all elements that hold others, from libmatroska's table of the format.
const std::set<std::uint32_t>& MasterIds();

class Mutator {
 public:
  using Bytes = std::vector<std::uint8_t>;

  explicit Mutator(Bytes file);

  const Bytes& Whole() const noexcept { return m_file; }
  /// One to three changes: flipped bits, runs overwritten, lost or put in, other sizes and identifiers of elements,
  /// elements repeated elsewhere. The same seed gives the same bytes.
  Bytes Mutated(std::uint_fast32_t seed) const;

 private:
  struct Place {
    std::size_t position = 0;
    ElementHeader header;
  };

  void Change(Bytes& bytes, std::mt19937& random) const;
  void ChangeElement(Bytes& bytes, std::mt19937& random) const;

  const Bytes m_file;
  std::vector<Place> m_elements;
};

}  // namespace tarvex::fuzz
