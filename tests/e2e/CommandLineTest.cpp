#include <gtest/gtest.h>

#include <array>

#include "tests/e2e/Lab.h"

TEST(CommandLine, ListAndFilesPrintTheServicesDocuments) {
  Lab lab({{"alpha"}});
  const RunResult list = lab.Run("list");
  EXPECT_EQ(list.exitStatus, 0) << list.errors;
  EXPECT_EQ(list.json["result"]["swList"][0]["moduleList"][0]["moduleFruPn"].asString(), "M-alpha");
  const RunResult files = lab.Run("files T-alpha M-alpha");
  EXPECT_EQ(files.exitStatus, 0);
  EXPECT_EQ(files.json["result"]["fileList"].size(), 2U);
  const RunResult unknown = lab.Run("files T-alpha M-none");
  EXPECT_EQ(unknown.exitStatus, 1);
  EXPECT_EQ(unknown.json["code"].asInt(), 36);
}

TEST(CommandLine, ResidentHostEndsAfterItsTime) {
  Lab lab({{"beta", true}});
  const RunResult run = lab.Run("run --for 1");
  EXPECT_EQ(run.exitStatus, 0) << run.errors;
  EXPECT_EQ(run.json["code"].asInt(), 0);
}

TEST(CommandLine, ServiceThatRefusesTheDeviceGivesItsCode) {
  Lab lab({{"alpha"}});
  lab.Configuration()["sessionToken"] = "another";
  EXPECT_EQ(lab.Run("list").json["code"].asInt(), 30);  // No token was to be had.
  lab.Configuration()["registered"] = false;
  EXPECT_EQ(lab.Run("entitled").json["code"].asInt(), 62);
}

TEST(CommandLine, UsageAndConfigurationErrorsSayWhatIsWrong) {
  Lab lab({});
  struct Row {
    const char* key;
    Json::Value value;
    const char* arguments;
    const char* said;
  };
  const Row rows[] = {
      {"realm", "lab", "install --timeout 0", "--timeout"},
      {"realm", "lab", "", "ubcommand"},
      {"realm", "lab", "files T-alpha", "MODULEFRUPN"},
      {"realm", 5, "list", "realm"},
      {"tokenUrl", "http://example.com/token", "list", "tokenUrl"},
      {"trustedPublishers", "all", "list", "trustedPublishers"},
  };
  const Json::Value good = lab.Configuration();
  for (const Row& row : rows) {
    lab.Configuration() = good;
    lab.Configuration()[row.key] = row.value;
    const RunResult run = lab.Run(row.arguments);
    EXPECT_EQ(run.exitStatus, 2) << row.said;
    EXPECT_EQ(run.output, "") << row.said;
    EXPECT_NE(run.errors.find(row.said), std::string::npos) << run.errors;
  }
}
