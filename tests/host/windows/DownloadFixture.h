#pragma once

#include <gtest/gtest.h>

#include "tests/host/windows/LoopbackServer.h"
// Behind the sockets' header, which must bring windows.h.
#include <bits.h>

#include <algorithm>
#include <atomic>
#include <stdexcept>

#include "host/common/DownloadAgent.h"
#include "host/common/FileSystem.h"
#include "host/common/Utility.h"

using Clock = std::chrono::steady_clock;

constexpr GUID NoJob{};

inline std::wstring InFolder(const std::wstring& name) {
  return ZLT::utility::GetZltKivDownloadPath() + L"\\" + name;
}

/// @return where a file is while it is not known to be whole.
inline std::wstring Arriving(const std::wstring& name) {
  return ZLT::utility::GetZltKivDownloadPath() + L".arriving\\" + name + L".part";
}

inline std::string Body(std::size_t size) {
  std::string body(size, '\0');
  for (std::size_t i = 0; i < size; ++i) body[i] = static_cast<char>(i * 7 + i / 251);
  return body;
}

/// One job of its own name, and all that its callbacks were told.
class Download {
 public:
  Download() {
    static int number = 0;
    name = L"TestJob" + std::to_wstring(++number);
    FileSystem::deleteDirectoryOrFile(ZLT::utility::GetZltKivDownloadPath(), true);
    FileSystem::createDirectory(ZLT::utility::GetZltKivDownloadPath(), false);
    agent = DownloadAgent::GetInstance(
        name,
        [this](std::wstring, GUID jobId, bool success, DownloadAgent::FileMap& files) {
          completions.push_back(success);
          completedId = jobId;
          completedFiles = files;
          if (throwing) throw std::runtime_error("completion");
        },
        [this](std::wstring, DownloadProgressDetail& total,
               std::vector<DownloadProgressDetail>& each) {
          progress.push_back(total);
          filesInProgress = each.size();
          if (onProgress) onProgress();
          if (throwing) throw std::runtime_error("progress");
          return goOn;
        },
        [this](DownloadAgent::FileMap& files, ErrorDetails& error, bool& resumed) {
          errors.push_back(error);
          failing = files;
          resumed = !renewal.empty() && agent->ResumeDownload(name, renewal);
          if (throwing) throw std::runtime_error("error");
        });
  }
  ~Download() { CloseHandle(cancel); }

  bool Run(const DownloadAgent::FileMap& files) {
    return agent->DownloadFiles(name, false, files, L"X-Kind: test\r\ntoken: secret", id, cancel,
                                1);
  }

  std::wstring name;
  DownloadAgent* agent;
  const HANDLE cancel = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  GUID id = NoJob;
  bool goOn = true;
  bool throwing = false;
  std::function<void()> onProgress;
  DownloadAgent::FileMap renewal;
  std::vector<bool> completions;
  GUID completedId = NoJob;
  DownloadAgent::FileMap completedFiles;
  std::vector<DownloadProgressDetail> progress;
  std::size_t filesInProgress = 0;
  std::vector<ErrorDetails> errors;
  DownloadAgent::FileMap failing;
};

/// What the server has, by path. @param get in, the number of the GET that this is, 0 for a HEAD.
inline HttpAnswer AnswerFor(const std::string& path, int get) {
  if (path == "/whole" || path == "/renewed") return {.body = Body(100000)};
  if (path == "/other") return {.body = Body(3000)};
  if (path == "/empty") return {};
  if (path == "/unannounced") return {.body = Body(5000), .unannounced = true};
  if (path == "/expired") return {.status = 403};
  if (path == "/cut") return {.body = Body(500), .announced = 100000};
  if (path == "/busy") return get == 1 ? HttpAnswer{.status = 503} : AnswerFor("/whole", get);
  if (path == "/page") return {.status = get == 1 ? 403 : 200, .body = Body(get == 1 ? 50 : 6000)};
  if (path == "/overloaded") {
    return get != 0 && get <= 4 ? HttpAnswer{.status = 503} : AnswerFor("/whole", get);
  }
  if (path == "/ranges" || path == "/noranges") {
    HttpAnswer answer = AnswerFor(path == "/ranges" ? "/whole" : "/empty", get);
    answer.ranges = true;
    return get == 0 ? HttpAnswer{.status = 403} : answer;
  }
  if (path == "/getonly") return get == 0 ? HttpAnswer{.status = 403} : AnswerFor("/whole", get);
  if (path == "/gone") return get == 0 ? AnswerFor("/other", get) : HttpAnswer{.status = 404};
  if (path == "/moved") return {.status = 302};
  if (path == "/large") return {.announced = 1 << 20};
  if (path == "/huge") return {.announced = std::size_t{1} << 50};
  if (path == "/endless") return {.body = Body(300000), .unannounced = true};
  if (path == "/slow" && get != 0) return {.body = Body(100), .delay = std::chrono::seconds(30)};
  if (path == "/slow") return {.body = Body(100)};
  if (path == "/stuck") {
    return {.body = Body(500), .announced = 100000, .stall = std::chrono::seconds(30)};
  }
  if (path == "/silent") return {.delay = std::chrono::seconds(30)};
  return {.status = 404};
}

class DownloadAgentTest : public testing::Test {
 protected:
  std::wstring Url(const std::wstring& path) const { return server.Url(path + L"?sig=SECRET"); }

  std::size_t Count(const std::string& method, const std::string& path) const {
    const std::vector<HttpSeen> seen = server.Seen();
    return static_cast<std::size_t>(
        std::count_if(seen.begin(), seen.end(), [&](const HttpSeen& one) {
          return one.method == method && one.target.starts_with(path + "?");
        }));
  }

  std::size_t Gets(const std::string& path) const { return Count("GET", path); }

  void WaitFor(const std::string& method, const std::string& path) const {
    while (Count(method, path) == 0) SwitchToThread();
  }

  HttpAnswer Answer(const HttpSeen& seen) {
    const int get = seen.method == "GET" ? ++gets : 0;
    HttpAnswer answer = AnswerFor(seen.target.substr(0, seen.target.find('?')), get);
    if (seen.headers.find("\r\nRange: bytes=0-0\r\n") != std::string::npos) Cut(answer);
    if (answer.status == 302) {
      answer.headers = "Location: http://localhost:" + std::to_string(other.Port()) + "/whole\r\n";
    }
    // BITS would keep the connection, and with it this server, for half a minute.
    answer.headers += "Connection: close\r\n";
    answer.close = true;
    return answer;
  }

  /// Of a server that knows ranges ("/getonly" does not): the first byte, if there is one.
  static void Cut(HttpAnswer& answer) {
    if (!answer.ranges) return;
    const std::string size = std::to_string(answer.body.size());
    answer.status = answer.body.empty() ? 416 : 206;
    answer.headers =
        "Content-Range: bytes " + (answer.body.empty() ? "*/0" : "0-0/" + size) + "\r\n";
    answer.body.resize(std::min(answer.body.size(), std::size_t{1}));
  }

  /// Forgets what was asked before.
  void Restart() {
    gets = 0;
    server.Script([this](const HttpSeen& seen) { return Answer(seen); });
  }

  std::atomic<int> gets = 0;
  LoopbackServer other{[](const HttpSeen&) { return HttpAnswer{.body = Body(100000)}; }};
  LoopbackServer server{[this](const HttpSeen& seen) { return Answer(seen); }};
};
