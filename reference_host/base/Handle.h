#pragma once

#include <windows.h>

#include <utility>

namespace refhost {

/// Owns a kernel handle; either of Windows' two "no handle" values is none.
class Handle {
 public:
  Handle() = default;
  explicit Handle(HANDLE handle) : _handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
  ~Handle() {
    if (_handle != nullptr) CloseHandle(_handle);
  }
  Handle(Handle&& other) noexcept : _handle(std::exchange(other._handle, nullptr)) {}
  Handle& operator=(Handle&& other) noexcept {
    std::swap(_handle, other._handle);
    return *this;
  }

  explicit operator bool() const { return _handle != nullptr; }
  HANDLE Get() const { return _handle; }
  HANDLE Release() { return std::exchange(_handle, nullptr); }

 private:
  HANDLE _handle = nullptr;
};

}  // namespace refhost
