#include <cstdlib>

#include "host/common/Text.h"
#include "tests/host/windows/DownloadFixture.h"
#include "tests/host/windows/TestMachine.h"

namespace {

constexpr std::int32_t Http(unsigned int status) {
  return static_cast<std::int32_t>(0x80190000 + status);
}
constexpr auto Truncated = static_cast<std::int32_t>(0x80070026);
constexpr auto TooLarge = static_cast<std::int32_t>(0x800700DF);
constexpr auto FullDisk = static_cast<std::int32_t>(0x80070070);
constexpr auto NoBytes = static_cast<std::int32_t>(0x800705B4);
constexpr auto TooLong = static_cast<std::int32_t>(0x800700CE);

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
    bool success;
    Errors errors;     ///< context and code of each error callback
    std::size_t gets;  ///< of the first address; at least, where the download waits and tries again
    std::size_t size;
    std::wstring renewal{};  ///< new URL of the file, empty for none
  } rows[] = {
      {"no bytes", L"/empty", true, {}, 1, 0},
      {"length not announced", L"/unannounced", true, {}, 1, 5000},
      {"overloaded once", L"/busy", true, {}, 2, 100000},
      {"overloaded for a while", L"/overloaded", true, {}, 5, 100000},
      {"an error page instead", L"/page", true, {}, 2, 6000},
      {"answers no HEAD", L"/getonly", true, {}, 2, 100000},
      {"answers no HEAD, but for a part", L"/ranges", true, {}, 2, 100000},
      {"answers no HEAD, and has no part", L"/noranges", true, {}, 2, 0},
      {"moved", L"/moved", false, {{5, Http(302)}}, 0, 0},
      {"announced larger than allowed", L"/large", false, {{6, TooLarge}}, 0, 0},
      {"endless", L"/endless", false, {{6, TooLarge}}, 1, 0},
      {"missing", L"/missing", false, {{5, Http(404)}}, 1, 0},
      {"expired", L"/expired", false, {{5, Http(403)}}, 1, 0},
      {"renewed", L"/expired", true, {{5, Http(403)}}, 1, 100000, Url(L"/renewed")},
      {"renewed to one too large",
       L"/expired",
       false,
       {{5, Http(403)}, {6, TooLarge}, {6, TooLarge}, {6, TooLarge}},
       1,
       0,
       Url(L"/large")},
      {"renewed to one too long",
       L"/expired",
       false,
       {{5, Http(403)}},
       1,
       0,
       Url(L"/renewed") + std::wstring(2200, L'x')},
      {"renewed for ever", L"/expired", false, Errors(4, {5, Http(403)}), 4, 0, Url(L"/expired")},
      {"renewed elsewhere", L"/expired", false, {{5, Http(403)}}, 1, 0, L"http://e.invalid/x"},
      {"cut off for ever", L"/cut", false, {{6, Truncated}}, 3, 0},
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
    const std::size_t seen = Gets(path);
    if (row.errors == Errors{{6, Truncated}}) {
      EXPECT_GE(seen, row.gets);
    } else {
      EXPECT_EQ(seen, row.gets);
    }
    EXPECT_EQ(FileSystem::fileExists(InFolder(L"a.cab")), row.success);
    EXPECT_EQ(TestMachine::ReadFile(InFolder(L"a.cab")).size(), row.size);
    EXPECT_FALSE(FileSystem::fileExists(Arriving(L"a.cab")));
    if (row.success) continue;
    const std::string log = TestMachine::ReadLog(L"ZLT.log");
    const std::string told = "a.cab from " + ZLT::String::UTF16ToUTF8(server.Url(row.path)) +
                             ", attempt " + std::to_string(std::max(seen, std::size_t{1}));
    EXPECT_NE(log.find(told), std::string::npos) << told;
  }
  EXPECT_TRUE(other.Seen().empty());  // The headers hold a token.
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
  for (const std::wstring& name : {InFolder(L"a.cab"), Arriving(L"a.cab")}) {
    Download download;
    FileSystem::createDirectory(ZLT::utility::GetZltKivDownloadPath() + L".arriving", true);
    TestMachine::WriteFile(name, "in use");
    const HANDLE user = TestMachine::Hold(name);
    EXPECT_FALSE(download.Run({{Url(L"/whole"), InFolder(L"a.cab")}}));
    CloseHandle(user);
    ASSERT_EQ(download.errors.size(), 1U);
    EXPECT_EQ(download.errors[0].errorContext, BG_ERROR_CONTEXT_LOCAL_FILE);
    EXPECT_EQ(download.errors[0].errorCode, HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION));
    EXPECT_EQ(TestMachine::ReadFile(name), "in use");
  }
}

