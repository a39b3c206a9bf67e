#pragma once

#include "reference_host/base/Handle.h"

namespace refhost {

/// What it takes to start a program in the session of the user who is signed in at the machine.
struct SessionToken {
  Handle token;             ///< none: the program belongs into this process's own session
  unsigned long error = 0;  ///< the system's, when there is no token though somebody is signed in
};

/// @return a token with this process's rights in the session of the user at the console, so that
/// what is started with it can meet that user and can still read the restricted download folder.
/// Neither token nor error when nobody is signed in there or when this process stands in that
/// session already; an error when it may not do that (it takes a service that runs as SYSTEM).
SessionToken TokenForUserSession();

}  // namespace refhost
