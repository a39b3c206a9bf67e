#pragma once

#include <cstdint>
#include <string>

#include "reference_host/base/Handle.h"

namespace refhost {

/// The file of a log. Several processes may append to the same one, and each may rotate it: once
/// a file is full it becomes NAME.1 (replacing an older one) and a new one is begun. One thread at
/// a time.
class LogFile {
 public:
  /// Opens or creates the file. @return false when that fails; an open file then stays open.
  bool Open(const std::wstring& path, std::uint64_t maxBytes);

  bool IsOpen() const { return static_cast<bool>(_file); }

  /// Appends one record as a whole; it is lost when the disk does not take it.
  void Append(const std::string& record);

 private:
  bool IsFull(std::size_t added) const;
  void Rotate(std::size_t added);
  void Reopen();

  std::wstring _path;
  std::uint64_t _maxBytes = 0;
  Handle _file;
};

}  // namespace refhost
