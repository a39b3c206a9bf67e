#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/scriptrunner/Cases.h"

/// A folder with a script, "test.ps1", and what the script works on.
class ScriptFolder {
 public:
  /// @param path in, its own; deleted at the end, unless something in it is held open.
  explicit ScriptFolder(std::filesystem::path path) : _path(std::move(path)) { Clear(); }
  ~ScriptFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(_path, ignored);
  }
  ScriptFolder(const ScriptFolder&) = delete;
  ScriptFolder& operator=(const ScriptFolder&) = delete;

  std::filesystem::path Script() const { return _path / "test.ps1"; }

  void Clear() {
    std::filesystem::remove_all(_path);
    std::filesystem::create_directories(_path);
  }

  void Put(const std::string& name, const std::string& bytes) {
    const std::filesystem::path path = _path / name;
    std::filesystem::create_directories(path.parent_path());
    if (!name.ends_with('/')) std::ofstream(path, std::ios::binary) << bytes;
  }

  /// @return what there is besides the script.
  ScriptCases::Files Found() const {
    ScriptCases::Files files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(_path)) {
      const std::string name = entry.path().lexically_relative(_path).generic_string();
      if (entry.path() == Script()) continue;
      if (entry.is_regular_file()) files[name] = Bytes(entry.path());
      if (entry.is_directory() && std::filesystem::is_empty(entry.path())) files[name + "/"] = "";
    }
    return files;
  }

 private:
  static std::string Bytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  std::filesystem::path _path;
};
