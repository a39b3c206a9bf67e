#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <thread>

#include "tests/unit/AgentFixture.h"

// Threads at once, for the thread sanitizer and for what comes of them. They meet at steps of the
// host: a step blocks until another thread has come to where it is wanted, so nothing is luck.
class ConcurrencyTest : public AgentFixture {
 protected:
  // The outcome of an installation, and the lines that tell it.
  struct End {
    std::string outcome, lines;
  };
  struct Phase {
    std::string step;  // the beginning of its line
    Reply list;        // the files of the module that is installed
    End end;
    bool isInstaller() const { return step.starts_with("wait-any"); }
  };
  ~ConcurrencyTest() override {
    for (const HANDLE event : _events) CloseHandle(event);
  }
  HANDLE Event() { return _events.emplace_back(CreateEventW(nullptr, TRUE, FALSE, nullptr)); }
  /// Waits for another thread. In vain: the test fails, and with it the program, since threads of
  /// the agent hang in it.
  static void Await(HANDLE event) {
    if (FakeHost::ReallyWait(event)) return;
    const auto& test = *testing::UnitTest::GetInstance()->current_test_info();
    std::printf("[  FAILED  ] %s.%s: a thread waits in vain\n", test.test_suite_name(),
                test.name());
    std::fflush(stdout);
    std::_Exit(EXIT_FAILURE);
  }
  void AnnouncePreinstall() {
    fake.always["hasEntitlement"] = Preinstall;
    const std::string titles = Titles("T!:M")["swList"].toStyledString();
    fake.always["entitlement"] = Result(R"({"code":0,"swList":)" + titles + "}");
  }
  /// Calls CleanUp at a phase of an installation, which goes on when the stop event is set.
  void CleanUpAt(const Phase& phase, bool byWorker);

 private:
  std::vector<HANDLE> _events;
};

void ConcurrencyTest::CleanUpAt(const Phase& phase, bool byWorker) {
  StartQuietly();
  const HANDLE reached = Event();
  std::atomic<bool> isReached = false;
  fake.atStep = [&](const std::string& line) {
    if (!HoldsInstallLock() || !line.starts_with(phase.step) || isReached.exchange(true)) return;
    SetEvent(reached);
    Await(StopEvent());
  };
  fake.installerEnds = !phase.isInstaller();
  fake.next["downloadRequest"] = {phase.list};
  std::thread host;
  if (byWorker) {
    fake.checks = {0};  // missing
    fake.next["downloadRequest"].push_front(Files("c.ps1"));
    Notify(false, 4, 15);
  } else {
    host = std::thread([&] { EXPECT_EQ(Install("T:M"), phase.end.outcome) << phase.step; });
  }
  Await(reached);
  Agent().CleanUp();
  EXPECT_EQ(fake.Count("d PreinstallSoftwareThrdRtn: Exit"), byWorker ? 1U : 0U);
  if (!byWorker && phase.isInstaller()) SetEvent(fake.installer);  // CleanUp has not waited for it
  if (!byWorker) host.join();
  fake.atStep = nullptr;
}

TEST_F(ConcurrencyTest, CleanUpInEveryPhaseOfAnInstallation) {
  const std::string code = "d Download and install code=";
  const std::string installer = "d InstallModule: Install";
  const std::string stop = "d TolmarAgent: OnFileDownloadProgress: Stop event or cancel event is ";
  const std::string wait = "d TolmarAgent::GetDownloadFiles: _hStopEvent ";
  const std::string installed = code + "0 for AppId=T\n";
  const std::string post = "POST https://cloud/mp/zlt/v2/";
  const End gaveUp{"503  ;", wait + "Signaled\n"};
  const End stopped{"4294967295 not installed 0;",
                    stop + "sent by ZLT service. Return false\n" + code + "-1 for AppId=T\n"};
  const End whole{"0 installed 0;", installer + "er process has finished\n" + installed};
  const End cancelled{"", installer + "ation cancelled by CancelEvent\n" + installed};
  const Reply some = Files("a.cab c.ps1"), none = Files("here.cab here.ps1"), down{"", 503};
  const Phase phases[] = {{"session", some, stopped},
                          {post + "downloadRequest", some, stopped},
                          {post + "downloadRequest", down, gaveUp},
                          {"wait ", down, gaveUp},
                          {post + "downloadProgress", some, stopped},
                          {"DOWNLOAD", some, stopped},
                          {"wait ", none, whole},
                          {"extract", some, whole},
                          {post + "installProgress", some, whole},
                          {"wait-any 2 -1", some, whole},
                          {"run", some, whole},
                          {"delete", some, whole}};
  fake.files = {L"C:\\kiv\\here.cab", L"C:\\kiv\\here.ps1"};
  fake.download = [&] { return Progress(1, 2); };
  AnnouncePreinstall();
  for (const bool byWorker : {false, true}) {
    for (const Phase& phase : phases) {
      CleanUpAt(phase, byWorker);
      // The worker's handle is the stop event: it ends the wait for the installer.
      const End& end = byWorker && phase.isInstaller() ? cancelled : phase.end;
      EXPECT_EQ(fake.Transcript({code, installer, stop, wait}), end.lines) << phase.step;
    }
  }
}

