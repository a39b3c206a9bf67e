#include <gtest/gtest.h>
#include <json/writer.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <functional>
#include <set>

#include "tests/e2e/Lab.h"

namespace {

/// @return the checks of a doctor's report with that status, "id " after "id ".
std::string ChecksWith(const std::string& status, const RunResult& run) {
  std::string ids;
  for (const Json::Value& finding : run.json["checks"]) {
    if (finding["status"].asString() == status) ids += finding["id"].asString() + " ";
  }
  return ids;
}

Json::Value FileEntry(const char* name, const char* url, std::int64_t size) {
  Json::Value file;
  file["name"] = name;
  file["downloadUrl"] = url;
  file["size"] = Json::Int64{size};
  file["crc"] = "";
  return file;
}

}  // namespace

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

TEST(CommandLine, WhatOnlyReadsChangesNothing) {
  Lab lab({{"beta", true}});
  for (const char* command : {"entitled", "list", "files T-beta M-beta", "status"}) {
    EXPECT_EQ(lab.Run(command).exitStatus, 0) << command;
  }
  EXPECT_FALSE(lab.IsInstalled("beta"));
  EXPECT_TRUE(lab.Received("downloadProgress").empty());
  EXPECT_TRUE(lab.Received("installProgress").empty());
  for (const Json::Value& file : lab.Received("file")) {
    EXPECT_NE(file["name"].asString(), "beta.cab");
  }
}

TEST(CommandLine, PlanTellsWhatAnInstallationWouldDoAndDoesNothing) {
  Lab lab({{"beta", true}, {"alpha"}});
  const std::set<std::string> asked{"token", "hasEntitlement", "entitlement", "downloadRequest"};
  const RunResult plan = lab.Run("plan --no-checks");
  EXPECT_EQ(plan.exitStatus, 0) << plan.errors;
  for (const std::string& type : lab.ReceivedTypes()) EXPECT_EQ(asked.count(type), 1U) << type;
  EXPECT_FALSE(std::filesystem::exists(lab.DriveC() / "lab" / "download"));
  const Json::Value& result = plan.json["result"];
  const Json::Value& beta = result["titles"][0];
  EXPECT_EQ(beta["status"].asString(), "not asked");
  std::int64_t bytes = 0;
  for (const Json::Value& file : beta["modules"][0]["files"]) bytes += file["size"].asInt64();
  EXPECT_GT(bytes, 300000);
  EXPECT_EQ(beta["bytesToFetch"].asInt64(), bytes);
  const std::int64_t alpha = result["titles"][1]["bytesToFetch"].asInt64();
  EXPECT_EQ(result["bytesToFetch"].asInt64(), bytes + alpha);
  EXPECT_EQ(result["bytesNeeded"].asInt64(), 2 * std::max(bytes, alpha));
  EXPECT_TRUE(result["isEnough"].asBool());
  EXPECT_EQ(result["refusals"].asInt(), 0);
  EXPECT_EQ(plan.output.find("signature"), std::string::npos);

  const RunResult checked = lab.Run("plan");
  EXPECT_EQ(checked.json["result"]["titles"][0]["status"].asString(), "not installed");
  EXPECT_EQ(checked.json["result"]["bytesToFetch"].asInt64(), bytes + alpha);
  for (const Json::Value& file : lab.Received("file")) {
    EXPECT_NE(file["name"].asString(), "beta.cab");
  }
  EXPECT_TRUE(lab.Received("downloadProgress").empty());
  EXPECT_FALSE(lab.IsInstalled("beta"));

  // What is left over spares the first title's fetching; then the folder is deleted.
  for (const char* name : {"alpha.cab", "beta.cab"}) {
    std::ofstream(lab.DriveC() / "lab" / "download" / name) << "x";
  }
  const RunResult again = lab.Run("plan --no-checks");
  EXPECT_LT(again.json["result"]["titles"][0]["bytesToFetch"].asInt64(), 1000);
  EXPECT_EQ(again.json["result"]["titles"][1]["bytesToFetch"].asInt64(), alpha);
}

