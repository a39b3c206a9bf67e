#pragma once

#include <windows.h>

#include <deque>
#include <mutex>

#include "reference_host/process/Patience.h"

namespace refhost {

/// Lets so many check scripts run at once; the others wait, the first to come is the first to go. A
/// semaphore would do but for the order, which Windows does not promise. Any thread.
class CheckQueue {
 public:
  /// @param places in, at least 1.
  explicit CheckQueue(unsigned int places) : _free(places) {}

  /// A caller's turn, from the end of its wait to the end of this object.
  class Turn {
   public:
    /// Blocks until it is the caller's turn or its patience is over.
    Turn(CheckQueue& queue, const Patience& patience)
        : _queue(queue), _isOn(queue.Enter(patience)) {}
    ~Turn() {
      if (_isOn) _queue.Leave();
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

    /// @return false when the patience was over first.
    explicit operator bool() const { return _isOn; }

   private:
    CheckQueue& _queue;
    bool _isOn;
  };

 private:
  bool Enter(const Patience& patience);
  bool TakeFreePlace(HANDLE turn);
  bool Wait(HANDLE turn, const Patience& patience);
  void Leave();

  std::mutex _mutex;
  unsigned int _free;           ///< above 0: nobody waits
  std::deque<HANDLE> _waiting;  ///< an event each
};

}  // namespace refhost
