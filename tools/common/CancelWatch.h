#pragma once

#include <windows.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>

/// The cancel event of one run: signalled by Ctrl-C, by the end of the console or after a time-out.
/// One object a process, made before the agent is.
class CancelWatch {
 public:
  enum class Cause { None, Console, Time };

  /// @param timeoutSeconds in, 0: none.
  explicit CancelWatch(unsigned int timeoutSeconds);

  /// A console that is being closed ends the process only when the object is gone.
  ~CancelWatch();
  CancelWatch(const CancelWatch&) = delete;
  CancelWatch& operator=(const CancelWatch&) = delete;

  /// @return the event, open as long as this object.
  HANDLE Event() const { return _cancel; }

  /// @return what has signalled the event, so far.
  Cause Why() const { return _cause; }

  /// @param onCancel in, called once on a thread of the watch after the event was signalled; at
  /// once when it is already.
  void OnCancel(std::function<void()> onCancel);

 private:
  void Watch(unsigned int timeoutSeconds);

  HANDLE _cancel;
  HANDLE _done;
  std::atomic<Cause> _cause = Cause::None;
  std::mutex _mutex;
  std::function<void()> _onCancel;
  std::thread _thread;
};
