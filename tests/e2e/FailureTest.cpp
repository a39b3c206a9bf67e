#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <optional>

#include "tests/e2e/Lab.h"

namespace fs = std::filesystem;

namespace {

struct FaultRow {
  const char* name;
  const char* fault;
  int code;
  const char* status;
  const char* cause = "";  ///< the title's
};

/// One line of the table that a reader of the test's output sees.
void Tell(const char* name, const std::string& expected, const std::string& seen) {
  static const int once = std::printf("| %-34s | %-22s | %-22s |\n", "fault", "expected", "seen");
  static_cast<void>(once);
  std::printf("| %-34s | %-22s | %-22s |\n", name, expected.c_str(), seen.c_str());
  std::fflush(stdout);
}

/// What is wrong with the device itself.
struct DeviceRow {
  const char* name;
  const char* title;
  std::function<void(Lab&)> prepare;
  int code;
  const char* status;
  const char* said;        ///< in one of the logs
  const char* cause = "";  ///< the title's
};

fs::path Downloads(const Lab& lab) { return lab.DriveC() / "lab" / "download"; }

void MakeLink(Lab& lab) {
  fs::create_directories(lab.DriveC() / "lab" / "elsewhere");
  std::ofstream(lab.DriveC() / "lab" / "elsewhere" / "kept") << "x";
  fs::create_directory_symlink("elsewhere", Downloads(lab));
}

void MakeLinkAbove(Lab& lab) {
  MakeLink(lab);
  lab.Configuration()["downloadFolder"] = R"(C:\lab\download\inner)";
}

/// Makes a folder that belongs to somebody else; only root can.
void GiveAway(const fs::path& folder) {
  fs::create_directories(folder);
  if (chown(folder.c_str(), 65534, 65534) != 0) fs::remove(folder);
}

/// A Windows program that holds the file open until the object goes.
class Holder {
 public:
  explicit Holder(Lab& lab) {
    const fs::path folder = lab.DriveC() / "lab" / "download.arriving";
    const fs::path file = folder / "alpha.cab.part";
    fs::create_directories(folder);
    _pipe = popen(R"(wine cmd /c 'pause >C:\lab\download.arriving\alpha.cab.part' >/dev/null 2>&1)",
                  "w");
    for (int tries = 0; tries < 1000 && !fs::exists(file); ++tries) usleep(10000);
  }
  ~Holder() { pclose(_pipe); }
  Holder(const Holder&) = delete;
  Holder& operator=(const Holder&) = delete;

 private:
  FILE* _pipe;
};

}  // namespace

