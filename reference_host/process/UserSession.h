#pragma once

#include "reference_host/base/Handle.h"

namespace refhost {

/// @return a token with this process's rights in the session of the user who is signed in at the
/// machine, so that what is started with it can meet that user and can still read the restricted
/// download folder. Nothing when nobody is signed in, when this process stands in that session
/// already, or when it may not do that (it takes a service that runs as SYSTEM).
Handle TokenForUserSession();

}  // namespace refhost
