#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>

#include "tests/e2e/Lab.h"

namespace {

struct FaultRow {
  const char* name;
  const char* fault;
  int code;
  const char* status;
};

/// One line of the table that a reader of the test's output sees.
void Tell(const char* name, const std::string& expected, const std::string& seen) {
  std::printf("| %-34s | %-22s | %-22s |\n", name, expected.c_str(), seen.c_str());
  std::fflush(stdout);
}

}  // namespace

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
       "not installed"},
      {"file refused for ever", R"({"on":"file:alpha.cab","call":0,"status":403})", -1,
       "not installed"},
      {"file missing", R"({"on":"file:alpha.cab","call":0,"status":404})", -1, "not installed"},
      {"reports refused", R"({"on":"installProgress","call":0,"status":500})", 0, "installed"},
      {"reports answered with garbage", R"({"on":"downloadProgress","call":0,"garbage":true})", 0,
       "installed"},
      {"file list not to be had", R"({"on":"downloadRequest","call":0,"status":404})", 404, ""},
  });
  for (const FaultRow& row : rows) {
    Lab lab({{"alpha"}});
    lab.Fault(row.fault);
    const RunResult run = lab.Run("install");
    const auto seen = static_cast<int>(run.json["code"].asLargestInt());
    EXPECT_EQ(seen, row.code) << row.name << run.errors;
    EXPECT_EQ(StatusOf(run, "alpha"), row.status) << row.name;
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
  EXPECT_EQ(run.exitStatus, 1) << run.errors;
  EXPECT_EQ(run.json["code"].asInt(), 47);
  EXPECT_EQ(StatusOf(run, "slow"), "not installed");
  EXPECT_NE(lab.LogText("TolmarAgent.log").find("Installation cancelled by CancelEvent"),
            std::string::npos);
}

TEST(Failure, CancelledDownloadEndsLongBeforeItsFile) {
  Lab lab({{"alpha"}});
  lab.Fault(R"({"on":"file:alpha.cab","call":0,"delayMs":120000})");
  const RunResult run = lab.Run("install --timeout 3", 60);
  EXPECT_EQ(run.exitStatus, 1) << run.errors;
  EXPECT_EQ(run.json["code"].asUInt(), 0xFFFFFFFFU);
  EXPECT_EQ(StatusOf(run, "alpha"), "not installed");
}

TEST(Failure, StopEndsARetryWaitAtOnce) {
  Lab lab({{"alpha"}});
  lab.Configuration()["retryWaitScale"] = 1.0;  // A wait of a minute at the least.
  lab.Fault(R"({"on":"entitlement","call":0,"status":503})");
  const RunResult run = lab.Run("install --timeout 2", 30);
  EXPECT_EQ(run.exitStatus, 1) << run.errors;
  EXPECT_EQ(run.json["code"].asInt(), 503);
  EXPECT_EQ(lab.Received("entitlement").size(), 1U);
  EXPECT_NE(lab.LogText("TolmarAgent.log").find("GetEntitledSoftware: _hStopEvent Signaled"),
            std::string::npos);
}
