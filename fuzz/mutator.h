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
  struct Place {
    std::size_t position = 0;
    ElementHeader header;
  };

  explicit Mutator(Bytes file);

  const Bytes& Whole() const noexcept { return m_file; }
  /// In the order of the file, each in front of what it holds.
  const std::vector<Place>& Elements() const noexcept { return m_elements; }
  /// The element, or as much of it as the file has.
  Bytes CopyOf(const Place& element) const;
  /// One to three changes: flipped bits, runs overwritten, lost or put in, other sizes and identifiers of elements,
  /// elements repeated elsewhere. The same seed gives the same bytes.
  Bytes Mutated(std::uint_fast32_t seed) const;

 private:
  void Change(Bytes& bytes, std::mt19937& random) const;

  const Bytes m_file;
  std::vector<Place> m_elements;
};

}  // namespace tarvex::fuzz
