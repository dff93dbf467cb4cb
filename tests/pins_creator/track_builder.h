// Track tables for tests, made of libmatroska elements as the scanner would store them. One call per
// element; a value of the test.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "scanner/heap.h"

namespace tarvex::test {

using ByteVector = std::vector<std::uint8_t>;

class TrackBuilder {
 public:
  TrackBuilder() = default;
  TrackBuilder(std::uint64_t number, std::uint64_t type, const std::string& codecId);

  TrackBuilder& Number(std::uint64_t value);
  TrackBuilder& Type(std::uint64_t value);
  TrackBuilder& Codec(const std::string& value);
  TrackBuilder& Private(const ByteVector& value);
  TrackBuilder& Name(const std::string& utf8);
  TrackBuilder& Language(const std::string& value);
  TrackBuilder& Default(bool value);
  TrackBuilder& Forced(bool value);
  TrackBuilder& Duration(std::uint64_t nanoseconds);
  TrackBuilder& Size(std::uint64_t width, std::uint64_t height);
  TrackBuilder& Width(std::uint64_t value);
  TrackBuilder& Height(std::uint64_t value);
  TrackBuilder& Display(std::uint64_t width, std::uint64_t height);
  TrackBuilder& Rate(double hertz);
  TrackBuilder& Channels(std::uint64_t value);
  TrackBuilder& Depth(std::uint64_t value);

  operator const CHeap&() const { return m_heap; }  // NOLINT(google-explicit-constructor): stands for its table

 private:
  template <class Element, class Value>
  TrackBuilder& Set(const char* key, const Value& value);

  CHeap m_heap;
};

/// 0, 1, 2, ... as codec private that has no meaning.
ByteVector CountingBytes(std::size_t count);

}  // namespace tarvex::test
