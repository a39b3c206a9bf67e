#pragma once

#include <string>

#include "host/Export.h"

/// Outcome of one request: a return code (0: the service answered) and the reply's body.
/// A value: copied and moved freely, one thread at a time.
class ZLT_API VRXResponse {
 public:
  VRXResponse();
  VRXResponse(const VRXResponse&);
  VRXResponse(VRXResponse&&) noexcept;
  VRXResponse& operator=(const VRXResponse&);
  VRXResponse& operator=(VRXResponse&&) noexcept;
  ~VRXResponse();

  /// @param code in, 0 or what went wrong.
  void SetReturnCode(unsigned long code);
  /// @return what `SetReturnCode` was given; 0 before.
  unsigned long GetReturnCode() const;

  /// @param body in, the reply's body.
  void SetResponse(const std::wstring& body);
  /// @return what `SetResponse` was given; empty before.
  std::wstring GetResponse() const;

 private:
  unsigned long _returnCode = 0;
  std::wstring _response;
};