TEST(Failure, FaultsOfTheDeviceEndAsTheyShould) {
  std::optional<Holder> holder;
  const auto set = [](const char* key, int value) {
    return [key, value](Lab& lab) { lab.Configuration()[key] = value; };
  };
  const auto rows = std::to_array<DeviceRow>({
      {"download folder is a file", "alpha",
       [](Lab& lab) {
         fs::create_directories(Downloads(lab).parent_path());
         std::ofstream(Downloads(lab)) << "x";
       },
       -1, "not installed", "alpha.cab is refused, its folder cannot be used: a file has its name",
       "device.folder"},
      {"download folder is a link", "alpha", MakeLink, -1, "not installed",
       "download is refused: a link stands in its place", "device.folder"},
      {"link above the download folder", "alpha", MakeLinkAbove, -1, "not installed",
       "inner is refused: C:\\lab\\download: a link stands in its place", "device.folder"},
      {"download folder of somebody else", "alpha", [](Lab& lab) { GiveAway(Downloads(lab)); }, -1,
       "not installed", "download is refused: it belongs to somebody else", "device.folder"},
      {"foreign things in download folder", "alpha",
       [](Lab& lab) { GiveAway(Downloads(lab) / "theirs"); }, -1, "not installed",
       "download is refused: it holds theirs: it belongs to somebody else", "device.folder"},
      {"download folder open to everybody", "alpha",
       [](Lab& lab) {
         fs::create_directories(Downloads(lab));
         fs::permissions(Downloads(lab), fs::perms::all);
       },
       -1, "not installed", "download is refused: S-1-1-0 may change it", "device.folder"},
      {"folder in a file's place", "alpha",
       [](Lab& lab) { fs::create_directories(Downloads(lab) / "alpha.cab"); }, -1, "not installed",
       "alpha.cab, attempt 1: Access denied (context 4, code 0x80070005)", "device.folder"},
      {"file held by another program", "alpha", [&](Lab& lab) { holder.emplace(lab); }, -1,
       "not installed", "alpha.cab, attempt 1: Sharing violation (context 4, code 0x80070020)",
       "device.file-in-use"},
      {"server falls silent", "alpha",
       [](Lab& lab) {
         lab.Configuration()["downloadStallSeconds"] = 2;
         lab.Fault(R"({"on":"file:alpha.cab","call":0,"delayMs":120000})");
       },
       -1, "not installed", "attempt 1: no bytes arrived in time (context 6, code 0x800705B4)",
       "download.stalled"},
      {"file larger than allowed", "alpha", set("maxFileBytes", 100000), -1, "not installed",
       "alpha.cab, attempt 1: the file is larger than maxFileBytes allows", "download.too-large"},
      {"package unpacks to too much", "alpha", set("maxUnpackedBytes", 100000), 48, "not installed",
       "the package unpacks to more bytes than maxUnpackedBytes allows", "package.too-large"},
      {"file without a byte", "empty", [](Lab&) {}, 48, "not installed", "it is not a cabinet",
       "package.damaged"},
      {"name full of signs", OddName, [](Lab&) {}, 0, "installed", "exit code 0 after "},
  });
  for (const DeviceRow& row : rows) {
    Lab lab({{row.title}});
    row.prepare(lab);
    if (std::string(row.said).ends_with("somebody else") && geteuid() != 0) continue;
    const RunResult run = lab.Run("install");
    holder.reset();
    const auto seen = static_cast<int>(run.json["code"].asLargestInt());
    EXPECT_EQ(seen, row.code) << row.name << run.errors;
    EXPECT_EQ(StatusOf(run, row.title), row.status) << row.name;
    EXPECT_EQ(CauseOf(run, row.title), row.cause) << row.name << run.output;
    const std::string logs = lab.LogText("ZLT.log") + lab.LogText("TolmarAgent.log");
    EXPECT_NE(logs.find(row.said), std::string::npos) << row.name << logs;
    const fs::path elsewhere = lab.DriveC() / "lab" / "elsewhere";
    EXPECT_EQ(fs::exists(elsewhere), fs::exists(elsewhere / "kept")) << row.name;
    Tell(row.name, std::to_string(row.code) + " " + row.status,
         std::to_string(seen) + " " + StatusOf(run, row.title));
  }
}

TEST(Failure, AfterAKilledDownloadTheNextOneSucceeds) {
  const struct {
    const char* name;
    const char* fault;
    std::function<bool(Lab&)> reached;
  } rows[] = {
      {"killed before the first byte", R"({"on":"file:alpha.cab","call":1,"delayMs":4000})",
       [](Lab& lab) {
         return lab.LogText("ZLT.log").find(" begins, files: 2") != std::string::npos;
       }},
      {"killed before the last file", R"({"on":"file:check-alpha.ps1","call":1,"delayMs":4000})",
       [](Lab& lab) { return lab.Received("file").size() == 3; }},
  };
  for (const auto& row : rows) {
    Lab lab({{"alpha"}});
    lab.Fault(row.fault);
    ASSERT_TRUE(lab.RunAndKill("install", [&] { return row.reached(lab); })) << row.name;
    const RunResult run = lab.Run("install");
    EXPECT_EQ(run.exitStatus, 0) << row.name << run.errors;
    EXPECT_TRUE(lab.IsInstalled("alpha")) << row.name;
    Tell(row.name, "0 installed", run.json["code"].asString() + " " + StatusOf(run, "alpha"));
  }
}

TEST(Failure, ASecondHostLeavesTheFirstOnesInstallationAlone) {
  Lab lab({{"alpha"}});
  lab.Fault(R"({"on":"file:alpha.cab","call":1,"delayMs":10000})");
  RunResult second, plan;
  ASSERT_TRUE(lab.RunAndKill("install", [&] {
    if (lab.Received("file").size() < 3) return false;
    plan = lab.Run("plan --no-checks");
    second = lab.Run("install --timeout 3");
    return true;
  }));
  EXPECT_TRUE(plan.json["result"]["lease"].asString().starts_with("process ")) << plan.output;
  EXPECT_EQ(second.exitStatus, 4);
  EXPECT_EQ(StatusOf(second, "alpha"), "not installed");
  const std::vector<Json::Value> files = lab.Received("file");  // The first one's questions alone.
  EXPECT_EQ(std::count_if(files.begin(), files.end(),
                          [](const Json::Value& file) { return file["method"] == "HEAD"; }),
            2);
  EXPECT_NE(lab.LogText("ZLT.log").find("waits for the lease: process "), std::string::npos);
  EXPECT_NE(lab.LogText("ZLT.log").find("download is not deleted: process "), std::string::npos);
  const RunResult third = lab.Run("install");  // The first one's death has given the lease back.
  EXPECT_EQ(third.exitStatus, 0) << third.errors;
  EXPECT_TRUE(lab.IsInstalled("alpha"));
}

