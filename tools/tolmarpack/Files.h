#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

namespace tolmarpack {

/// The most that a file of a package may have: the agent sends sizes as 32-bit integers.
constexpr std::uintmax_t MaxFileBytes = 2'147'483'647;

/// Names of files are UTF-8 everywhere in this program but where a file is opened.
std::filesystem::path PathOf(const std::string& utf8);
std::string TextOf(const std::filesystem::path& path);

/// @return the file's bytes. @throws std::runtime_error when it cannot be read.
std::string ReadFile(const std::filesystem::path& path);

/// Makes a file, its folders too; a file that is there is replaced once the new one is whole.
/// @param write in, writes it at the place that it is given, which may have the rest of another.
/// @throws std::runtime_error when there is no folder for it; what `write` throws.
void Replace(const std::filesystem::path& path,
             const std::function<void(const std::filesystem::path& part)>& write);

/// Both make a file by Replace. @throws std::runtime_error when it cannot be written, or read.
void WriteFile(const std::filesystem::path& path, const std::string& bytes);
void Copy(const std::filesystem::path& from, const std::filesystem::path& to);

/// A folder that is gone at the end of its scope.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& Path() const { return _path; }

 private:
  std::filesystem::path _path;
};

/// @return `count` random bytes of the system's, as hex digits.
std::string RandomText(unsigned int count);

/// @return a file that stands in the folder of this program or in one above it, as `scripts/lab.sh`
/// does in the tree that the program was built in; empty when there is none.
std::filesystem::path FindAbove(const std::string& name);

}  // namespace tolmarpack
