#pragma once

#include "reference_host/doctor/Finding.h"
#include "reference_host/doctor/Questions.h"

namespace refhost {

/// Tells which proxy settings requests go by; never more than that, since which one of several is
/// taken turns out at each request.
Finding ExamineProxy(const Questions& questions);

}  // namespace refhost