namespace {

/// @return whether the host has been told of some of the bytes, but not of all.
bool HasBytes(Lab& lab) {
  const std::string log = lab.LogText("TolmarAgent.log");
  const std::size_t at = log.rfind("Xfered(B)=");
  return at != std::string::npos && std::stoul(log.substr(at + 10)) != 0;
}

/// @return how often the package itself was asked for.
std::size_t GetsOf(Lab& lab, const std::string& file) {
  const std::vector<std::string> types = lab.ReceivedTypes();
  return static_cast<std::size_t>(std::count(types.begin(), types.end(), "file " + file));
}

bool HasLogged(const Lab& lab, const char* text) {
  return lab.LogText("ZLT.log").find(text) != std::string::npos;
}

}  // namespace

TEST(Failure, ATransferThatAnEndedHostHasLeftIsTakenUp) {
  const struct {
    const char* name;
    bool killed;  ///< else cancelled
  } rows[] = {{"host killed in mid-transfer", true}, {"download cancelled, then again", false}};
  for (const auto& row : rows) {
    Lab lab({{"large"}});  // No cabinet: what becomes of it afterwards is another matter.
    if (row.killed) {
      ASSERT_TRUE(lab.RunAndKill("install", [&] { return HasBytes(lab); }));
    } else {
      lab.Run("install --timeout 3");
    }
    const auto begin = std::chrono::steady_clock::now();
    const RunResult run = lab.Run("install", 120);
    const auto time = std::chrono::steady_clock::now() - begin;
    EXPECT_EQ(run.json["code"].asInt(), 48) << row.name << run.errors;
    EXPECT_TRUE(HasLogged(lab, "of an earlier download is taken up")) << row.name;
    EXPECT_EQ(GetsOf(lab, "large.cab"), 1U) << row.name;
    Tell(row.name, "fetched 1 times",
         "fetched " + std::to_string(GetsOf(lab, "large.cab")) + " times");
    RecordProperty(row.name,
                   std::to_string(std::chrono::duration_cast<std::chrono::seconds>(time).count()));
  }
}

TEST(Failure, FaultsOfTheCloudEndAsTheyShould) {
  const auto rows = std::to_array<FaultRow>({
      {"expired URL renewed", R"({"on":"downloadRequest","call":1,"expired":true})", 0,
       "installed"},
      {"file refused as expired once", R"({"on":"file:alpha.cab","call":1,"expired":true})", 0,
       "installed"},
      {"503 twice, then success", R"({"on":"entitlement","call":1,"count":2,"status":503})", 0,
       "installed"},
      {"garbage, then success", R"({"on":"downloadRequest","call":1,"garbage":true})", 0,
       "installed"},
      {"refused (code 5), then success", R"({"on":"entitlement","call":1,"resultCode":5})", 0,
       "installed"},
      {"reply dropped, ends at once", R"({"on":"entitlement","call":1,"dropAfter":10})", 12030, ""},
      {"file dropped once", R"({"on":"file:alpha.cab","call":1,"dropAfter":100000})", 0,
       "installed"},
      {"file dropped for ever", R"({"on":"file:alpha.cab","call":0,"dropAfter":100000})", -1,
       "not installed", "download.network"},
      // Wine's BITS takes the page of a 403 for the file.
      {"file refused for ever", R"({"on":"file:alpha.cab","call":0,"status":403})", -1,
       "not installed", "download.content"},
      {"file missing", R"({"on":"file:alpha.cab","call":0,"status":404})", -1, "not installed",
       "download.refused"},
      {"reports refused", R"({"on":"installProgress","call":0,"status":500})", 0, "installed"},
      {"reports answered with garbage", R"({"on":"downloadProgress","call":0,"garbage":true})", 0,
       "installed"},
      {"file list not to be had", R"({"on":"downloadRequest","call":0,"status":404})", 404, "",
       "reply.http-404"},
  });
  for (const FaultRow& row : rows) {
    Lab lab({{"alpha"}});
    lab.Fault(row.fault);
    const RunResult run = lab.Run("install");
    const auto seen = static_cast<int>(run.json["code"].asLargestInt());
    EXPECT_EQ(seen, row.code) << row.name << run.errors;
    EXPECT_EQ(StatusOf(run, "alpha"), row.status) << row.name;
    EXPECT_EQ(CauseOf(run, "alpha"), row.cause) << row.name << run.output;
    EXPECT_EQ(run.exitStatus, row.code == 0 ? 0 : 1) << row.name;
    EXPECT_FALSE(std::filesystem::exists(lab.DriveC() / "lab" / "download")) << row.name;
    Tell(row.name, std::to_string(row.code) + " " + row.status,
         std::to_string(seen) + " " + StatusOf(run, "alpha"));
  }
}

