// Damages a file's bytes in repeatable ways. Made once for a file; a value of one test.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "scanner/elements/element_header.h"

namespace tarvex::test {

class DamagedBytes {
 public:
  /// `file` is kept.
  explicit DamagedBytes(std::vector<std::uint8_t> file);

  const std::vector<std::uint8_t>& Whole() const noexcept { return m_file; }
  /// The first `size` bytes.
  std::vector<std::uint8_t> CutAt(std::size_t size) const;
  /// One to three changes: flipped bits, overwritten runs, other sizes and identifiers of elements, bytes
  /// put in and taken out, elements repeated elsewhere. The same seed gives the same bytes.
  std::vector<std::uint8_t> Mutated(std::uint32_t seed) const;

 private:
  using Random = std::mt19937;
  struct Place {
    std::size_t position = 0;
    ElementHeader header;
  };

  void FindElements();
  void Change(std::vector<std::uint8_t>& bytes, Random& random) const;
  void FlipBits(std::vector<std::uint8_t>& bytes, Random& random) const;
  void OverwriteRun(std::vector<std::uint8_t>& bytes, Random& random) const;
  void ChangeSize(std::vector<std::uint8_t>& bytes, Random& random) const;
  void ChangeId(std::vector<std::uint8_t>& bytes, Random& random) const;
  void Insert(std::vector<std::uint8_t>& bytes, Random& random) const;
  void Delete(std::vector<std::uint8_t>& bytes, Random& random) const;
  void RepeatElement(std::vector<std::uint8_t>& bytes, Random& random) const;

  const std::vector<std::uint8_t> m_file;
  std::vector<Place> m_elements;
};

}  // namespace tarvex::test
