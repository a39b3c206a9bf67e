#pragma once

#include "reference_host/doctor/Finding.h"
#include "reference_host/doctor/Questions.h"

namespace refhost {

/// What the device needs of the service, one check each; they need a configuration.
Finding ExamineEndpoint(const Questions& questions);
Finding ExamineToken(const Questions& questions);
Finding ExamineClock(const Questions& questions);
Finding ExamineRegistration(const Questions& questions);

}  // namespace refhost