TEST_F(ConcurrencyTest, AThousandAgentsStartAndStop) {
  AnnouncePreinstall();
  fake.download = [&] { return Progress(1, 2); };
  const Reply nothing = Result(R"({"code":0,"swList":[]})");
  for (int i = 0; i < 1000; ++i) {
    fake.realm += L'r';  // not the one before: the worker starts, and every tenth installs
    if (i % 10 != 0) fake.next["entitlement"] = {nothing};
    fake.checks = {0};
    Start().CleanUp();
    EXPECT_FALSE(Worker()->joinable());
    EXPECT_EQ(fake.Count("d PreinstallSoftwareThrdRtn: Exit"), 1U);
    EXPECT_EQ(fake.Transcript({"sub", "unsub"}), "subscribe false\nunsubscribe subscription\n");
  }
}

TEST_F(ConcurrencyTest, WorkersOfNotificationsWaitForTheInstallationUnderWay) {
  const HANDLE downloading = Event(), waiting = Event();
  std::atomic<int> asking = 0;
  AnnouncePreinstall();
  fake.checks = {0, 0};  // missing, as each worker finds
  fake.atStep = [&](const std::string& line) {
    if (line == "asks-for-lock" && ++asking == 3) SetEvent(waiting);
  };
  fake.download = [&] { return SetEvent(downloading), Await(waiting), true; };
  const auto configure = [&](const std::wstring& base) {
    fake.baseUrl = base;
    ZLTNotificationData data(false, 4, 15);
    fake.onNotification(data);
  };
  std::thread host([&] { EXPECT_EQ(Install("T:M"), "0 installed 0;"); });
  Await(downloading);
  configure(L"https://first");
  configure(L"https://first");  // asked there already
  const std::unique_ptr<std::thread> earlier(Worker());
  configure(L"https://second");
  host.join();
  Agent().CleanUp();
  EXPECT_FALSE(Worker()->joinable());
  ASSERT_TRUE(earlier->joinable());  // the newest worker alone is joined
  earlier->join();
  const std::string worker = "lock\nDOWNLOAD ZLTKIVJob false stop 1\nunlock\n";
  EXPECT_EQ(fake.Transcript({"lock", "DOWNLOAD", "unlock"}),
            "lock\nDOWNLOAD ZLTKIVJob false cancel 1\nunlock\n" + worker + worker);
  EXPECT_EQ(fake.Count("POST https://first/mp/zlt/v2/hasEntitlement"), 1U);
  EXPECT_EQ(fake.Count("POST https://second/mp/zlt/v2/hasEntitlement"), 1U);
  // What was begun goes on at the new address.
  EXPECT_EQ(fake.Count("POST https://second/mp/zlt/v2/installProgress"), 6U);
}

TEST_F(ConcurrencyTest, TwoHundredTitlesAreCheckedAtOnce) {
  const HANDLE all = Event();
  std::atomic<int> arrived = 0;
  fake.atStep = [&](auto&) {
    thread_local bool isHere = false;
    if (std::exchange(isHere, true)) return;
    if (++arrived == 200) SetEvent(all);
    Await(all);
  };
  fake.checks.assign(30, 0);
  std::string titles;
  while (titles.size() < 200 * 4) titles += "T:M ";
  std::istringstream outcome(Check(titles).substr(2));
  std::map<std::string, int> states;
  for (std::string state; std::getline(outcome, state, ';');) ++states[state];
  EXPECT_EQ(states, (std::map<std::string, int>{{"installed 0", 170}, {"not installed 0", 30}}));
}

TEST_F(ConcurrencyTest, InstallationPollingEventsAndCancelRunSideBySide) {
  const std::set<std::string> known{"4294967295 ",  "0 ",          "0 downloading",  "0 downloaded",
                                    "0 installing", "0 installed", "0 not installed"};
  std::atomic<bool> done = false;
  std::atomic<int> polls = 0, downloads = 0;
  std::thread service;
  fake.download = [&] {  // events of the first module come until the last one is cancelled
    if (++downloads == 1) {
      service = std::thread([&] {
        for (std::uint64_t i = 0; Progress(i, 1000); i = (i + 1) % 1000) Complete(i % 2 == 0);
      });
    }
    if (downloads == 26) service.join();
    return downloads < 26;
  };
  std::thread install([&] {
    EXPECT_EQ(Install("T:ABCDEFGHIJKLMNOPQRSTUVWXYZ"), "0 installed 0;");
    done = true;
  });
  const auto poll = [&] {
    while (!done) {
      const std::string status = Poll();
      EXPECT_TRUE(known.contains(status.substr(0, status.rfind(' ')))) << status;
      polls += status.starts_with("0 download") ? 1 : 0;
    }
  };
  std::thread first(poll), second(poll);
  while (polls < 50 || downloads < 26) TolmarAgent::SetBaseUri(L"https://other");
  SetEvent(cancel);
  for (std::thread* thread : {&install, &first, &second}) thread->join();
}
