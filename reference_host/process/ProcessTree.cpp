#include "reference_host/process/ProcessTree.h"

namespace refhost {

namespace {

constexpr UINT EndedCode = 1;

/// A crash ends a program of the job without a dialogue that nobody would see.
constexpr DWORD Enclosed =
    JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE | JOB_OBJECT_LIMIT_DIE_ON_UNHANDLED_EXCEPTION;

bool SetLimits(HANDLE job, DWORD flags) {
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
  limits.BasicLimitInformation.LimitFlags = flags;
  return SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits) !=
         0;
}

}  // namespace

ProcessTree::ProcessTree(ProcessOrder order) : _job(CreateJobObjectW(nullptr, nullptr)) {
  order.job = _job.Get();
  if (_job && SetLimits(_job.Get(), Enclosed)) _process = StartProcess(order);
  if (!_process) _error = GetLastError();
}

void ProcessTree::End() {
  TerminateJobObject(_job.Get(), EndedCode);
  WaitForSingleObject(Process(), INFINITE);
}

void ProcessTree::Release() { SetLimits(_job.Get(), 0); }

}  // namespace refhost
