#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "reference_host/download/BitsFailure.h"

namespace refhost {

/// What a server says about a file.
struct ServerAnswer {
  unsigned long status = 0;             ///< HTTP status, or WinHTTP's error number (from 12000)
  std::optional<std::uint64_t> length;  ///< in bytes; only with status 200

  /// @return the failure when the server has refused the file or sent the caller elsewhere, with
  /// the code that BITS gives for that.
  std::optional<BitsFailure> Refusal() const;

  /// @return the failure when the server was not reached.
  std::optional<BitsFailure> TransportFailure() const;
};

/// Asks for files before BITS fetches them, on a thread of its own. BITS alone is not enough on
/// every platform: it may take a server's error page for the file, not know lengths, not notice
/// that a file was cut off, not tell why it failed, and carry the headers after a redirection. The
/// object may go at any time; the thread then ends after its current request.
class BitsProbe {
 public:
  BitsProbe(std::vector<std::wstring> urls, std::wstring headers);
  ~BitsProbe();
  BitsProbe(const BitsProbe&) = delete;
  BitsProbe& operator=(const BitsProbe&) = delete;

  /// @return true when no further answer will come.
  bool IsDone() const;

  /// @return the answer for a URL, an empty one when there is none.
  ServerAnswer AnswerFor(const std::wstring& url) const;

 private:
  struct State;
  std::shared_ptr<State> _state;
};

}  // namespace refhost
