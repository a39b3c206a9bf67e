#include "reference_host/download/FailureClass.h"

namespace refhost {

namespace {

struct Row {
  std::uint32_t first;
  std::uint32_t last;
  FailureClass::Context context;
  bool transient;
};

/// The first row that holds a code decides. Names and meanings: "BITS Return Values", "Error
/// Messages (Winhttp.h)", "HTTP Status Codes" and "System Error Codes" of Microsoft's
/// documentation.
constexpr Row Rows[] = {
    // HTTP statuses. The address, or who asks for it, is refused: expired, withdrawn, moved.
    {0x8019012C, 0x8019018F, FailureClass::RemoteFile, false},  // 300 to 399
    {0x8007012C, 0x80070133, FailureClass::RemoteFile, false},  // 300 to 307, as BITS refuses them
    {0x80190197, 0x80190197, FailureClass::Transport, false},   // 407, the proxy wants a logon
    {0x80190198, 0x80190198, FailureClass::Transport, true},    // 408, too slow
    {0x801901AD, 0x801901AD, FailureClass::Transport, true},    // 429, too many requests
    {0x80190190, 0x801901F3, FailureClass::RemoteFile, false},  // 400 to 499
    {0x801901F4, 0x80190257, FailureClass::Transport, true},    // 500 to 599, the server's trouble
    // Sockets, and what WinHTTP makes of them.
    {0x80072710, 0x80072EDF, FailureClass::Transport, true},
    {0x80072EE5, 0x80072EE6, FailureClass::Transport, false},  // no URL, no scheme that is known
    {0x80072F05, 0x80072F06, FailureClass::Transport, false},  // certificate: date, name
    {0x80072F0C, 0x80072F0D, FailureClass::Transport, false},  // certificate wanted; its authority
    {0x80072F17, 0x80072F19, FailureClass::Transport, false},  // certificate: errors, revocation
    {0x80072F7C, 0x80072F7C, FailureClass::Transport, false},  // redirected
    {0x80072F89, 0x80072F8A, FailureClass::Transport, false},  // certificate: invalid, revoked
    {0x80072F8F, 0x80072F8F, FailureClass::Transport, false},  // certificate: not accepted
    {0x80072F93, 0x80072F93, FailureClass::Transport, false},  // certificate: wrong usage
    {0x80072F98, 0x80072F98, FailureClass::Transport,
     false},  // the answer is longer than it may be
    {0x80072EE0, 0x80072FFF, FailureClass::Transport, true},
    // BITS.
    {0x8020000D, 0x8020000E, FailureClass::LocalFile, false},  // the disk is locked, has changed
    {0x8020000F, 0x8020000F, FailureClass::Unknown, true},     // BITS does not say why
    {0x80200010, 0x80200010, FailureClass::Transport, true},   // no network
    {0x80200011, 0x80200014, FailureClass::Transport, false},  // the server lacks what BITS needs
    {0x8020001B, 0x8020001B, FailureClass::Transport, true},   // no answer of HTTP
    {0x8020001D, 0x8020001D, FailureClass::LocalFile, false},  // the piece was changed by others
    {0x80200024, 0x80200024, FailureClass::Transport, true},   // no progress
    {0x80200030, 0x80200030, FailureClass::Transport, false},  // too long a message
    {0x8020003C, 0x8020003C, FailureClass::Transport, false},  // the server is not trusted
    {0x8020002D, 0x8020003B, FailureClass::Transport, true},   // connections, names, time-outs
    {0x8020003E, 0x8020003E, FailureClass::Transport, true},   // policy: not over this network
    {0x8020003F, 0x80200040, FailureClass::Transport, false},  // the proxy's settings, its logon
    {0x80200000, 0x8020FFFF, FailureClass::Queue, false},
    // What the reference host finds itself (BitsFailure.h).
    {0x8007000D, 0x8007000D, FailureClass::RemoteFile, true},  // something else than the file came
    {0x80070018, 0x80070018, FailureClass::Transport, true},   // longer than announced
    {0x80070026, 0x80070026, FailureClass::Transport, true},   // shorter than announced
    {0x800700CE, 0x800700CE, FailureClass::Queue, false},      // a name too long for BITS
    {0x800700DF, 0x800700DF, FailureClass::Transport, false},  // larger than allowed
    {0x8007041D, 0x8007041D, FailureClass::Queue, false},      // BITS has not run the job
    {0x800704C7, 0x800704C7, FailureClass::Queue, false},      // ended by others
    {0x800705B4, 0x800705B4, FailureClass::Transport, false},  // no byte in time
};

constexpr std::int32_t RemoteApplication = 7;

}  // namespace

FailureClass ClassOf(std::int32_t context, std::uint32_t code) {
  for (const Row& row : Rows) {
    if (code >= row.first && code <= row.last) return {row.context, row.transient};
  }
  // What an expired address shows up as is all above.
  if (context == FailureClass::RemoteFile || context == RemoteApplication) {
    return {FailureClass::Transport, true};
  }
  return {context, context == FailureClass::Transport || context == FailureClass::Unknown};
}

}  // namespace refhost
