#pragma once

#include <atomic>
#include <thread>

/// Looks now and then at what a query keeps busy.
class QueryWatch {
 public:
  /// The most that was seen at once.
  struct Most {
    int threads = 0;          ///< of this process
    int scripts = 0;          ///< processes of check scripts
    double scriptMemory = 0;  ///< of those, what is shared with no file, in MiB
  };

  QueryWatch();

  /// @return the most until now; nothing is looked at any more.
  Most End();

 private:
  void Look();

  Most _most;
  std::atomic<bool> _ended = false;
  std::thread _thread;
};
