#pragma once

#include <json/forwards.h>
#include <windows.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "agent/ReportStatus.h"
#include "catalogue/SoftwarePackage.h"
#include "host/common/CriticalSection.h"
#include "host/common/ErrorCode.h"
#include "host/core/ZLTNotificationData.h"
#include "host/session/VRXResponse.h"

class DeviceIdAgent;
class DownloadAgent;
class RequestBody;
class Tessary;
struct DownloadProgressDetail;
struct ErrorDetails;

/// The software-delivery agent: asks the cloud service which titles the device is entitled to,
/// installs them and tells how they are. One object per process, driven by the host on threads of
/// the host's choosing.
///
/// Threads: unless an operation says otherwise it may be called from any thread, several at once,
/// and blocks its caller until it is done. Result codes are those of agent/ResultCodes.h, HTTP
/// status codes, or WinHTTP error numbers. JSON documents are jsoncpp trees with UTF-8 text. No
/// exception of the JSON library leaves an operation, except where its comment says so.
class TOLMAR_API TolmarAgent {
 public:
  /// @return the one agent, never null; owned by the library, gone when it is unloaded. The first
  /// call constructs it and runs `Initialize`: on a registered device it asks the service, with up
  /// to three retries, so it can block for many minutes while the service is down, and it may start
  /// the pre-install worker.
  static TolmarAgent* GetInstance();

  /// Called by the library when it is unloaded, not by a host. A pre-install worker that no
  /// `CleanUp` has joined ends the process here.
  ~TolmarAgent();

  TolmarAgent(const TolmarAgent&) = delete;
  TolmarAgent& operator=(const TolmarAgent&) = delete;

  /// Start-up; called by `GetInstance`. Called again, it only subscribes to the notification bus
  /// once more.
  /// @return 0, or 0xFFFFFFFF when the log could not be opened (everything else is done all the
  /// same).
  unsigned long Initialize();

  /// Shut-down: unsubscribes, ends every retry wait, cleans up the download service and joins the
  /// newest pre-install worker. The host calls it once, before it unloads the library and not on
  /// the pre-install worker itself.
  ///
  /// Cut off, whoever has asked for it: retry waits, downloads, unpacking. Of the worker also: its
  /// wait for an installer, which runs on, and its check scripts. Waited for: the worker's request
  /// that is under way, for as long as the suite lets it take. Neither: what the host's own threads
  /// have under way but for the three named first; their installers and check scripts are ended by
  /// the handle that the host passed, so it signals that too, and waits for its threads itself.
  ///
  /// It hangs when an installation has ended with 39 because of its document's shape and a worker
  /// was started meanwhile or is started after it: that worker waits for ever for its turn. A
  /// notification that is being delivered is not waited for and may start a worker behind it: a
  /// host that unloads the library first stops publishing.
  /// @throws std::system_error when the worker cannot be joined.
  void CleanUp();

  /// Sets the service address: `base` with "/mp/zlt/v2" appended. Does not block.
  /// @param base in, scheme, host and port.
  static void SetBaseUri(const std::wstring& base);

  /// Sets the realm. Does not block.
  /// @param realm in, the realm's name.
  static void SetRealm(const std::wstring& realm);

  /// Asks whether the device is entitled to any title, with up to three retries (2 s to 30 min
  /// apart), and publishes the answer in the registry
  /// (`HKEY_LOCAL_MACHINE\Software\Corvan\ZLT\Entitlement`, "Entitled").
  /// @param hasEntitlement out, 1 or 0; untouched when no reply could be read.
  /// @return 0; 62 when the device is not registered; 11 (the request could not be made), 29, 34,
  /// 39, an HTTP status or a WinHTTP error number.
  unsigned long HasEntitledSoftware(unsigned char& hasEntitlement);

