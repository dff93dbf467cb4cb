// Track tables for tests, made of libmatroska elements as the scanner would store them. One call per
// element; a value of the test.
#pragma once

#include <cstdint>
#include <string>

#include "scanner/heap.h"

namespace tarvex::test {

class TrackBuilder {
 public:
  TrackBuilder(std::uint64_t number, std::uint64_t type, const std::string& codecId);

  TrackBuilder& Private(const std::string& bytes);
  TrackBuilder& Name(const std::string& utf8);
  TrackBuilder& Language(const std::string& value);
  TrackBuilder& Default(std::uint64_t value);
  TrackBuilder& Forced(std::uint64_t value);
  TrackBuilder& Size(std::uint64_t width, std::uint64_t height);

  operator const CHeap&() const { return m_heap; }  // NOLINT(google-explicit-constructor): stands for its table

 private:
  template <class Element, class Value>
  TrackBuilder& Set(const char* key, const Value& value);

  CHeap m_heap;
};

}  // namespace tarvex::test
