#pragma once

#include <windows.h>

#include <utility>

/// Owns what the service manager has opened.
class ServiceHandle {
 public:
  ServiceHandle() = default;
  explicit ServiceHandle(SC_HANDLE handle) : _handle(handle) {}
  ~ServiceHandle() {
    if (_handle != nullptr) CloseServiceHandle(_handle);
  }
  ServiceHandle(const ServiceHandle&) = delete;
  ServiceHandle& operator=(ServiceHandle&& other) noexcept {
    std::swap(_handle, other._handle);
    return *this;
  }

  explicit operator bool() const { return _handle != nullptr; }
  SC_HANDLE Get() const { return _handle; }

 private:
  SC_HANDLE _handle = nullptr;
};
