#include "bench/micro/QuietHost.h"

#include <ctime>
#include <mutex>
#include <sstream>

#include "host/common/ApiUtility.h"
#include "host/common/CriticalSection.h"
#include "host/common/DateTime.h"
#include "host/common/EpUrlProvider.h"
#include "host/common/FileSystem.h"
#include "host/common/HttpRequest.h"
#include "host/common/PackageExtractor.h"
#include "host/common/ProcessWrap.h"
#include "host/common/RegUtil.h"
#include "host/common/Utility.h"
#include "host/core/DeviceIdAgent.h"
#include "host/core/ZLTPublisherSubscriber.h"
#include "host/session/Tessary.h"
#include "reference_host/Startup.h"

QuietHost& Quiet() {
  static QuietHost& host = *new QuietHost;  // never destroyed: the agent's static objects use it
  return host;
}

// Locks, time, waits and log.

struct CriticalSection::State : std::recursive_mutex {};

CriticalSection::CriticalSection() : m_pState(new State) {}
CriticalSection::~CriticalSection() { delete m_pState; }
void CriticalSection::EnterLock() { m_pState->lock(); }
void CriticalSection::ExitLock() { m_pState->unlock(); }

std::int64_t DateTimeUtility::GetCurrentDatetime() { return std::time(nullptr); }

double DateTimeUtility::CompareDateTime(std::int64_t later, std::int64_t earlier) {
  return static_cast<double>(later - earlier);
}

namespace ZLT {

std::wstring System::GetTime() { return L"2026-01-01 12:00:00"; }

unsigned int ApiUtility::GetSleepDurationInMillis(const int&, const int& minSeconds, const int&) {
  ++Quiet().waits;
  return static_cast<unsigned int>(1000 * minSeconds);
}

Log g_log;
Log::Log() : m_pState(nullptr) {}
Log::~Log() {}
void Log::d(const wchar_t*, ...) {}
void Log::e(const wchar_t*, ...) {}

// Files, processes and registry.

bool utility::InitLog(Log&, const wchar_t*, int) { return true; }
std::wstring utility::GetZltKivDownloadPath() { return L"C:\\kiv"; }
std::wstring utility::GetSystemDirectoryW() { return L"C:\\sys"; }
std::wstring PackageExtractor::ExtractCab(const std::wstring&) { return {}; }

int ProcessWrap::CreateProcessInUserSession(const std::wstring&, const std::wstring&, HANDLE&,
                                            bool) {
  return 0;
}

int ProcessWrap::LaunchApplicationAndCheckExitCode(const std::wstring&, const std::wstring&, bool,
                                                   HANDLE) {
  return 0;
}

}  // namespace ZLT

bool FileSystem::createDirectory(const std::wstring&, bool) { return true; }
bool FileSystem::fileExists(const std::wstring&) { return false; }
bool FileSystem::deleteDirectoryOrFile(const std::wstring&, bool) { return true; }
std::wstring FileSystem::getFileName(const std::wstring& path) { return path; }

int CRegUtil::CreateKey(HKEY, const std::wstring&) { return 1; }
int CRegUtil::SetKeyValueInt(HKEY, const std::wstring&, const std::wstring&, unsigned int) {
  return 1;
}

// Start, bus, identity, endpoint and session.

namespace refhost {
bool Start(std::wstring&) { return true; }
bool StartFromFile(const std::wstring&, std::wstring&) { return true; }
bool StartFromText(const std::string&, std::wstring&) { return true; }
}  // namespace refhost

ZLTPublisherSubscriber::ZLTPublisherSubscriber() : m_pState(nullptr) {}
ZLTPublisherSubscriber::~ZLTPublisherSubscriber() {}
ZLTPublisherSubscriber* ZLTPublisherSubscriber::GetInstance() {
  static ZLTPublisherSubscriber bus;
  return &bus;
}
std::wstring ZLTPublisherSubscriber::Subscribe(Callback, bool) { return L"subscription"; }
void ZLTPublisherSubscriber::Unsubscribe(const std::wstring&) {}
bool ZLTPublisherSubscriber::Publish(const ZLTNotificationData&, unsigned int) { return true; }

DeviceIdentityService* DeviceIdentityService::GetInstance() { return nullptr; }
DeviceIdAgent* DeviceIdAgent::GetInstance(DeviceIdentityService*) {
  static DeviceIdAgent agent;
  return &agent;
}
unsigned long DeviceIdAgent::GetDeviceID(std::wstring& text) {
  text = L"3f2b8c1e-7d44-4f0a-9a55-0c6f1d2e3b4a";
  return 0;
}
unsigned long DeviceIdAgent::GetDeviceID(unsigned char*, std::uint32_t*, unsigned int) { return 0; }

EpUrlProvider* EpUrlProvider::GetInstance() {
  static EpUrlProvider provider;
  return &provider;
}
bool EpUrlProvider::GetBaseUrl(std::wstring& url) { return !(url = L"https://cloud").empty(); }
bool EpUrlProvider::GetRealm(std::wstring& realm) { return !(realm = L"realm").empty(); }

Tessary* Tessary::GetInstance() {
  static Tessary broker;
  return &broker;
}
int Tessary::IsRegistered() { return 0; }
std::wstring Tessary::GetCurrentToken(const std::wstring&) { return L"session"; }
unsigned long Tessary::GetJwtFromServer(std::string, std::string& jwt) {
  jwt = "jwt";
  return 0;
}

// Exchanges and downloads.

const ZLT::HttpTimeouts ZLT::HttpTimeouts::DEFAULT{1, 1, 1, 1};

namespace ZLT {

struct HttpRequest::State {
  std::stringstream stream{Quiet().reply};
};

HttpRequest::HttpRequest(const wchar_t*, const wchar_t*, const wchar_t*, HttpTimeouts)
    : m_pState(new State) {}
HttpRequest::~HttpRequest() { delete m_pState; }
bool HttpRequest::doPost(const char*, unsigned long, const wchar_t*) { return true; }
unsigned long HttpRequest::getStatusCode() const { return Quiet().status; }
unsigned long HttpRequest::getStreamLength() const {
  return static_cast<unsigned long>(Quiet().reply.size());
}
std::stringstream& HttpRequest::getStream() { return m_pState->stream; }
bool HttpRequest::DownloadFile(const std::wstring&, const std::wstring&, const std::wstring&) {
  return false;
}

}  // namespace ZLT

DownloadAgent::DownloadAgent() : m_pState(nullptr) {}
DownloadAgent::~DownloadAgent() {}
DownloadAgent* DownloadAgent::GetInstance(std::wstring, CompleteCallback,
                                          ProgressCallback onProgress, ErrorCallback) {
  static DownloadAgent agent;
  Quiet().onProgress = std::move(onProgress);
  return &agent;
}
bool DownloadAgent::DownloadFiles(std::wstring, bool, FileMap, std::wstring, GUID&, HANDLE, long) {
  if (Quiet().onDownload) Quiet().onDownload();
  return false;
}
bool DownloadAgent::ResumeDownload(std::wstring, FileMap) { return false; }
void DownloadAgent::CleanUp() {}
