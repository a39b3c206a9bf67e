#include <gtest/gtest.h>

#include "tests/host/windows/LoopbackServer.h"
// Behind the sockets' header, which must bring windows.h.
#include <bits.h>

#include <algorithm>
#include <atomic>

#include "host/common/DownloadAgent.h"
#include "host/common/FileSystem.h"
#include "host/common/Utility.h"
#include "tests/host/windows/TestMachine.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr GUID NoJob{};

std::wstring InFolder(const std::wstring& name) {
  return ZLT::utility::GetZltKivDownloadPath() + L"\\" + name;
}

std::string Body(std::size_t size) {
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
HttpAnswer AnswerFor(const std::string& path, int get) {
  if (path == "/whole" || path == "/renewed") return {.body = Body(100000)};
  if (path == "/other") return {.body = Body(3000)};
  if (path == "/empty") return {};
  if (path == "/unannounced") return {.body = Body(5000), .unannounced = true};
  if (path == "/expired") return {.status = 403};
  if (path == "/cut") return {.body = Body(500), .announced = 100000};
  if (path == "/busy") return get == 1 ? HttpAnswer{.status = 503} : AnswerFor("/whole", get);
  if (path == "/page") return {.status = get == 1 ? 403 : 200, .body = Body(get == 1 ? 50 : 6000)};
  if (path == "/getonly") return get == 0 ? HttpAnswer{.status = 403} : AnswerFor("/whole", get);
  if (path == "/gone") return get == 0 ? AnswerFor("/other", get) : HttpAnswer{.status = 404};
  if (path == "/moved") return {.status = 302, .headers = "Location: /whole\r\n"};
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
    // BITS would keep the connection, and with it this server, for half a minute.
    answer.headers += "Connection: close\r\n";
    answer.close = true;
    return answer;
  }

  /// Forgets what was asked before.
  void Restart() {
    gets = 0;
    server.Script([this](const HttpSeen& seen) { return Answer(seen); });
  }

  std::atomic<int> gets = 0;
  LoopbackServer server{[this](const HttpSeen& seen) { return Answer(seen); }};
};

constexpr std::int32_t Http(int status) { return static_cast<std::int32_t>(0x80190000 + status); }
constexpr auto Truncated = static_cast<std::int32_t>(0x80070026);

}  // namespace

TEST_F(DownloadAgentTest, FilesArriveWholeWithTheirHeadersAndTrueTotals) {
  Download download;
  const DownloadAgent::FileMap files{{Url(L"/whole"), InFolder(L"a.cab")},
                                     {Url(L"/other"), InFolder(L"b.ps1")}};
  ASSERT_TRUE(download.Run(files));
  EXPECT_TRUE(TestMachine::ReadFile(InFolder(L"a.cab")) == Body(100000));
  EXPECT_TRUE(TestMachine::ReadFile(InFolder(L"b.ps1")) == Body(3000));
  ASSERT_FALSE(download.progress.empty());
  const DownloadProgressDetail last = download.progress.back();
  EXPECT_EQ(last.bytesTransferred, 103000U);
  EXPECT_EQ(last.bytesTotal, 103000U);
  EXPECT_EQ(last.filesTransferred, 2U);
  EXPECT_EQ(last.filesTotal, 2U);
  EXPECT_EQ(download.filesInProgress, 2U);
  EXPECT_EQ(download.completions, std::vector<bool>{true});
  EXPECT_EQ(download.completedFiles, files);
  EXPECT_TRUE(IsEqualGUID(download.completedId, download.id));
  EXPECT_FALSE(IsEqualGUID(download.id, NoJob));
  for (const HttpSeen& seen : server.Seen()) {
    EXPECT_NE(seen.headers.find("\r\ntoken: secret\r\n"), std::string::npos) << seen.target;
    EXPECT_NE(seen.headers.find("\r\nX-Kind: test\r\n"), std::string::npos) << seen.target;
  }
}