  /// Asks for the entitled titles, retried as above.
  /// @param reply out, the service's answer: an object with the array "swList"; untouched when no
  /// reply could be read.
  /// @return 0; 11, 30, 35, 39, an HTTP status or a WinHTTP error number.
  unsigned long GetEntitledSoftware(Json::Value& reply);

  /// Finds out for every title of the list whether it is installed, by the modules' check scripts,
  /// one thread a title.
  /// @param entitled in and out, an object with "swList" as `GetEntitledSoftware` gives it; each
  /// element gets "status" ("installed", "not installed", or "UnKnown" for a title left out) and
  /// "progress" ("0"). Not to be touched by others meanwhile.
  /// @param handle in, an event that ends running check scripts (their titles then count as not
  /// installed); the agent keeps it as the newest caller handle, so it must stay open while
  /// anything is under way.
  /// @param preinstallOnly in, true: titles that are not for device set-up are left out.
  /// @return 0; 39 when the document has the wrong shape or a thread could not be started.
  unsigned long GetEntitledSoftwareStatus(Json::Value& entitled, void* handle, bool preinstallOnly);

  /// Checks one title of the list; what a thread of `GetEntitledSoftwareStatus` runs.
  /// @param entitled in and out, as above; null: nothing happens. @param handle in, as above.
  /// @param index in, position in "swList", from 0. @param preinstallOnly in, as above.
  void GetEntitledSoftwareStatusThreadRtn(Json::Value* entitled, void* handle, int index,
                                          bool preinstallOnly);

  /// Downloads and installs every title of the list, one after the other; calls wait for each
  /// other.
  /// @param document in and out, an object with "swList"; each title taken up gets "progress" ("0")
  /// and "status" ("installed" or "not installed"), a title whose file list was not to be had gets
  /// nothing.
  /// @param cancelHandle in, an event: signalled, it stops downloads and the waiting for
  /// installers. With null no download gets past its first progress event.
  /// @param preinstallOnly in, true: only titles with "preinstallSw".
  /// @return code of the last step taken: 0; 11, 31, 36, 39, an HTTP status or a WinHTTP error
  /// number of a file-list query; 47, 48; 0xFFFFFFFF for a title without modules or whose first
  /// download failed. After 39 because of the document's shape no installation can run any more in
  /// this process from another thread.
  unsigned long InstallEntitledSoftware(Json::Value& document, HANDLE cancelHandle,
                                        bool preinstallOnly);

  /// Tells how the title that is being installed (or was last) is getting on. Does not block on the
  /// network.
  /// @param status in and out, an object with "swList"; the first element with that title's
  /// "l1FruPn" gets "status" and "progress" (percent as text); otherwise the document stays as it
  /// was.
  /// @return 0; 0xFFFFFFFF when no element matches; 39 when the document has the wrong shape.
  DWORD GetInstallEntitledSoftwareStatus(Json::Value& status);

  /// Asks for the files of one module, retried as the other queries.
  /// @param reply out, the service's answer: an object with the array "fileList"; untouched when
  /// the service could not be reached or its reply was no JSON.
  /// @param l1FruPn in, the title's part number. @param moduleFruPn in, the module's part number.
  /// @return 0; 11, 31, 36, 39, an HTTP status or a WinHTTP error number.
  unsigned long GetDownloadFiles(Json::Value& reply, std::wstring l1FruPn,
                                 std::wstring moduleFruPn);

  /// Sends one download report; never retried.
  /// @param swFru in, the title's part number. @param moduleFru in, the module's part number.
  /// @param action in, a `DownloadStatus`. @param message in, for people; may be empty.
  /// @param filename in, the file that the report is about. @param fileUrl in, sent nowhere.
  /// @param progress in, percent. @param custDeviceDate in, the device's local time as text.
  /// Texts go into the request as they stand, see service/RequestBody.h: a quote makes it one that
  /// the service refuses.
  /// @return 0; 11, 32, 37 (the service refused it), 39 (the reply is no JSON).
  /// @throws the JSON library's exception when the reply is JSON of the wrong shape.
  DWORD ReportDownloadProgress(std::wstring swFru, std::wstring moduleFru, int action,
                               std::wstring message, std::wstring filename, std::wstring fileUrl,
                               int progress, std::wstring custDeviceDate);

