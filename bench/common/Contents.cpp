#include "bench/common/Contents.h"

#include <fstream>
#include <iterator>

std::string Contents(const std::filesystem::path& path, std::uintmax_t from) {
  std::ifstream file(path, std::ios::binary);
  file.seekg(static_cast<std::streamoff>(from));
  return {std::istreambuf_iterator<char>(file), {}};
}
