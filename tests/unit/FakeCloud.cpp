// The fake host's side that faces the cloud: session, requests, downloads, identity and endpoint.

#include <stdexcept>
#include <tuple>

#include "host/common/EpUrlProvider.h"
#include "host/common/HttpRequest.h"
#include "host/core/DeviceIdAgent.h"
#include "host/session/Tessary.h"
#include "tests/unit/FakeHost.h"

Tessary* Tessary::GetInstance() {
  static Tessary broker;
  return Fake().hasBroker ? &broker : nullptr;
}

int Tessary::IsRegistered() { return Fake().registered; }

std::wstring Tessary::GetCurrentToken(const std::wstring& caller) {
  Fake().Note("session", caller);
  return Fake().Next(Fake().sessions, std::wstring(L"session"));
}

unsigned long Tessary::GetJwtFromServer(std::string sessionToken, std::string& jwt) {
  Fake().Note("jwt", sessionToken);
  const auto [code, token] = Fake().Next(Fake().exchanges, {0UL, "jwt"});
  if (!token.empty()) jwt = token;
  return code;
}

const ZLT::HttpTimeouts ZLT::HttpTimeouts::DEFAULT{1, 2, 3, 4};

namespace ZLT {

struct HttpRequest::State {
  std::string url;
  Reply reply;
  std::stringstream stream;
};

HttpRequest::HttpRequest(const wchar_t* url, const wchar_t* userAgent, const wchar_t* proxy,
                         HttpTimeouts timeouts)
    : m_pState(new State{String::UTF16ToUTF8(url), {"", 0}, {}}) {
  if (*userAgent != 0 || proxy != nullptr || timeouts.send != 3) Fake().Note("!! other options");
}

HttpRequest::~HttpRequest() { delete m_pState; }
bool HttpRequest::doPost(const char* body, unsigned long length, const wchar_t* headers) {
  const std::string text(body, length);
  Fake().Note("POST", m_pState->url, text);
  Fake().Note("with", headers);
  const std::size_t end = m_pState->url.find('?');
  const std::size_t start = m_pState->url.rfind('/', end) + 1;
  m_pState->reply = Fake().ReplyTo(m_pState->url.substr(start, end - start));
  if (m_pState->reply.body == "throw") throw std::runtime_error("scripted");
  m_pState->stream.str(m_pState->reply.body);
  return m_pState->reply.posted;
}

unsigned long HttpRequest::getStatusCode() const { return m_pState->reply.status; }
unsigned long HttpRequest::getStreamLength() const {
  return static_cast<unsigned long>(m_pState->reply.body.size());
}
std::stringstream& HttpRequest::getStream() { return m_pState->stream; }

bool HttpRequest::DownloadFile(const std::wstring& url, const std::wstring& localPath,
                               const std::wstring& headers) {
  return Fake().Note("GET", url, localPath) && Fake().Note("with", headers) && Fake().fetches;
}

}  // namespace ZLT

DownloadAgent::DownloadAgent() : m_pState(nullptr) {}
DownloadAgent::~DownloadAgent() = default;

DownloadAgent* DownloadAgent::GetInstance(std::wstring jobName, CompleteCallback onComplete,
                                          ProgressCallback onProgress, ErrorCallback onError) {
  static DownloadAgent agent;
  Fake().Note("downloads", jobName);
  std::tie(Fake().onComplete, Fake().onProgress, Fake().onError) =
      std::tie(onComplete, onProgress, onError);
  return &agent;
}

bool DownloadAgent::DownloadFiles(std::wstring jobName, bool uploads, FileMap files,
                                  std::wstring headers, GUID&, HANDLE cancelHandle, long priority) {
  Fake().Note("DOWNLOAD", jobName, uploads, cancelHandle, int(priority));
  Fake().Note("with", headers);
  for (const auto& [url, path] : files) Fake().Note("file", url, path);
  return Fake().download ? Fake().download() : true;
}

bool DownloadAgent::ResumeDownload(std::wstring jobName, FileMap files) {
  Fake().Note("resume", jobName);
  for (const auto& [name, url] : files) Fake().Note("file", name, url);
  return Fake().resumes;
}

void DownloadAgent::CleanUp() { Fake().Note("downloads-clean-up"); }

DeviceIdentityService* DeviceIdentityService::GetInstance() {
  static DeviceIdentityService service;
  return &service;
}

DeviceIdAgent* DeviceIdAgent::GetInstance(DeviceIdentityService* service) {
  static DeviceIdAgent agent;
  Fake().Note(service == DeviceIdentityService::GetInstance() ? "identity" : "!! other service");
  return &agent;
}

unsigned long DeviceIdAgent::GetDeviceID(std::wstring& text) {
  Fake().Note("device-id text");
  text = L"D-1";
  return 0;
}

unsigned long DeviceIdAgent::GetDeviceID(unsigned char*, std::uint32_t* length, unsigned int) {
  Fake().Note("device-id bytes", int(*length));
  return 0;
}

EpUrlProvider* EpUrlProvider::GetInstance() {
  static EpUrlProvider provider;
  return &provider;
}

bool EpUrlProvider::GetBaseUrl(std::wstring& url) {
  url = Fake().baseUrl;
  return Fake().Note("base-url");
}

bool EpUrlProvider::GetRealm(std::wstring& realm) {
  realm = Fake().realm;
  return Fake().Note("realm");
}
