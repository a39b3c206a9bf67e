#include "tools/scriptrunner/FileCmdlets.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <system_error>

#include "tools/scriptrunner/Errors.h"

namespace fs = std::filesystem;

namespace scriptrunner {

namespace {

std::string Show(const fs::path& path) {
  const std::u8string text = path.u8string();
  std::string shown(1, '\'');
  return shown.append(text.begin(), text.end()).append("'");
}

[[noreturn]] void Refuse(const std::string& text) { throw ScriptError(0, text); }

void Check(const std::error_code& error, const std::string& what) {
  if (error) throw CommandFailure(what + ": " + error.message());
}

/// The item that -LiteralPath or -Path names; patterns are outside the subset.
fs::path Item(const Arguments& arguments) {
  if (arguments.Has("LiteralPath")) return ToPath(arguments.Text("LiteralPath"));
  const std::string text = arguments.Text("Path");
  if (text.find_first_of("*?[]") != std::string::npos) {
    Refuse("a pattern in -Path is not in the subset: '" + text + "'");
  }
  return ToPath(text);
}

void MakeWritable(const fs::path& path) {
  std::error_code ignored;
  fs::permissions(path, fs::perms::owner_write, fs::perm_options::add, ignored);
}

void WriteFile(const fs::path& path, const std::string& bytes, std::ios::openmode mode) {
  std::ofstream file(path, mode | std::ios::binary);
  file << bytes;
  if (!file.flush()) throw CommandFailure("cannot write " + Show(path));
}

/// Copies a file, or a folder with all that it holds. (Not fs::copy: the one that is built for
/// Windows does not overwrite.)
void CopyTree(const fs::path& source, const fs::path& target, bool force) {
  if (!fs::is_directory(source)) {
    if (force) MakeWritable(target);
    return WriteFile(target, ReadFile(source), std::ios::trunc);
  }
  fs::create_directory(target);
  for (const fs::directory_entry& entry : fs::directory_iterator(source)) {
    CopyTree(entry.path(), target / entry.path().filename(), force);
  }
}

Value Write(const Arguments& arguments, std::ios::openmode mode) {
  const fs::path path = Item(arguments);
  const std::string text = ToText(arguments.Get("Value"));
  if (std::any_of(text.begin(), text.end(), [](char c) { return c < 0; })) {
    Refuse("what is written beyond ASCII depends on the PC's code page");
  }
  WriteFile(path, text + (arguments.IsOn("NoNewline") ? "" : "\r\n"), mode);
  return {};
}

void MakeFolder(const fs::path& path, bool force) {
  if (!force && fs::exists(path)) throw CommandFailure(Show(path) + " exists already");
  std::error_code error;
  fs::create_directories(path, error);
  Check(error, "cannot create " + Show(path));
}

void MakeFile(const fs::path& path, bool force) {
  std::error_code error;
  if (!force && fs::exists(path)) throw CommandFailure(Show(path) + " exists already");
  if (force) fs::create_directories(path.parent_path(), error);
  if (!std::ofstream(path, std::ios::trunc)) throw CommandFailure("cannot create " + Show(path));
}

}  // namespace

fs::path ToPath(const std::string& text) {
  std::u8string portable(text.begin(), text.end());
  std::replace(portable.begin(), portable.end(), u8'\\', u8'/');
  return fs::path(portable);
}

std::string ReadFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::string bytes((std::istreambuf_iterator<char>(file)), {});
  if (!file) throw CommandFailure("cannot read " + Show(path));
  return bytes;
}

Value AddContent(const Arguments& arguments, System&) { return Write(arguments, std::ios::app); }

Value SetContent(const Arguments& arguments, System&) { return Write(arguments, std::ios::trunc); }

Value CopyItem(const Arguments& arguments, System&) {
  const fs::path source = Item(arguments);
  fs::path target = ToPath(arguments.Text("Destination"));
  if (!fs::exists(source)) throw CommandFailure("there is no " + Show(source));
  if (fs::is_directory(source) && !arguments.IsOn("Recurse")) {
    Refuse("copying a folder without -Recurse is not in the subset");
  }
  if (fs::is_directory(target)) target /= source.filename();
  const fs::path way = fs::absolute(target).lexically_relative(fs::absolute(source));
  const bool isElsewhere = way.empty() || *way.begin() == "..";  // empty: on another drive
  if (!isElsewhere) throw CommandFailure("cannot copy " + Show(source) + " into itself");
  CopyTree(source, target, arguments.IsOn("Force"));
  return {};
}

Value GetContent(const Arguments& arguments, System&) {
  std::string text = ReadFile(Item(arguments));
  if (arguments.IsOn("Raw")) return text;
  if (text.ends_with('\n')) text.pop_back();
  if (text.ends_with('\r')) text.pop_back();
  if (text.find('\n') != std::string::npos) {
    Refuse("Get-Content of several lines without -Raw is not in the subset");
  }
  return text.empty() ? Value() : Value(text);
}

Value NewItem(const Arguments& arguments, System&) {
  const fs::path path = ToPath(arguments.Text("Path"));
  const std::string type = Lower(ToText(arguments.Get("ItemType")));
  if (type == "directory") {
    MakeFolder(path, arguments.IsOn("Force"));
  } else if (type == "file") {
    MakeFile(path, arguments.IsOn("Force"));
  } else {
    Refuse("New-Item without -ItemType Directory or File is not in the subset");
  }
  return {};
}

Value RemoveItem(const Arguments& arguments, System&) {
  const fs::path path = Item(arguments);
  std::error_code error;
  if (!fs::exists(fs::symlink_status(path))) throw CommandFailure("there is no " + Show(path));
  if (arguments.IsOn("Force")) MakeWritable(path);
  if (arguments.IsOn("Recurse")) {
    fs::remove_all(path, error);
  } else {
    fs::remove(path, error);
  }
  Check(error, "cannot remove " + Show(path));
  return {};
}

Value TestPath(const Arguments& arguments, System&) {
  const fs::path path = Item(arguments);
  const std::string type = Lower(ToText(arguments.Get("PathType")));
  std::error_code ignored;
  if (type == "container") return fs::is_directory(path, ignored);
  if (type == "leaf") return fs::exists(path, ignored) && !fs::is_directory(path, ignored);
  if (type.empty() || type == "any") return fs::exists(path, ignored);
  Refuse("Test-Path -PathType " + type + " is not in the subset");
}

}  // namespace scriptrunner
