// See temporary_movie.h.
#include "tests/robustness/temporary_movie.h"

#include <fstream>
#include <random>

namespace tarvex::test {

TemporaryMovie::TemporaryMovie(const MovieShape& shape)
    : m_path(std::filesystem::temp_directory_path() / ("tarvex-" + std::to_string(std::random_device{}()) + ".mkv")) {
  const std::vector<std::uint8_t> bytes = MakeMovie(shape);
  std::ofstream file(m_path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

TemporaryMovie::~TemporaryMovie() {
  std::error_code ignored;
  std::filesystem::remove(m_path, ignored);
}

}  // namespace tarvex::test