  /// Sends one install report; never retried.
  /// @param swFru in, as above. @param moduleFru in, as above. @param action in, an
  /// `InstallStatus`. @param message in, as above. @param custDeviceDate in, as above.
  /// @return 0; 11, 33, 38 (the service refused it), 39 (the reply is no JSON).
  /// @throws the JSON library's exception when the reply is JSON of the wrong shape.
  DWORD ReportInstallProgress(std::wstring swFru, std::wstring moduleFru, int action,
                              std::wstring message, std::wstring custDeviceDate);

  /// Callback of the notification bus. On DEVICE_CONFIGURE (topic 4, event state 15) at a changed
  /// endpoint it asks the service again and may start the pre-install worker; blocks the bus's
  /// thread meanwhile.
  /// @param data in, the notification.
  void OnZLTNotification(ZLTNotificationData& data);

 private:
  friend class AgentFixture;  ///< gives every test a fresh agent and resets the statics

  struct Query;  ///< one of the three retried requests, see agent/Query.h
  struct RequestKind;
  using FileMap = std::map<std::wstring, std::wstring>;

  TolmarAgent();

  // agent/: lifecycle, endpoint, pre-install
  void OpenServices();
  void ReadIdentity();
  bool AdoptEndpoint();
  bool AdoptEndpointIfUnasked();
  static bool AdoptRealm();
  void AskAtStartUp(bool endpointChanged);
  bool IsRegistered() const;
  static std::wstring CurrentServerUrl();
  static std::wstring CurrentRealm();
  void HandleDeviceConfigure();
  void InstallPreinstallSoftware();
  void PreinstallSoftwareThrdRtn();
  void InstallMissingPreinstallTitles(Json::Value& entitled);
  void SetRegistryEntitlementFlag(unsigned char entitled);
  bool CheckTitle(Json::Value& entitled, int index, bool preinstallOnly, void* handle,
                  SoftwarePackage& package);
  bool AreModulesInstalled(const Json::Value& moduleList, SoftwarePackage& package, void* handle);

  // service/: framing, requests, retries, parsers
  std::wstring GetJwtFromServer();
  static std::wstring HeaderBlock(const std::wstring& token);
  VRXResponse SendRequest(const RequestKind& kind, const std::function<void(RequestBody&)>& fill);
  unsigned long Exchange(const RequestKind& kind, const std::wstring& body, VRXResponse& response);
  VRXResponse RequestHasEntitlement();
  VRXResponse RequestEntitlement();
  VRXResponse RequestDownload(std::wstring l1FruPn, std::wstring moduleFruPn);
  VRXResponse RequestDownloadProgress(std::wstring l1FruPn, std::wstring moduleFruPn, int action,
                                      std::wstring message, std::wstring fileName,
                                      std::wstring unused, int progress,
                                      std::wstring custDeviceDate);
  VRXResponse RequestInstallProgress(std::wstring l1FruPn, std::wstring moduleFruPn, int action,
                                     std::wstring message, std::wstring custDeviceDate);
  bool shouldRetry(const unsigned long& code);
  unsigned long RunRetryLoop(const Query& query, VRXResponse response);
  bool WaitBeforeRetry(const Query& query, unsigned long answered, unsigned long lastCode,
                       int& retries);
  bool ParseHasEntitlementResponseForRetry(unsigned char& hasEntitlement, unsigned long& retCode,
                                           VRXResponse response);
  bool ParseEntitledSoftwareResponseForRetry(Json::Value& result, unsigned long& retCode,
                                             VRXResponse response);
  bool ParseDownloadFilesResponseForRetry(Json::Value& result, unsigned long& retCode,
                                          VRXResponse response);

