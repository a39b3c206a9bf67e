#include "tools/tolmarpack/Files.h"

#include <chrono>
#include <fstream>
#include <random>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <vector>

#include "tools/tolmarpack/Program.h"

namespace fs = std::filesystem;

namespace tolmarpack {

fs::path PathOf(const std::string& utf8) { return {std::u8string(utf8.begin(), utf8.end())}; }

std::string TextOf(const fs::path& path) {
  const std::u8string text = path.generic_u8string();
  return {text.begin(), text.end()};
}

std::string ReadFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::string bytes(file ? fs::file_size(path) : 0, '\0');
  if (!file.read(bytes.data(), static_cast<std::streamsize>(bytes.size())))
    throw std::runtime_error("cannot read " + TextOf(path));
  return bytes;
}

void Replace(const fs::path& path, const std::function<void(const fs::path& part)>& write) {
  if (path.has_parent_path()) fs::create_directories(path.parent_path());
  fs::path part = path;
  part += ".part";
  write(part);
  fs::rename(part, path);
}

void WriteFile(const fs::path& path, const std::string& bytes) {
  Replace(path, [&](const fs::path& part) {
    std::ofstream file(part, std::ios::binary);
    file << bytes;
    file.close();
    if (!file) throw std::runtime_error("cannot write " + TextOf(part));
  });
}

void Copy(const fs::path& from, const fs::path& to) {
  Replace(to, [&](const fs::path& part) {
    std::error_code fault;
    fs::copy_file(from, part, fs::copy_options::overwrite_existing, fault);
    if (fault) throw std::runtime_error("cannot copy " + TextOf(from) + ": " + fault.message());
    // A copy that may not be written could not be replaced on Windows.
    fs::permissions(part, fs::perms::owner_write, fs::perm_options::add);
  });
}

TemporaryFolder::TemporaryFolder() {
  do {
    _path = fs::temp_directory_path() / ("tolmarpack-" + RandomText(8));
  } while (!fs::create_directory(_path));
}

namespace {

/// Once over all of it: the library's `remove_all` (GCC 12, Windows) goes over what somebody has
/// open again and again, without end.
bool Remove(const fs::path& path) {
  std::error_code fault;
  if (fs::is_directory(fs::symlink_status(path, fault))) {
    std::vector<fs::path> entries;
    fs::directory_iterator entry(path, fault);
    for (; !fault && entry != fs::directory_iterator(); entry.increment(fault)) {
      entries.push_back(entry->path());
    }
    for (const fs::path& inner : entries) Remove(inner);
  }
  fs::remove(path, fault);
  return !fault;
}

}  // namespace

/// What a program has left running may have a file open for a moment more; packages nest deeply.
TemporaryFolder::~TemporaryFolder() {
  constexpr int Attempts = 20;
  constexpr std::chrono::milliseconds Pause(50);
  constexpr bool IsWindows = fs::path::preferred_separator != '/';
  const fs::path folder = IsWindows ? fs::path(L"\\\\?\\") += _path : _path;
  for (int i = 0; i < Attempts && !Remove(folder); ++i) std::this_thread::sleep_for(Pause);
}

std::string RandomText(unsigned int count) {
  constexpr char Digits[] = "0123456789abcdef";
  std::random_device random;
  std::string text;
  for (unsigned int i = 0; i < 2 * count; ++i) text += Digits[random() % 16];
  return text;
}

fs::path FindAbove(const std::string& name) {
  fs::path folder = OwnProgram().parent_path();
  while (!fs::exists(folder / name)) {
    if (folder == folder.parent_path()) return {};
    folder = folder.parent_path();
  }
  return folder / name;
}

}  // namespace tolmarpack
