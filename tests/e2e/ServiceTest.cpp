#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <thread>

#include "tests/e2e/Lab.h"

namespace {

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point begin) {
  return std::chrono::duration<double>(Clock::now() - begin).count();
}

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

/// @return true once it is so; false when it does not come.
bool Reaches(const std::function<bool()>& isSo, int seconds) {
  for (const auto begin = Clock::now(); SecondsSince(begin) < seconds;) {
    if (isSo()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return false;
}

/// The service on the lab's device, from its registration to its end.
class Service {
 public:
  explicit Service(Lab& lab) : _lab(lab) {
    lab.Configuration()["pollSpreadSeconds"] = 0;
    lab.WriteConfiguration();
    const std::string said = lab.Wine(Program() + " --install --config 'C:\\lab\\host.json'");
    EXPECT_EQ(said, "");
  }
  ~Service() {
    EXPECT_EQ(_lab.Wine(Program() + " --uninstall"), "");
    _lab.Wine("reg delete 'HKLM\\Software\\Tolmar' /v ConfigurationFile /f");
  }
  Service(const Service&) = delete;
  Service& operator=(const Service&) = delete;

  void Start() { _lab.Wine("sc start TolmarHost"); }
  void AskToStop() { _lab.Wine("sc stop TolmarHost"); }

  /// @return what is left over.
  std::string RemoveData() { return _lab.Wine(Program() + " --remove-data"); }

  bool Is(const std::string& state) { return Contains(_lab.Wine("sc query TolmarHost"), state); }

 private:
  static std::string Program() {
    std::string program = "'";
    program += std::getenv("E2E_BIN");
    return program + "/TolmarHost.exe'";
  }

  Lab& _lab;
};

}  // namespace

TEST(Service, RunsAtOnceDeliversByItselfAndTellsOfIt) {
  Lab lab({{"alpha"}, {"stranger"}, {"beta", true}});
  // The agent's own question, at its start, does not hold the service's start up.
  lab.Fault(R"({"on":"hasEntitlement","call":1,"delayMs":2000})");
  Service service(lab);
  const auto begin = Clock::now();
  service.Start();
  ASSERT_TRUE(Reaches([&] { return service.Is("RUNNING"); }, 10));
  std::printf("| running after %.2f s, two programs' starts among it\n", SecondsSince(begin));
  EXPECT_LT(SecondsSince(begin), 1);
  ASSERT_TRUE(Reaches([&] { return lab.IsInstalled("alpha"); }, 60)) << lab.LogText("ZLT.log");
  EXPECT_TRUE(lab.IsInstalled("beta"));
  const auto status = [&] { return lab.Run("service status"); };
  ASSERT_TRUE(Reaches([&] { return status().json["lastRun"].isMember("ended"); }, 60));
  const RunResult told = status();
  EXPECT_EQ(told.json["service"].asString(), "running");
  EXPECT_EQ(told.json["titles"][0]["status"].asString(), "installed");
  const Json::Value& stranger = told.json["titles"][2];
  EXPECT_EQ(stranger["cause"].asString(), "package.signature") << told.output;
  EXPECT_EQ(stranger["failures"].asInt(), 1);
  // One that has failed is tried again before the next run.
  EXPECT_EQ(told.json["nextRun"].asInt64(), stranger["again"].asInt64());
  EXPECT_EQ(lab.Run("status").exitStatus, 0);
  service.AskToStop();
  EXPECT_TRUE(Reaches([&] { return service.Is("STOPPED"); }, 5));
  EXPECT_TRUE(Contains(lab.RunForPeople("service status").output, "service:  stopped"));

  // The plan outlives the service: nothing is asked at its next start.
  const std::size_t asked = lab.Received("entitlement").size();
  service.Start();
  ASSERT_TRUE(Reaches([&] { return service.Is("RUNNING"); }, 10));
  EXPECT_EQ(lab.Run("service status").json["nextRun"], told.json["nextRun"]);
  EXPECT_EQ(lab.Received("entitlement").size(), asked);
}

TEST(Service, StopsInItsBoundInEachPhase) {
  const struct {
    const char* phase;
    const char* title;
    const char* fault;
    std::function<bool(Lab&)> reached;
    double bound;  ///< seconds, by the table of stops in docs/operations.md
  } rows[] = {
      {"the wait for the next run", "alpha", "",
       [](Lab& lab) { return Contains(lab.LogText("events.jsonl"), "title.ended"); }, 1},
      {"the agent's start waits to try again", "alpha", R"({"on":"hasEntitlement","status":503})",
       [](Lab& lab) { return Contains(lab.LogText("TolmarAgent.log"), "retryMinSeconds"); }, 1},
      {"a request", "alpha", R"({"on":"entitlement","call":1,"delayMs":3000})",
       [](Lab& lab) { return lab.Received("hasEntitlement").size() == 1; }, 5},
      {"a wait before a retry", "alpha", R"({"on":"entitlement","status":503})",
       [](Lab& lab) { return Contains(lab.LogText("TolmarAgent.log"), "retryMinSeconds"); }, 1},
      {"a download", "alpha", R"({"on":"file:alpha.cab","delayMs":60000})",
       [](Lab& lab) { return Contains(lab.LogText("ZLT.log"), "begins, files"); }, 2},
      {"an installer", "slow", "",
       [](Lab& lab) {
         return Contains(lab.LogText("TolmarAgent.log"), "Launching installer process now");
       },
       12},  // the check has its grace
  };
  for (const auto& row : rows) {
    Lab lab({{row.title}});
    if (*row.fault != '\0') lab.Fault(row.fault);
    lab.Configuration()["retryWaitScale"] = 1;
    Service service(lab);
    service.Start();
    EXPECT_TRUE(Reaches([&] { return service.Is("RUNNING"); }, 10)) << row.phase;
    EXPECT_TRUE(Reaches([&] { return row.reached(lab); }, 30)) << row.phase;
    const auto begin = Clock::now();
    service.AskToStop();
    EXPECT_TRUE(Reaches([&] { return service.Is("STOPPED"); }, 30)) << row.phase;
    const double took = SecondsSince(begin);
    std::printf("| stop in %s: %.2f s\n", row.phase, took);
    EXPECT_LT(took, row.bound) << row.phase;
  }
}

TEST(Service, RunsWhenSomebodyAsksForIt) {
  Lab lab({{"alpha"}});
  Service service(lab);
  const RunResult tooSoon = lab.Run("service run");
  EXPECT_EQ(tooSoon.exitStatus, 2);
  EXPECT_TRUE(Contains(tooSoon.errors, "the service does not run")) << tooSoon.errors;
  lab.Configuration()["pollSpreadSeconds"] = 604800;
  lab.WriteConfiguration();
  service.Start();
  ASSERT_TRUE(Reaches([&] { return lab.Run("service status").json.isMember("nextRun"); }, 30));
  EXPECT_EQ(lab.Run("service run").exitStatus, 0);
  EXPECT_TRUE(Reaches([&] { return lab.IsInstalled("alpha"); }, 30)) << lab.LogText("ZLT.log");
}

TEST(Service, WorksAtAPromptUntilCtrlC) {
  Lab lab({{"alpha"}});
  lab.Configuration()["pollSpreadSeconds"] = 0;
  const RunResult run = lab.RunToCtrlC("TolmarHost", "--console", [&] {
    return lab.Run("service status").json["lastRun"].isMember("ended");
  });
  EXPECT_EQ(run.exitStatus, 0) << run.errors;
  EXPECT_TRUE(lab.IsInstalled("alpha"));
  EXPECT_TRUE(Contains(run.output, "T-alpha")) << run.output;
  EXPECT_FALSE(Contains(lab.Wine("sc query TolmarHost"), "RUNNING"));
}

TEST(Service, LetsOthersReadAndTellsThemThatItInstalls) {
  Lab lab({{"slow"}});
  Service service(lab);
  service.Start();
  const auto isInstalling = [&] {
    return Contains(lab.LogText("TolmarAgent.log"), "Launching installer process now");
  };
  ASSERT_TRUE(Reaches(isInstalling, 30));
  EXPECT_EQ(lab.Run("list").exitStatus, 0);
  EXPECT_TRUE(Contains(lab.Run("service status").json["lease"].asString(), "TolmarHost.exe"));
  const RunResult install = lab.RunForPeople("install --timeout 2");
  EXPECT_EQ(install.exitStatus, 4);
  EXPECT_TRUE(Contains(install.errors, "TolmarHost.exe) since")) << install.errors;
  EXPECT_TRUE(service.Is("RUNNING"));
}

TEST(Service, GoesByAPolicyThatComesWhileItRuns) {
  Lab lab({{"alpha"}});
  const std::string address = lab.Configuration()["baseUrl"].asString();
  lab.Configuration()["baseUrl"] = "";
  Service service(lab);
  service.Start();
  ASSERT_TRUE(Reaches([&] { return service.Is("RUNNING"); }, 10));
  EXPECT_TRUE(Contains(lab.RunForPeople("service status").output, "last run: never"));
  lab.Policy("baseUrl", "REG_SZ", address);
  ASSERT_TRUE(Reaches([&] { return lab.IsInstalled("alpha"); }, 60)) << lab.LogText("ZLT.log");
}

TEST(Service, FetchesOutsideOfItsWindowsAndInstallsWhenNothingStandsInTheWay) {
  Lab lab({{"alpha"}});
  constexpr const char* Days[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  const std::time_t inThreeDays = std::time(nullptr) + 3 * 24 * 3600;
  const std::string day = Days[std::localtime(&inThreeDays)->tm_wday];
  lab.Configuration()["maintenanceWindows"].append(day + " 00:00-01:00");
  lab.Configuration()["downloadOutsideWindows"] = true;
  lab.Configuration()["deferWhileRunning"].append("tolmarhost.EXE");
  Service service(lab);
  service.Start();
  const auto waitsFor = [&] { return lab.Run("service status").json["waitsFor"].asString(); };
  const auto waiting = lab.DriveC() / "lab" / "download.waiting";
  ASSERT_TRUE(Reaches([&] { return std::filesystem::exists(waiting); }, 30));
  ASSERT_TRUE(Reaches([&] { return waitsFor() == "a maintenance window"; }, 30));
  const auto fetched = [&] {
    const auto types = lab.ReceivedTypes();
    return std::count(types.begin(), types.end(), "file alpha.cab");
  };
  EXPECT_EQ(fetched(), 1);

  lab.Policy("maintenanceWindows", "REG_MULTI_SZ", "");
  ASSERT_TRUE(Reaches([&] { return waitsFor() == "the end of tolmarhost.EXE"; }, 30)) << waitsFor();
  EXPECT_FALSE(lab.IsInstalled("alpha"));
  lab.Policy("deferWhileRunning", "REG_MULTI_SZ", "");
  ASSERT_TRUE(Reaches([&] { return lab.IsInstalled("alpha"); }, 60)) << lab.LogText("ZLT.log");
  EXPECT_EQ(fetched(), 1);
  EXPECT_TRUE(Reaches([&] { return waitsFor().empty(); }, 30));

  service.AskToStop();
  ASSERT_TRUE(Reaches([&] { return service.Is("STOPPED"); }, 10));
  std::filesystem::create_directories(waiting / "title");
  const auto logs = lab.DriveC() / "ProgramData" / "Tolmar" / "Protocol" / "ours";
  std::filesystem::create_directories(logs);
  lab.Policy("logFolder", "REG_SZ", "C:\\ProgramData\\Tolmar\\Protocol\\ours");
  EXPECT_EQ(service.RemoveData(), "");
  EXPECT_FALSE(std::filesystem::exists(waiting));
  EXPECT_TRUE(std::filesystem::remove_all(logs.parent_path()));
}