TEST(CommandLine, PlanNamesWhatTheHostWouldRefuse) {
  const struct {
    const char* url;
    const char* name;
    std::int64_t size;
    int code;
    int refusals;
    const char* said;
  } rows[] = {
      {"https://example.com/a?secret", "a.cab", 2'000'000'000, 0, 0, ""},
      {"http://example.com/a?secret", "a.cab", 1, 0, 1, "neither https nor a loopback"},
      {"https://example.com/a?secret", "..\\a.cab", 1, 0, 1, "a.cab is refused"},
      {"https://example.com/a?secret", "CHECK.ps1", 1, 0, 1, "heck.ps1 is refused"},
      {"https://example.com/a?secret", "a.cab", 3'000'000'000, 39, 0, ""},
  };
  for (const auto& row : rows) {
    Lab lab({{"alpha"}});
    Json::Value reply;
    reply["result"]["code"] = 0;
    Json::Value& files = reply["result"]["fileList"];
    files.append(FileEntry("check.ps1", "https://example.com/check", 2'000'000'000));
    files.append(FileEntry(row.name, row.url, row.size));
    Json::Value fault;
    fault["on"] = "downloadRequest";
    fault["call"] = 0;
    fault["reply"] = Json::writeString(Json::StreamWriterBuilder(), reply);
    lab.Fault(Json::writeString(Json::StreamWriterBuilder(), fault));
    const RunResult run = lab.Run("plan --no-checks");
    EXPECT_EQ(run.json["code"].asInt(), row.code) << run.output;
    EXPECT_EQ(run.json["result"]["refusals"].asInt(), row.refusals) << run.output;
    EXPECT_NE(run.output.find(row.said), std::string::npos) << row.said << run.output;
    EXPECT_EQ(run.output.find("secret"), std::string::npos) << run.output;
    if (row.refusals + row.code != 0) continue;
    EXPECT_EQ(run.json["result"]["bytesToFetch"].asInt64(), 4'000'000'000);
  }
}

TEST(CommandLine, DoctorTellsWhichCheckFails) {
  const struct {
    const char* name;
    std::function<void(Lab&)> spoil;
    int exitStatus;
    const char* failing;
    const char* skipped;
  } rows[] = {
      {"healthy", [](Lab&) {}, 0, "", ""},
      {"dead service",
       [](Lab& lab) {
         lab.Configuration()["baseUrl"] = "https://localhost:1";
         lab.Configuration()["tokenUrl"] = "https://localhost:1/token";
       },
       1, "endpoint token ", "clock "},
      {"wrong certificate",
       [](Lab& lab) {
         std::string url = lab.Configuration()["baseUrl"].asString();
         lab.Configuration()["baseUrl"] = url.replace(url.find("localhost"), 9, "127.0.0.1");
       },
       1, "endpoint ", "clock "},
      {"wrong session token", [](Lab& lab) { lab.Configuration()["sessionToken"] = "another"; }, 1,
       "token ", ""},
      {"unregistered", [](Lab& lab) { lab.Configuration()["registered"] = false; }, 1,
       "registered ", ""},
      {"broken configuration", [](Lab& lab) { lab.Configuration()["realm"] = 5; }, 1,
       "configuration ", "download-folder log-folder registered endpoint token clock free-space "},
  };
  for (const auto& row : rows) {
    Lab lab({{"alpha"}});
    row.spoil(lab);
    const RunResult run = lab.Run("doctor", 30);
    EXPECT_EQ(run.exitStatus, row.exitStatus) << row.name << run.output;
    EXPECT_EQ(ChecksWith("fail", run), row.failing) << row.name << run.output;
    EXPECT_EQ(ChecksWith("skipped", run), row.skipped) << row.name << run.output;
    EXPECT_EQ(run.json["checks"][0]["id"].asString(), "configuration") << row.name;
    for (const char* folder : {"download", "log"}) {
      EXPECT_FALSE(std::filesystem::exists(lab.DriveC() / "lab" / folder)) << row.name;
    }
    EXPECT_EQ(run.output.find("session-of"), std::string::npos) << row.name;
  }
}

TEST(CommandLine, ATimeOutReachesTheStartToo) {
  Lab lab({{"alpha"}});
  lab.Configuration()["retryWaitScale"] = 1.0;  // A wait of a minute at the least.
  lab.Fault(R"({"on":"hasEntitlement","call":0,"status":503})");
  for (const char* command : {"run --for 2", "install --timeout 2", "configure --timeout 2"}) {
    const RunResult run = lab.Run(command, 20);
    EXPECT_EQ(run.exitStatus, 4) << command;
    EXPECT_NE(run.errors.find("timed out while"), std::string::npos) << command << run.errors;
  }
}

TEST(CommandLine, CtrlCEndsADownloadInItsOrder) {
  Lab lab({{"alpha"}});
  lab.Fault(R"({"on":"file:alpha.cab","delayMs":60000})");
  const RunResult run = lab.RunToCtrlC("tolmarctl", "install", [&] {
    return lab.LogText("ZLT.log").find("begins, files") != std::string::npos;
  });
  EXPECT_EQ(run.exitStatus, 3) << run.errors;
  EXPECT_NE(run.output.find("not installed"), std::string::npos) << run.output;
  EXPECT_FALSE(lab.IsInstalled("alpha"));
}

TEST(CommandLine, ConfigureSaysThatItGaveUp) {
  Lab lab({{"slow", true}});
  const RunResult run = lab.Run("configure --timeout 4", 30);
  EXPECT_EQ(run.exitStatus, 4) << run.errors;
  EXPECT_EQ(StatusOf(run, "slow"), "not installed");
}

TEST(CommandLine, AReplyOfAnotherShapeIsShownAndNoSuccess) {
  Lab lab({{"alpha"}});
  lab.Fault(
      R"({"on":"entitlement","reply":"{\"result\":{\"code\":0,\"swList\":[5 /* note */,\"\u00fc\"]}}"})");
  const RunResult run = lab.Run("list");
  EXPECT_EQ(run.exitStatus, 1) << run.output;
  EXPECT_EQ(
      run.output,
      "{\"code\":0,\"command\":\"list\",\"result\":{\"code\":0,\"swList\":[5,\"\\u00fc\"]}}\r\n");
  EXPECT_NE(run.errors.find("not as agreed"), std::string::npos);
}

TEST(CommandLine, PeopleGetTablesOnOutputAndComplaintsOnError) {
  Lab lab({{"alpha", true}, {OddName}});
  const RunResult list = lab.RunForPeople("list");
  // A column is as wide as its widest text is on a terminal.
  const std::string odd = std::string("T-") + OddName;
  const std::string blanks(odd.size() - 1 - std::string("T-alpha").size(),
                           ' ');  // ü has two bytes.
  EXPECT_EQ(list.output.find(odd + "  " + OddName + "\r\n"), list.output.rfind(odd)) << list.output;
  EXPECT_NE(list.output.find("T-alpha" + blanks + "  alpha"), std::string::npos) << list.output;
  EXPECT_EQ(list.output.find('\x1b'), std::string::npos);
  EXPECT_EQ(list.errors, "");

  const RunResult quiet = lab.RunForPeople("list --quiet");
  EXPECT_EQ(quiet.exitStatus, 0);
  EXPECT_EQ(quiet.output + quiet.errors, "");
  const RunResult refused = lab.RunForPeople("files T-alpha M-none --quiet");
  EXPECT_EQ(refused.exitStatus, 1);
  EXPECT_EQ(refused.output, "");
  EXPECT_NE(refused.errors.find("files: code 36"), std::string::npos) << refused.errors;
  EXPECT_NE(refused.errors.find("do:"), std::string::npos) << refused.errors;
}

TEST(CommandLine, ATerminalGetsColoursUnlessTheyAreDeclined) {
  Lab lab({{"alpha"}});
  constexpr const char* Yellow = "\x1b[33mnot installed";
  const std::string coloured = lab.RunOnTerminal("TOLMAR_AS_ON_WINDOWS=1", "status");
  EXPECT_NE(coloured.find(Yellow), std::string::npos) << coloured;
  const std::string plain = lab.RunOnTerminal("TOLMAR_AS_ON_WINDOWS=1 NO_COLOR=1", "status");
  EXPECT_NE(plain.find("not installed"), std::string::npos) << plain;
  EXPECT_EQ(plain.find(Yellow), std::string::npos);
}

TEST(CommandLine, VerboseShowsBothLogsOfThisRunOnly) {
  Lab lab({{"alpha"}});
  lab.Run("list");
  const std::size_t size = lab.LogText("TolmarAgent.log").size();
  lab.Configuration()["logMaxBytes"] =
      static_cast<Json::UInt64>(size + 3000);  // Rotated meanwhile.
  const RunResult run = lab.RunForPeople("install --verbose");
  EXPECT_EQ(run.exitStatus, 0);
  for (const char* line :
       {"Host suite started", "D TolmarAgent::GetEntitledSoftware: Entry",
        "InstallModule: Status is Installed", "exit code 0 after", "is done after"}) {
    EXPECT_NE(run.errors.find(line), std::string::npos) << line << run.errors;
  }
  EXPECT_EQ(run.errors.find("Host suite started"), run.errors.rfind("Host suite started"));
  EXPECT_EQ(run.output.find("Host suite"), std::string::npos);
  EXPECT_NE(lab.LogText("TolmarAgent.log.1"), "");
}

TEST(CommandLine, ProgramsGetProgressLineByLine) {
  Lab lab({{"alpha"}});
  lab.Fault(R"({"on":"file:check-alpha.ps1","call":1,"delayMs":2000})");  // So that it is seen.
  const RunResult run = lab.Run("install --progress=jsonl");
  EXPECT_EQ(run.exitStatus, 0) << run.errors;
  EXPECT_EQ(run.json["command"].asString(), "install");
  EXPECT_NE(run.output.find("\"totalBytes\":30"), std::string::npos) << run.output;
  EXPECT_NE(run.output.find("\"bytesPerSecond\""), std::string::npos) << run.output;
  EXPECT_LT(run.output.find("\"status\":\"downloading\""), run.output.find("\"command\""));
}

TEST(CommandLine, ExplainsCodesAndCauses) {
  Lab lab({});
  const struct {
    const char* subject;
    int exitStatus;
    const char* id;
  } rows[] = {{"30", 0, "token.none"},
              {"0xFFFFFFFF", 0, "title.nothing-done"},
              {"package.publisher", 0, "package.publisher"},
              {"99", 2, ""},
              {"nonsense", 2, ""}};
  for (const auto& row : rows) {
    const RunResult run = lab.Run(std::string("explain ") + row.subject);
    EXPECT_EQ(run.exitStatus, row.exitStatus) << row.subject;
    EXPECT_EQ(run.json["causes"][0]["id"].asString(), row.id) << row.subject;
  }
}

TEST(CommandLine, ResidentHostEndsAfterItsTime) {
  Lab lab({{"beta", true}});
  const RunResult run = lab.Run("run --for 3");
  EXPECT_EQ(run.exitStatus, 0) << run.errors;
  EXPECT_EQ(run.json["code"].asInt(), 0);
}

TEST(CommandLine, ServiceThatRefusesTheDeviceGivesItsCode) {
  Lab lab({{"alpha"}});
  lab.Configuration()["sessionToken"] = "another";
  const RunResult list = lab.Run("list");
  EXPECT_EQ(list.json["code"].asInt(), 30);
  EXPECT_EQ(list.json["cause"].asString(), "token.none");
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
