#pragma once

#include "reference_host/doctor/Finding.h"
#include "reference_host/doctor/Questions.h"

namespace refhost {

/// What the device needs of its own machine, one check each. Those of folders and space need a
/// configuration.
Finding ExamineDownloadFolder(const Questions& questions);
Finding ExamineLogFolder(const Questions& questions);
Finding ExamineSpace(const Questions& questions);
Finding ExamineBits(const Questions& questions);
Finding ExamineLease(const Questions& questions);

}  // namespace refhost
