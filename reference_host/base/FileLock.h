#pragma once

#include <windows.h>

namespace refhost {

/// Keeps other holders of this lock, in any process, off one file as long as the object lives. The
/// locked byte lies where no file gets to, so that readers are not kept off; the system lets go of
/// it when a process dies.
class FileLock {
 public:
  /// Blocks until the lock is free.
  explicit FileLock(HANDLE file) : _file(file) {
    OVERLAPPED where = Where();
    _held = LockFileEx(_file, LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0, &where) != 0;
  }
  ~FileLock() {
    OVERLAPPED where = Where();
    if (_held) UnlockFileEx(_file, 0, 1, 0, &where);
  }
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

 private:
  static OVERLAPPED Where() {
    OVERLAPPED where{};
    where.OffsetHigh = 0x40000000;
    return where;
  }

  HANDLE _file;
  bool _held = false;
};

}  // namespace refhost