TEST_F(DownloadAgentTest, AFileThatIsHeldForAWhileIsWaitedFor) {
  if (std::getenv("TOLMAR_TEST_CONFIG") == nullptr) {
    Json::Value changes;  // In a process that is as patient as a PC.
    changes["fileInUseSeconds"] = 10;
    std::string output;
    EXPECT_EQ(TestMachine::RunAgain(L"--gtest_filter=*.AFileThatIsHeldForAWhileIsWaitedFor",
                                    TestMachine::ConfigurationWith(changes), output),
              0U)
        << output;
    return;
  }
  Download download;
  FileSystem::createDirectory(ZLT::utility::GetZltKivDownloadPath() + L".arriving", true);
  TestMachine::WriteFile(Arriving(L"a.cab"), "held");
  std::thread scanner([held = TestMachine::Hold(Arriving(L"a.cab")), &download] {
    WaitForSingleObject(download.cancel, 3000);
    CloseHandle(held);
  });
  const auto begin = Clock::now();
  EXPECT_TRUE(download.Run({{Url(L"/whole"), InFolder(L"a.cab")}}));
  EXPECT_GE(Clock::now() - begin, std::chrono::seconds(2));
  scanner.join();
  EXPECT_EQ(TestMachine::ReadFile(InFolder(L"a.cab")).size(), 100000U);
}

TEST_F(DownloadAgentTest, WhatBitsDoesNotTakeIsToldToTheOwner) {
  const struct {
    const char* name;
    std::wstring url;
    std::wstring file;
    std::int32_t context;
  } rows[] = {
      {"address too long", Url(L"/whole") + std::wstring(2200, L'x'), L"a", 2},
      {"a part of it too long", server.Url(L"/" + std::wstring(261, L'x')), L"a", 2},
      {"local path too long", Url(L"/whole"), std::wstring(240, L'x'), 2},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Download download;
    EXPECT_FALSE(download.Run({{row.url, InFolder(row.file)}}));
    ASSERT_EQ(download.errors.size(), 1U);
    EXPECT_EQ(download.errors[0].errorContext, row.context);
    EXPECT_EQ(download.errors[0].errorCode, TooLong);
    EXPECT_EQ(download.completions, std::vector<bool>{false});
    EXPECT_TRUE(IsEqualGUID(download.id, NoJob));
  }
  EXPECT_TRUE(server.Seen().empty());
}

TEST_F(DownloadAgentTest, WhatTheDiskDoesNotTakeIsNotBegun) {
  const bool isLimited = std::getenv("TOLMAR_TEST_CONFIG") == nullptr;
  Download download;
  EXPECT_FALSE(download.Run({{Url(L"/huge"), InFolder(L"a.cab")}}));
  ASSERT_EQ(download.errors.size(), 1U);
  EXPECT_EQ(download.errors[0].errorCode, isLimited ? TooLarge : FullDisk);
  EXPECT_EQ(Gets("/huge"), 0U);
  if (!isLimited) return;
  Json::Value changes;  // Once more, where it is the disk alone that is too small.
  changes["maxFileBytes"] = Json::UInt64{1} << 51;
  std::string output;
  EXPECT_EQ(TestMachine::RunAgain(L"--gtest_filter=*.WhatTheDiskDoesNotTakeIsNotBegun",
                                  TestMachine::ConfigurationWith(changes), output),
            0U)
      << output;
}

