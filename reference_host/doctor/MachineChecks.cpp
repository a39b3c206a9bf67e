#include "reference_host/doctor/MachineChecks.h"

#include "host/common/Text.h"
#include "reference_host/causes/Causes.h"
#include "reference_host/configuration/Folders.h"
#include "reference_host/doctor/Judgement.h"
#include "reference_host/files/FolderInspection.h"
#include "reference_host/files/InstallationLease.h"
#include "reference_host/http/SystemError.h"

namespace refhost {

namespace {

Finding JudgeFolder(const std::wstring& folder) {
  const std::wstring refusal = RefusalToUseFolder(folder);
  const std::string name = ZLT::String::UTF16ToUTF8(folder);
  if (refusal.empty()) return {"", Health::Ok, name, ""};
  return {"", Health::Fail, name + ": " + ZLT::String::UTF16ToUTF8(refusal),
          "Run as an administrator; remove what stands in its place, or choose another folder."};
}

}  // namespace

Finding ExamineDownloadFolder(const Questions&) { return JudgeFolder(DownloadFolder()); }

Finding ExamineLogFolder(const Questions&) { return JudgeFolder(LogFolder()); }

Finding ExamineSpace(const Questions&) {
  if (const auto bytes = FreeBytesFor(DownloadFolder())) return JudgeSpace(*bytes);
  return {"", Health::Fail, "the download folder's drive does not tell its free space",
          "Choose another downloadFolder."};
}

Finding ExamineBits(const Questions& questions) {
  const BitsAnswer answer = questions.Bits();
  if (SUCCEEDED(answer.result)) {
    return {"", Health::Ok, "answers; jobs of this suite: " + std::to_string(answer.jobs), ""};
  }
  return {"", Health::Fail, ZLT::String::UTF16ToUTF8(DescriptionWithCode(answer.result)),
          FindCause("download.service")->remedy};
}

Finding ExamineLease(const Questions&) {
  const auto holder = InstallationLease::Holder();
  if (!holder) return {"", Health::Ok, "nobody installs", ""};
  return {"", Health::Warn,
          ZLT::String::UTF16ToUTF8(InstallationLease::Description(*holder)) + " installs",
          "Wait for it: an installation would."};
}

}  // namespace refhost
