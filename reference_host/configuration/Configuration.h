#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/Export.h"

namespace refhost {

/// The suite's configuration. Texts are UTF-8 as in the file, folders wide.
struct Configuration {
  std::string baseUrl;
  std::string realm;
  std::string deviceId;
  std::string sessionToken;
  std::string tokenUrl;
  bool registered = true;
  std::wstring proxy;           ///< host and port; empty: the machine's settings
  std::wstring downloadFolder;  ///< no trailing backslash; Folders.h has the default
  std::wstring logFolder;       ///< no trailing backslash; Folders.h has the default
  bool requireSignedPackages = true;
  std::vector<std::string> trustedPublishers;    ///< SHA-256 thumbprints, 64 lower-case hex digits
  unsigned int processTimeoutSeconds = 600;      ///< for programs that are run to their end
  unsigned int maxCheckScripts = 0;              ///< at once; 0: as many as processors
  unsigned int cancelledCheckGraceSeconds = 10;  ///< for a check that begins after the cancel event
  unsigned int installerTimeoutSeconds = 7200;   ///< for installers
  bool installersMeetUser = true;  ///< they run in the signed-in user's session, where there is one
  unsigned int leaseWaitSeconds = 600;         ///< for another process's installation
  unsigned int requestTimeoutSeconds = 30;     ///< for each step of a request to the service
  unsigned int downloadStallSeconds = 60;      ///< a download without a byte for so long has failed
  unsigned int downloadPatienceSeconds = 600;  ///< how long a download waits for better times
  unsigned int fileInUseSeconds = 10;          ///< how long a file that others hold is waited for
  std::uint64_t maxFileBytes = 4ull << 30;     ///< what one downloaded file may come to
  std::uint64_t maxUnpackedBytes = 4ull << 30;  ///< what one package may unpack to
  unsigned int logMaxBytes = 4u << 20;          ///< a log of this size is rotated
  double retryWaitScale = 1.0;                  ///< test labs only: shortens every retry wait
};

/// Reads a configuration from JSON text; portable, no file or registry is touched.
/// @param fileName in, for the error text. @param configuration out, complete on success only.
/// @return an empty text on success, else one line naming file and key.
std::string ParseConfiguration(const std::string& fileName, const std::string& json,
                               Configuration& configuration);

/// @return a configuration fit to be shown to others, as JSON text: without the session token, the
/// queries of addresses, and keys that nobody knows. A word that says so when it is not usable.
ZLT_API std::string ShareableConfiguration(const std::string& json);

/// Which file a host reads. Pure.
/// @param isService in, true: the variable is not followed, since what starts a service may pass on
/// what somebody else has set. @param variable in, what the environment names, may be empty.
/// @param machine in, what the machine's administrators have set, may be empty.
std::wstring FileToRead(bool isService, const std::wstring& variable, const std::wstring& machine);

}  // namespace refhost
