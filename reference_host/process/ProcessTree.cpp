#include "reference_host/process/ProcessTree.h"

namespace refhost {

namespace {

constexpr UINT EndedCode = 1;

/// A crash ends a program of the job without a dialogue that nobody would see.
constexpr DWORD Enclosed =
    JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE | JOB_OBJECT_LIMIT_DIE_ON_UNHANDLED_EXCEPTION;

/// A program stays in its job for ever, but a released one's children are in none: an updater or a
/// service that an installer starts may ask to leave the job, which would fail without the former.
constexpr DWORD Released = JOB_OBJECT_LIMIT_BREAKAWAY_OK | JOB_OBJECT_LIMIT_SILENT_BREAKAWAY_OK;

bool SetLimits(HANDLE job, DWORD flags) {
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
  limits.BasicLimitInformation.LimitFlags = flags;
  return SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits) !=
         0;
}

}  // namespace

bool IsGoneWithin(HANDLE process, std::chrono::milliseconds bound) {
  return WaitForSingleObject(process, static_cast<DWORD>(bound.count())) == WAIT_OBJECT_0;
}

ProcessTree::ProcessTree(ProcessOrder order) : _job(CreateJobObjectW(nullptr, nullptr)) {
  order.job = _job.Get();
  if (_job && SetLimits(_job.Get(), Enclosed)) _process = StartProcess(order);
  if (!_process) _error = GetLastError();
}

bool ProcessTree::End(std::chrono::milliseconds bound) {
  TerminateJobObject(_job.Get(), EndedCode);
  return IsGoneWithin(Process(), bound);
}

void ProcessTree::Release() { SetLimits(_job.Get(), Released); }

}  // namespace refhost