TEST_F(DownloadAgentTest, AServerThatFallsSilentIsGivenUp) {
  Download download;
  const auto begin = Clock::now();
  EXPECT_FALSE(download.Run({{Url(L"/stuck"), InFolder(L"a.cab")}}));
  EXPECT_LT(Clock::now() - begin, std::chrono::seconds(15));
  ASSERT_EQ(download.errors.size(), 1U);
  EXPECT_EQ(download.errors[0].errorCode, NoBytes);
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

TEST_F(DownloadAgentTest, AStopBeforehandLeavesTheServiceAtRest) {
  using Ask = void (*)(Download&);
  for (const Ask ask : {Ask([](Download& download) { SetEvent(download.cancel); }),
                        Ask([](Download& download) { download.agent->CleanUp(); })}) {
    Download download;
    ask(download);
    EXPECT_FALSE(download.Run({{Url(L"/whole"), InFolder(L"a.cab")}}));
    EXPECT_TRUE(IsEqualGUID(download.id, NoJob));
    EXPECT_TRUE(server.Seen().empty());
  }
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

/// A process of this program that has the machine's lease and the file "held.cab".
class LeaseHolder {
 public:
  explicit LeaseHolder(const std::wstring& url) {
    wchar_t program[MAX_PATH];
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    std::wstring line = L"\"" + std::wstring(program) + L"\" --lease TolmarLease " + url;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                        &startup, &_process)) {
      return;
    }
    const HANDLE either[] = {_ready, _process.hProcess};
    _holds = WaitForMultipleObjects(2, either, FALSE, 20000) == WAIT_OBJECT_0;
  }
  ~LeaseHolder() {
    Kill();
    for (const HANDLE handle : {_ready, _end, _process.hProcess, _process.hThread}) {
      CloseHandle(handle);
    }
  }
  LeaseHolder(const LeaseHolder&) = delete;
  LeaseHolder& operator=(const LeaseHolder&) = delete;

  bool Holds() const { return _holds; }
  std::string Name() const { return "process " + std::to_string(_process.dwProcessId) + " ("; }
  void Kill() {
    TerminateProcess(_process.hProcess, 1);
    WaitForSingleObject(_process.hProcess, 20000);
  }

 private:
  const HANDLE _ready = CreateEventW(nullptr, TRUE, FALSE, L"TolmarLease-ready");
  const HANDLE _end = CreateEventW(nullptr, TRUE, FALSE, L"TolmarLease");  ///< never set
  PROCESS_INFORMATION _process{};
  bool _holds = false;
};

TEST_F(DownloadAgentTest, OneProcessInstallsAtATime) {
  const std::wstring folder = ZLT::utility::GetZltKivDownloadPath();
  Download download;
  LeaseHolder holder(server.Url(L"/whole?holder"));
  const std::wstring held = InFolder(L"held.cab");
  ASSERT_TRUE(holder.Holds() && GetFileAttributesW(held.c_str()) != INVALID_FILE_ATTRIBUTES);
  EXPECT_FALSE(FileSystem::fileExists(held));
  EXPECT_FALSE(FileSystem::deleteDirectoryOrFile(folder, true));
  EXPECT_NE(TestMachine::LastError().find(holder.Name()), std::string::npos);
  server.Script([](const HttpSeen&) { return HttpAnswer{.status = 500}; });  // forgets the above
  EXPECT_FALSE(download.Run({{Url(L"/whole"), held}}));                      // leaseWaitSeconds
  EXPECT_NE(TestMachine::LastError().find("lease: " + holder.Name()), std::string::npos);
  SetEvent(download.cancel);
  EXPECT_FALSE(download.Run({{Url(L"/whole"), held}}));
  EXPECT_TRUE(server.Seen().empty());
  EXPECT_EQ(TestMachine::ReadFile(held).size(), 100000U);
  holder.Kill();
  Restart();
  Download another;  // empties the folder
  EXPECT_TRUE(another.Run({{Url(L"/other"), held}}));
  EXPECT_TRUE(FileSystem::fileExists(held));
  EXPECT_EQ(TestMachine::ReadFile(held).size(), 3000U);
}

TEST(DownloadAgent, OneNameHasOneService) {
  DownloadAgent* agent = DownloadAgent::GetInstance(L"Once", {}, {}, {});
  EXPECT_EQ(DownloadAgent::GetInstance(L"Once", {}, {}, {}), agent);
  EXPECT_NE(DownloadAgent::GetInstance(L"Twice", {}, {}, {}), agent);
  GUID id{};
  EXPECT_FALSE(agent->DownloadFiles(L"Twice", false, {}, L"", id, nullptr, 1));
  EXPECT_FALSE(agent->DownloadFiles(L"Once", true, {}, L"", id, nullptr, 1));
  EXPECT_TRUE(agent->DownloadFiles(L"Once", false, {}, L"", id, nullptr, 1));
}

/// Wine's BITS takes no proxy, which shows that it is given the configured one.
TEST(DownloadAgent, NoJobIsMadeThatWouldGoPastTheConfiguredProxy) {
  LoopbackServer server([](const HttpSeen&) { return HttpAnswer{.body = "x"}; });
  Json::Value changes;
  changes["proxy"] = "127.0.0.1:9";
  std::string output;
  EXPECT_EQ(TestMachine::RunAgain(L"--download " + server.Url(L"/x"),
                                  TestMachine::ConfigurationWith(changes), output),
            1U);
  EXPECT_NE(TestMachine::LastError().find("0x80004001"), std::string::npos);
}
