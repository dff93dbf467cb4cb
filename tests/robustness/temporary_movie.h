// A made-up film on disk for as long as the object lives. A value of one test.
#pragma once

#include <filesystem>
#include <string>

#include "tests/support/movie.h"

namespace tarvex::test {

class TemporaryMovie {
 public:
  explicit TemporaryMovie(const MovieShape& shape);
  ~TemporaryMovie();
  TemporaryMovie(const TemporaryMovie&) = delete;
  TemporaryMovie& operator=(const TemporaryMovie&) = delete;
  std::string Path() const { return m_path.string(); }

 private:
  std::filesystem::path m_path;
};

}  // namespace tarvex::test
