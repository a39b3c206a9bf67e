#pragma once

namespace refhost {

/// Long work that nobody can signal: it looks now and then whether the suite was told to stop since
/// the work began. Any thread.
class RunningWork {
 public:
  RunningWork();

  bool IsToStop() const;

  /// Stops what is under way; what begins later is not concerned.
  static void StopAll();

 private:
  unsigned int _stopsBefore;
};

}  // namespace refhost
