#pragma once

#include <windows.h>

#include "reference_host/base/Handle.h"

/// Tells when something changes in the machine's policies. What Windows does not tell of, a file
/// for one, is to be looked for now and then besides.
class PolicyWatch {
 public:
  PolicyWatch() = default;
  ~PolicyWatch();
  PolicyWatch(const PolicyWatch&) = delete;
  PolicyWatch& operator=(const PolicyWatch&) = delete;

  /// Asks Windows to tell of the next change, unless it was asked for and has not come yet. One
  /// thread, which lives as long as the watch.
  void Ask();

  /// @return the event that a change signals.
  HANDLE Changed() const { return _changed.Get(); }

 private:
  const refhost::Handle _changed{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
  HKEY _key = nullptr;
  bool _isAsked = false;
};