TEST_F(DownloadAgentTest, FailuresAreRetriedRenewedOrTold) {
  using Errors = std::vector<std::pair<std::int32_t, std::int32_t>>;
  const struct {
    const char* name;
    std::wstring path;
    std::wstring renewal;  ///< new URL of the file, empty for none
    bool success;
    Errors errors;     ///< context and code of each error callback
    std::size_t gets;  ///< of the first address
    std::size_t size;
  } rows[] = {
      {"no bytes", L"/empty", L"", true, {}, 1, 0},
      {"length not announced", L"/unannounced", L"", true, {}, 1, 5000},
      {"overloaded once", L"/busy", L"", true, {}, 2, 100000},
      {"an error page instead", L"/page", L"", true, {}, 2, 6000},
      {"answers no HEAD", L"/getonly", L"", true, {}, 2, 100000},
      {"moved", L"/moved", L"", false, {{5, Http(302)}}, 0, 0},
      {"missing", L"/missing", L"", false, {{5, Http(404)}}, 1, 0},
      {"expired", L"/expired", L"", false, {{5, Http(403)}}, 1, 0},
      {"renewed", L"/expired", Url(L"/renewed"), true, {{5, Http(403)}}, 1, 100000},
      {"renewed for ever", L"/expired", Url(L"/expired"), false, Errors(4, {5, Http(403)}), 4, 0},
      {"renewed elsewhere",
       L"/expired",
       L"http://example.invalid/renewed",
       false,
       {{5, Http(403)}},
       1,
       0},
      {"cut off for ever", L"/cut", L"", false, {{6, Truncated}}, 3, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Restart();
    Download download;
    if (!row.renewal.empty()) download.renewal[L"a.cab"] = row.renewal;
    EXPECT_EQ(download.Run({{Url(row.path), InFolder(L"a.cab")}}), row.success);
    Errors errors;
    for (const auto& error : download.errors) {
      errors.emplace_back(error.errorContext, error.errorCode);
      EXPECT_FALSE(error.errorDescription.empty());
    }
    EXPECT_EQ(errors, row.errors);
    EXPECT_EQ(download.completions, std::vector<bool>{row.success});
    const std::string path(row.path.begin(), row.path.end());
    EXPECT_EQ(Gets(path), row.gets);
    EXPECT_EQ(FileSystem::fileExists(InFolder(L"a.cab")), row.success);
    EXPECT_EQ(TestMachine::ReadFile(InFolder(L"a.cab")).size(), row.size);
    EXPECT_FALSE(FileSystem::fileExists(InFolder(L"a.cab.part")));
  }
  EXPECT_EQ(TestMachine::ReadLog(L"ZLT.log").find("SECRET"), std::string::npos);
}

TEST_F(DownloadAgentTest, ARenewalKeepsTheFilesThatAreThere) {
  Download download;
  download.renewal[L"b.ps1"] = Url(L"/other");
  ASSERT_TRUE(
      download.Run({{Url(L"/gone"), InFolder(L"b.ps1")}, {Url(L"/whole"), InFolder(L"a.cab")}}));
  ASSERT_EQ(download.errors.size(), 1U);
  EXPECT_EQ(download.errors[0].errorContext, BG_ERROR_CONTEXT_REMOTE_FILE);
  EXPECT_EQ(download.failing, (DownloadAgent::FileMap{{Url(L"/gone"), InFolder(L"b.ps1")}}));
  EXPECT_EQ(download.completedFiles,
            (DownloadAgent::FileMap{{Url(L"/other"), InFolder(L"b.ps1")},
                                    {Url(L"/whole"), InFolder(L"a.cab")}}));
  EXPECT_EQ(Gets("/whole"), 1U);
  EXPECT_EQ(TestMachine::ReadFile(InFolder(L"a.cab")).size(), 100000U);
  EXPECT_EQ(TestMachine::ReadFile(InFolder(L"b.ps1")).size(), 3000U);
  EXPECT_FALSE(download.agent->ResumeDownload(download.name, download.renewal));
}

TEST_F(DownloadAgentTest, AFileInUseIsNotReplaced) {
  Download download;
  TestMachine::WriteFile(InFolder(L"a.cab"), "in use");
  const HANDLE user = CreateFileW(InFolder(L"a.cab").c_str(), GENERIC_READ, FILE_SHARE_READ,
                                  nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  EXPECT_FALSE(download.Run({{Url(L"/whole"), InFolder(L"a.cab")}}));
  CloseHandle(user);
  ASSERT_EQ(download.errors.size(), 1U);
  EXPECT_EQ(download.errors[0].errorContext, BG_ERROR_CONTEXT_LOCAL_FILE);
  EXPECT_EQ(TestMachine::ReadFile(InFolder(L"a.cab")), "in use");
  EXPECT_FALSE(FileSystem::fileExists(InFolder(L"a.cab.part")));
}

TEST_F(DownloadAgentTest, NobodyListeningIsAFailureOfTheTransport) {
  Download download;
  const std::wstring url = L"http://localhost:" + std::to_wstring(UnusedPort()) + L"/a";
  EXPECT_FALSE(download.Run({{url, InFolder(L"a.cab")}}));
  ASSERT_EQ(download.errors.size(), 1U);
  EXPECT_EQ(download.errors[0].errorContext, BG_ERROR_CONTEXT_GENERAL_TRANSPORT);
  EXPECT_EQ(download.errors[0].errorCode, HRESULT_FROM_WIN32(12029));
}

TEST_F(DownloadAgentTest, WhatMayNotBeDownloadedMakesNoJob) {
  const struct {
    const char* name;
    DownloadAgent::FileMap files;
  } rows[] = {
      {"plain http", {{L"http://192.0.2.1/a", InFolder(L"a")}}},
      {"other scheme", {{L"file:///C:/a", InFolder(L"a")}}},
      {"elsewhere", {{Url(L"/whole"), L"C:\\windows\\a"}}},
      {"the folder itself", {{Url(L"/whole"), InFolder(L"")}}},
      {"folder's name prolonged",
       {{Url(L"/whole"), ZLT::utility::GetZltKivDownloadPath() + L"x\\a"}}},
      {"out of the folder", {{Url(L"/whole"), InFolder(L"..\\a")}}},
      {"device", {{Url(L"/whole"), InFolder(L"nul.cab")}}},
      {"stream", {{Url(L"/whole"), InFolder(L"a.cab:b")}}},
      {"same place twice", {{Url(L"/other"), InFolder(L"a")}, {Url(L"/whole"), InFolder(L"A")}}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Download download;
    EXPECT_FALSE(download.Run(row.files));
    EXPECT_TRUE(IsEqualGUID(download.id, NoJob));
    EXPECT_TRUE(download.completions.empty());
  }
  EXPECT_TRUE(server.Seen().empty());
}

TEST_F(DownloadAgentTest, StopsAtOnceWhoeverAsksForIt) {
  using Ask = void (*)(Download&);
  const Ask cancel = [](Download& download) { SetEvent(download.cancel); };
  const Ask cleanUp = [](Download& download) { download.agent->CleanUp(); };
  const struct {
    const char* name;
    std::string path;
    std::string method;  ///< of the request under way
    Ask ask;
  } rows[] = {{"cancel handle, transfer", "/slow", "GET", cancel},
              {"cancel handle, question before it", "/silent", "HEAD", cancel},
              {"end of the service", "/slow", "GET", cleanUp},
              // Last: where cancelling waits for the server, the queue does too.
              {"cancel handle, server fallen silent", "/stuck", "GET", cancel}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Restart();
    Download download;
    Clock::time_point asked;
    std::thread asking([&] {
      WaitFor(row.method, row.path);
      asked = Clock::now();
      row.ask(download);
    });
    EXPECT_FALSE(
        download.Run({{Url(std::wstring(row.path.begin(), row.path.end())), InFolder(L"a.cab")}}));
    const auto ended = Clock::now();
    asking.join();
    EXPECT_LT(ended - asked, std::chrono::milliseconds(500));
    EXPECT_EQ(download.completions, std::vector<bool>{false});
    EXPECT_TRUE(download.errors.empty());
  }
}

TEST_F(DownloadAgentTest, AfterItsEndTheServiceDownloadsNothing) {
  Download download;
  download.agent->CleanUp();
  EXPECT_FALSE(download.Run({{Url(L"/whole"), InFolder(L"a.cab")}}));
  EXPECT_TRUE(server.Seen().empty());
}

TEST_F(DownloadAgentTest, TheOwnerStopsTheJobThroughItsProgress) {
  Download download;
  download.goOn = false;
  EXPECT_FALSE(download.Run({{Url(L"/slow"), InFolder(L"a.cab")}}));
  EXPECT_EQ(download.progress.size(), 1U);
  EXPECT_EQ(download.completions, std::vector<bool>{false});
}

TEST_F(DownloadAgentTest, WhatCallbacksThrowStaysWithThem) {
  Download whole, expired;
  whole.throwing = expired.throwing = true;
  expired.renewal[L"a.cab"] = Url(L"/renewed");
  EXPECT_TRUE(whole.Run({{Url(L"/whole"), InFolder(L"a.cab")}}));
  EXPECT_FALSE(expired.Run({{Url(L"/expired"), InFolder(L"a.cab")}}));
  EXPECT_EQ(expired.completions, std::vector<bool>{false});
}

TEST_F(DownloadAgentTest, AJobThatADeadProcessHasLeftIsOutOfTheWay) {
  Download download;
  CoInitializeEx(nullptr, COINIT_MULTITHREADED);
  IBackgroundCopyManager* manager = nullptr;
  ASSERT_EQ(CoCreateInstance(CLSID_BackgroundCopyManager, nullptr, CLSCTX_LOCAL_SERVER,
                             IID_IBackgroundCopyManager, reinterpret_cast<void**>(&manager)),
            S_OK);
  IBackgroundCopyJob* orphan = nullptr;
  GUID id;
  ASSERT_EQ(manager->CreateJob(download.name.c_str(), BG_JOB_TYPE_DOWNLOAD, &id, &orphan), S_OK);
  ASSERT_EQ(orphan->AddFile(Url(L"/slow").c_str(), InFolder(L"a.cab").c_str()), S_OK);
  ASSERT_EQ(orphan->Resume(), S_OK);
  WaitFor("GET", "/slow");
  EXPECT_TRUE(download.Run({{Url(L"/whole"), InFolder(L"a.cab")}}));
  BG_JOB_STATE state;
  EXPECT_EQ(orphan->GetState(&state), S_OK);
  EXPECT_EQ(state, BG_JOB_STATE_CANCELLED);
  orphan->Release();
  manager->Release();
  CoUninitialize();
}

TEST(DownloadAgent, OneNameHasOneServiceWithItsFirstCallbacks) {
  DownloadAgent* agent = DownloadAgent::GetInstance(L"Once", {}, {}, {});
  EXPECT_EQ(DownloadAgent::GetInstance(L"Once", {}, {}, {}), agent);
  EXPECT_NE(DownloadAgent::GetInstance(L"Twice", {}, {}, {}), agent);
  GUID id{};
  EXPECT_FALSE(agent->DownloadFiles(L"Twice", false, {}, L"", id, nullptr, 1));
  EXPECT_FALSE(agent->DownloadFiles(L"Once", true, {}, L"", id, nullptr, 1));
  EXPECT_TRUE(agent->DownloadFiles(L"Once", false, {}, L"", id, nullptr, 1));
}
