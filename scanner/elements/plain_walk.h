// Walking over elements that are just as a muxer writes them, head by head, without an object for each. Made by the
// scanner for one master; moves the byte source's position. Runs on the thread that drives the scanner.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "scanner/elements/element_header.h"
#include "scanner/elements/element_walker.h"

namespace tarvex {

/// How much to read at a time for looking at one head after the other. Where heads are close together, large pieces,
/// since each read has its price; else little more than the head.
class ReadStep {
 public:
  std::size_t Bytes() const { return m_distance < kFar ? kMany : kFew; }
  /// The next head is so many bytes further on.
  void Note(std::uint64_t distance) { m_distance = (7 * m_distance + std::min(distance, 4 * kFar)) / 8; }

 private:
  static constexpr std::uint64_t kFar = 64 * 1024;
  static constexpr std::size_t kFew = 64;
  static constexpr std::size_t kMany = std::size_t{1} << 20;

  std::uint64_t m_distance = kFar;  // about that of the last ones
};

/// Over the children between two places, both within the stream.
class PlainWalk {
 public:
  PlainWalk(ElementWalker& walker, std::uint64_t begin, std::uint64_t end, ReadStep& step)
      : PlainWalk(walker, begin, end, end, step) {}

  bool IsAtEnd() const { return m_position >= m_end; }
  std::uint64_t Position() const { return m_position; }
  /// The bytes there, at least `atLeast` if there are so many before the end.
  std::span<const std::uint8_t> Bytes(std::uint64_t atLeast) { return BytesAt(m_position, atLeast); }
  /// The head of the next child; nothing when it is none of known size that ends before the end.
  std::optional<ElementHeader> Head();
  /// Bytes of the child with this head, from its data on: at least `count` if it has so many.
  std::span<const std::uint8_t> Data(const ElementHeader& header, std::uint64_t count);
  /// Over the children of that child.
  PlainWalk Inside(const ElementHeader& header) const;
  void Pass(const ElementHeader& header);

 private:
  PlainWalk(ElementWalker& walker, std::uint64_t begin, std::uint64_t end, std::uint64_t readTo, ReadStep& step)
      : m_walker(walker), m_position(begin), m_end(end), m_readTo(readTo), m_step(step) {}
  std::span<const std::uint8_t> BytesAt(std::uint64_t position, std::uint64_t atLeast);

  ElementWalker& m_walker;
  std::uint64_t m_position;
  std::uint64_t m_end;
  std::uint64_t m_readTo;  // the end of the outermost walk
  ReadStep& m_step;
};

}  // namespace tarvex
