#pragma once

#include <windows.h>

#include <functional>
#include <thread>

/// The cancel event of one run: signalled by Ctrl-C or after a time-out. One object a process.
class CancelWatch {
 public:
  /// @param timeoutSeconds in, 0: none.
  /// @param onCancel in, called once on a thread of the watch after the event was signalled.
  CancelWatch(unsigned int timeoutSeconds, std::function<void()> onCancel);
  ~CancelWatch();
  CancelWatch(const CancelWatch&) = delete;
  CancelWatch& operator=(const CancelWatch&) = delete;

  /// @return the event, open as long as this object.
  HANDLE Event() const { return _cancel; }

 private:
  void Watch(unsigned int timeoutSeconds, const std::function<void()>& onCancel);

  HANDLE _cancel;
  HANDLE _done;
  std::thread _thread;
};
