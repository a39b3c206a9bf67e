#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "reference_host/configuration/MaintenanceWindow.h"

namespace refhost {

/// Where installers run when the host is a service.
enum class InstallerSession { User, Service };

/// Which of the missing titles the service installs by itself.
enum class ServiceInstalls { All, Preinstall, None };

/// The suite's configuration. Texts are UTF-8 as in the file, folders wide. `Keys.h` has the keys.
struct Configuration {
  std::string baseUrl;
  std::string realm;
  std::string deviceId;
  std::string sessionToken;
  std::string tokenUrl;
  std::wstring proxy;                          ///< host and port; empty: the machine's settings
  std::wstring downloadFolder;                 ///< no trailing backslash; Folders.h has the default
  std::wstring logFolder;                      ///< no trailing backslash; Folders.h has the default
  std::vector<std::string> trustedPublishers;  ///< SHA-256 thumbprints, 64 lower-case hex digits
  bool registered = true;
  bool requireSignedPackages = true;
  unsigned int processTimeoutSeconds = 600;      ///< for programs that are run to their end
  unsigned int maxCheckScripts = 0;              ///< at once; 0: as many as processors
  unsigned int cancelledCheckGraceSeconds = 10;  ///< for a check that begins after the cancel event
  unsigned int installerTimeoutSeconds = 7200;   ///< for installers
  InstallerSession installerSession = InstallerSession::User;
  unsigned int leaseWaitSeconds = 600;         ///< for another process's installation
  unsigned int requestTimeoutSeconds = 30;     ///< for each step of a request to the service
  unsigned int downloadStallSeconds = 60;      ///< a download without a byte for so long has failed
  unsigned int downloadPatienceSeconds = 600;  ///< how long a download waits for better times
  unsigned int fileInUseSeconds = 10;          ///< how long a file that others hold is waited for
  std::uint64_t maxFileBytes = 4ull << 30;     ///< what one downloaded file may come to
  std::uint64_t maxUnpackedBytes = 4ull << 30;  ///< what one package may unpack to
  unsigned int logMaxBytes = 4u << 20;          ///< a log of this size is rotated
  double retryWaitScale = 1.0;                  ///< test labs only: shortens every retry wait

  // What the service goes by; other hosts do not.
  std::vector<MaintenanceWindow> maintenanceWindows;  ///< when installers may start; empty: always
  std::vector<std::string> deferWhileRunning;         ///< names of programs
  bool downloadOutsideWindows = false;
  ServiceInstalls serviceInstalls = ServiceInstalls::All;
  unsigned int pollSeconds = 4 * 60 * 60;    ///< from one run to the next, at the least
  unsigned int pollSpreadSeconds = 30 * 60;  ///< up to so many more, at random
  unsigned int deferSeconds = 300;           ///< then it is looked whether they run still
  unsigned int titleAttempts = 3;            ///< at a failing title, per version of its list
  unsigned int titlePauseSeconds = 60 * 60;  ///< behind the first failure; four times behind each
};

}  // namespace refhost
