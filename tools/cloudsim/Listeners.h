#pragma once

#include <httplib.h>

#include <future>
#include <memory>
#include <string>
#include <vector>

#include "tools/cloudsim/Platform.h"

namespace cloudsim {

/// The servers on 127.0.0.1 and, where the machine has it, ::1, on one port.
class Listeners {
 public:
  /// Binds without serving yet. @param port in, 0 for a free one.
  /// @throws std::runtime_error when the port is taken or the TLS files are unusable.
  Listeners(const TlsFiles& tls, int port);

  int Port() const { return _port; }
  const std::vector<std::unique_ptr<httplib::Server>>& Servers() const { return _servers; }

  /// Serves on threads of its own; connections are accepted when it returns.
  void Start();

  /// Stops serving. @return true when every connection has ended; idle ones that clients keep
  /// alive are waited for a moment only.
  bool Stop();

 private:
  bool TryBind(const TlsFiles& tls, int port, bool needsBoth);

  int _port = 0;
  std::vector<std::unique_ptr<httplib::Server>> _servers;
  std::vector<std::future<bool>> _running;
};

}  // namespace cloudsim