  // install/: orchestration, package, module, check scripts
  unsigned long InstallTitle(Json::Value& title, SoftwarePackage& package, HANDLE cancelHandle);
  unsigned long FetchModules(const Json::Value& moduleList, SoftwarePackage& package,
                             HANDLE cancelHandle, unsigned long before);
  unsigned long DownloadNInstallSoftwarePackage(SoftwarePackage& package, HANDLE cancelHandle);
  bool DownloadNInstallModule(SoftwareModule& module, HANDLE cancelHandle, unsigned long& result);
  bool DownloadMissingFiles(SoftwareModule& module, const FileMap& missing, HANDLE cancelHandle);
  void EnsureDownloadAgent();
  ZLT::ErrorCode InstallModule(std::wstring cabPath, std::wstring checkScriptPath,
                               HANDLE cancelHandle);
  bool RunInstaller(const std::wstring& folder, HANDLE cancelHandle);
  void AbandonInstallation();
  ZLT::ErrorCode CheckInstallation(const std::wstring& checkScriptPath, HANDLE cancelHandle);
  void ReportInstall(InstallStatus status, int progress);
  unsigned long GetModuleFileListNInstallationStatus(SoftwareModule& module, bool checkInstallState,
                                                     HANDLE cancelHandle);
  void RunCheckScript(SoftwareModule& module, const ModuleFile& script, HANDLE cancelHandle);

  // progress/: download callbacks, reports, current-install records
  void OnDownloadComplete(std::wstring jobName, GUID jobId, bool success);
  bool OnFileDownloadProgress(std::wstring jobName, DownloadProgressDetail& total,
                              std::vector<DownloadProgressDetail>& perFile);
  void OnFileDownloadError(FileMap& files, ErrorDetails& error, bool& resumed);
  bool FillCurrentStatus(Json::Value& status);
  bool RenewAddress(const std::wstring& fileName, FileMap& files);
  bool IsStopRequested();
  bool DoesItNeedToReportProgressNow();
  void ReportDownloadProgressInternal(SoftwareModule& module, DownloadStatus status, int progress,
                                      std::wstring message);
  void ReportInstallProgressInternal(SoftwareModule& module, InstallStatus status, int progress,
                                     std::wstring message);
  SoftwarePackage GetCurrentInstallingSoftware();
  SoftwareModule GetCurrentInstallingModule();
  void SetCurrentInstallingSoftware(SoftwarePackage& software);
  void SetCurrentInstallingModule(SoftwareModule& module);
  void SetCurrentInstallingSoftwareStatus(const wchar_t* status);

  static std::wstring _serverUrl;
  static std::wstring _realm;
  static std::atomic<DownloadAgent*>
      m_pDownloadAgent;  ///< not owned; null until the first download

  Tessary* m_pTokenBroker = nullptr;          ///< not owned
  DeviceIdAgent* m_pDeviceIdAgent = nullptr;  ///< not owned
  unsigned char _deviceIdBytes[32] = {};
  std::uint32_t _deviceIdLength = sizeof(_deviceIdBytes);
  std::wstring _deviceId;
  std::wstring _subscriptionId;
  SoftwarePackage _currentSoftware;
  SoftwareModule _currentModule;
  HANDLE _hStopEvent = nullptr;
  std::atomic<void*> _callerHandle{nullptr};
  CriticalSection _downloadAgentLock;              ///< taken before the state lock, never after it
  CriticalSection _stateLock;                      ///< guards the two current-installing records
  std::atomic<bool> _ignoreDownloadEvents{false};  ///< nothing in the agent sets it
  std::atomic<std::int64_t> _lastReportTime{0};
  std::atomic<bool> _entitlementKnown{false};
  std::atomic<bool> _hasPreinstallSw{false};
  std::atomic<std::thread*> m_pPreinstallThread{nullptr};
  std::atomic<int> _currentProgress{
      0};  ///< percentage of `_currentSoftware`, written without the lock
};
