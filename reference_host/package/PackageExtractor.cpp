#include "host/common/PackageExtractor.h"

#include <windows.h>

#include <chrono>
#include <stdexcept>

#include "host/common/FileSystem.h"
#include "host/common/Log.h"
#include "host/common/Text.h"
#include "reference_host/configuration/ConfigurationFile.h"
#include "reference_host/configuration/Folders.h"
#include "reference_host/files/FolderHolds.h"
#include "reference_host/files/InstallationLease.h"
#include "reference_host/files/LongPath.h"
#include "reference_host/log/Event.h"
#include "reference_host/package/CabinetFile.h"
#include "reference_host/package/CabinetReader.h"
#include "reference_host/package/CabinetSignature.h"
#include "reference_host/package/PackageFault.h"

using namespace refhost;

namespace {

using Clock = std::chrono::steady_clock;

constexpr int MaxFolderNumber = 1000;

PackagePolicy Policy() { return {Settings().requireSignedPackages, Settings().trustedPublishers}; }

/// A disk that fills up on the way would fail other programs too.
void CheckRoom(const std::wstring& folder, std::uint64_t bytes) {
  ULARGE_INTEGER free{};
  if (!GetDiskFreeSpaceExW(folder.c_str(), &free, nullptr, nullptr)) return;
  if (bytes <= free.QuadPart) return;
  throw PackageFault("device.disk-full", "the package unpacks to " + std::to_string(bytes) +
                                             " bytes, the disk has room for " +
                                             std::to_string(free.QuadPart));
}

/// @return the package's path without its extension, and without what must not end a folder's name.
std::wstring FolderStem(const std::wstring& cabPath) {
  const std::wstring name = FileSystem::getFileName(cabPath);
  std::wstring stem = name.substr(0, name.rfind(L'.'));
  stem.erase(stem.find_last_not_of(L". ") + 1);
  return cabPath.substr(0, cabPath.size() - name.size()) + (stem.empty() ? L"package" : stem);
}

/// Never takes over a folder that is there: somebody else may have put things into it. It is held
/// from here on, since an installer will be started in it: see `HoldFolder`.
std::wstring CreateFolderBeside(const std::wstring& cabPath) {
  const std::wstring stem = FolderStem(cabPath);
  std::wstring folder = stem;
  for (int number = 2; number <= MaxFolderNumber; ++number) {
    if (CreateDirectoryW(LongPath(folder).c_str(), nullptr)) {
      const std::wstring refusal = HoldFolder(LongPath(folder), false);
      if (refusal.empty()) return folder;
      RemoveDirectoryW(LongPath(folder).c_str());
      throw PackageFault("device.folder",
                         "the package's folder is refused: " + ZLT::String::UTF16ToUTF8(refusal));
    }
    if (GetLastError() != ERROR_ALREADY_EXISTS) break;
    folder = stem + L"-" + std::to_wstring(number);
  }
  throw PackageFault("package.not-unpacked", "the package's folder cannot be created, error " +
                                                 std::to_string(GetLastError()));
}

/// A package that was there already needed no download, which takes the machine's lease.
void TakeLease(const std::wstring& cabPath) {
  const std::wstring folder = DownloadFolder();
  if (cabPath.substr(0, cabPath.find_last_of(L'\\')) != folder) return;
  std::wstring why;
  if (InstallationLease::Take(folder, why) == InstallationLease::Answer::Taken) {
    return;
  }
  throw PackageFault("device.lease",
                     "the machine's lease is not to be had: " + ZLT::String::UTF16ToUTF8(why));
}

/// @return why the package is refused, empty when it may be unpacked.
std::string Judge(const CabinetFile& cabinet) {
  const Clock::time_point begin = Clock::now();
  const SignatureFindings findings = InspectSignature(cabinet);
  std::string refusal = RefusalOfPackage(Policy(), findings);
  if (cabinet.IsToStop()) throw PackageFault("package.stopped", "the suite was told to stop");
  Event("package.judged")
      .With("file", FileSystem::getFileName(cabinet.Path()))
      .With("publisher", findings.publisher)
      .With("thumbprint", findings.thumbprint)
      .With("reason", refusal)
      .With("cause", refusal.empty() ? "" : CauseOfRefusal(findings))
      .Since(begin)
      .Write();
  return refusal;
}

std::wstring Unpack(const CabinetFile& cabinet, const std::wstring& cabPath) {
  const Clock::time_point begin = Clock::now();
  const std::uint64_t bytes = CheckMembers(ListMembers(cabinet), Settings().maxUnpackedBytes);
  // In the caller's notation, as a script's command line needs it.
  std::wstring folder = CreateFolderBeside(cabPath);
  try {
    CheckRoom(LongPath(folder), bytes);
    UnpackMembers(cabinet, LongPath(folder));
  } catch (...) {
    FileSystem::deleteDirectoryOrFile(folder, true);
    throw;
  }
  Event("package.unpacked").Since(begin).Write();
  return folder;
}

void TellFault(const char* cause, const std::exception& fault) {
  Event("package.unpacked").With("cause", cause).With("reason", fault.what()).Write();
}

}  // namespace

std::wstring ZLT::PackageExtractor::ExtractCab(const std::wstring& cabPath) try {
  TakeLease(cabPath);
  const CabinetFile cabinet(cabPath);
  const std::string refusal = Judge(cabinet);
  if (refusal.empty()) return Unpack(cabinet, cabPath);
  g_log.e(L"PackageExtractor: %s is refused: %s", cabPath.c_str(),
          String::UTF8ToUTF16(refusal).c_str());
  return {};
} catch (const PackageFault& fault) {
  TellFault(fault.cause, fault);
  throw;
} catch (const std::exception& fault) {
  TellFault("package.damaged", fault);
  throw;
}