TEST(Failure, PackagesThatNobodyVouchesForAreRefused) {
  Lab lab({{"unsigned"}, {"tampered"}, {"stranger"}, {"alpha"}});
  const RunResult run = lab.Run("install");
  for (const char* name : {"unsigned", "tampered", "stranger"}) {
    EXPECT_EQ(StatusOf(run, name), "not installed") << name;
    EXPECT_FALSE(lab.IsInstalled(name)) << name;
    Tell(name, "not installed", StatusOf(run, name));
  }
  EXPECT_EQ(StatusOf(run, "alpha"), "installed");
  EXPECT_EQ(run.json["code"].asInt(), 0);  // The code is the last title's.
  EXPECT_NE(lab.LogText("TolmarAgent.log").find("code=48 for AppId=T-unsigned"), std::string::npos);
}

TEST(Failure, UntrustedPublisherIsRefused) {
  Lab lab({{"alpha"}});
  lab.Configuration()["trustedPublishers"].append(std::string(64, 'a'));
  EXPECT_EQ(lab.Run("install").json["code"].asInt(), 48);
  EXPECT_FALSE(lab.IsInstalled("alpha"));
}

TEST(Failure, CancelledInstallationEndsLongBeforeItsInstaller) {
  Lab lab({{"slow"}});
  const RunResult run = lab.Run("install --timeout 5", 60);  // The installer takes two minutes.
  EXPECT_EQ(run.exitStatus, 4) << run.errors;
  EXPECT_EQ(run.json["code"].asInt(), 47);
  EXPECT_EQ(StatusOf(run, "slow"), "not installed");
  EXPECT_NE(lab.LogText("TolmarAgent.log").find("Installation cancelled by CancelEvent"),
            std::string::npos);
}

TEST(Failure, AModuleThatIsThereCountsThoughItsInstallationWasCancelled) {
  Lab lab({{"lingering"}});
  const RunResult run = lab.Run("install --timeout 8", 60);  // The installer ends two minutes late.
  EXPECT_EQ(run.json["code"].asInt(), 0) << run.errors;
  EXPECT_EQ(StatusOf(run, "lingering"), "installed");
  EXPECT_NE(lab.LogText("TolmarAgent.log").find("Installation cancelled by CancelEvent"),
            std::string::npos);
}

TEST(Failure, CancelledDownloadEndsLongBeforeItsFile) {
  Lab lab({{"alpha"}});
  lab.Fault(R"({"on":"file:alpha.cab","call":0,"delayMs":120000})");
  const RunResult run = lab.Run("install --timeout 3", 60);
  EXPECT_EQ(run.exitStatus, 4) << run.errors;
  EXPECT_EQ(run.json["code"].asUInt(), 0xFFFFFFFFU);
  EXPECT_EQ(StatusOf(run, "alpha"), "not installed");
}

TEST(Failure, StopEndsARetryWaitAtOnce) {
  Lab lab({{"alpha"}});
  lab.Configuration()["retryWaitScale"] = 1.0;  // A wait of a minute at the least.
  lab.Fault(R"({"on":"entitlement","call":0,"status":503})");
  const RunResult run = lab.Run("install --timeout 2", 30);
  EXPECT_EQ(run.exitStatus, 4) << run.errors;
  EXPECT_EQ(run.json["code"].asInt(), 503);
  EXPECT_EQ(lab.Received("entitlement").size(), 1U);
  EXPECT_NE(lab.LogText("TolmarAgent.log").find("GetEntitledSoftware: _hStopEvent Signaled"),
            std::string::npos);
}
