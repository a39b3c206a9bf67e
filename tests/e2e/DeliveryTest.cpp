#include <gtest/gtest.h>
#include <httplib.h>

#include <algorithm>
#include <regex>

#include "tests/e2e/Lab.h"

using Types = std::vector<std::string>;

namespace {

const Json::Value& Parameters(const Json::Value& record) { return record["body"]["parameters"]; }

/// @return what every token of the simulator begins with.
std::string HeaderOfATokenOf(Lab& lab) {
  const std::string url = lab.Configuration()["tokenUrl"].asString();
  httplib::SSLClient client("localhost", std::stoi(url.substr(url.rfind(':') + 1)));
  client.enable_server_certificate_verification(false);
  const auto reply =
      client.Post("/token", R"({"sessionToken":"session-of-the-lab"})", "application/json");
  const std::string jwt = reply ? reply->body.substr(reply->body.find("eyJ")) : "";
  return jwt.substr(0, jwt.find('.'));
}

}  // namespace

TEST(Delivery, FirstInstallationDeliversEveryModuleAndReportsIt) {
  Lab lab({{"alpha"}, {"twins", false, {"beta", "gamma"}}});
  const RunResult run = lab.Run("install");
  EXPECT_EQ(run.exitStatus, 0) << run.errors;
  EXPECT_EQ(run.json["command"].asString(), "install");
  EXPECT_EQ(run.json["code"].asInt(), 0);
  EXPECT_EQ(StatusOf(run, "alpha"), "installed");
  EXPECT_EQ(StatusOf(run, "twins"), "installed");
  for (const char* name : {"alpha", "beta", "gamma"}) EXPECT_TRUE(lab.IsInstalled(name)) << name;
  EXPECT_FALSE(std::filesystem::exists(lab.DriveC() / "lab" / "download"));

  // Files of one job arrive in an order of the download service's own.
  Types types = lab.ReceivedTypes();
  std::erase_if(types, [](const std::string& type) { return type.starts_with("file "); });
  const Types alpha{"downloadRequest", "downloadProgress", "downloadProgress", "installProgress",
                    "installProgress"};
  const Types beta{"downloadRequest", "downloadRequest", "downloadProgress", "installProgress",
                   "installProgress"};
  const Types gamma{"downloadProgress", "installProgress", "installProgress"};
  Types expected{"hasEntitlement", "entitlement"};
  for (const Types& part : {alpha, beta, gamma})
    expected.insert(expected.end(), part.begin(), part.end());
  EXPECT_EQ(types, expected);

  const std::vector<Json::Value> installs = lab.Received("installProgress");
  ASSERT_EQ(installs.size(), 6U);
  EXPECT_EQ(Parameters(installs[4])["l1FruPn"].asString(), "T-twins");
  EXPECT_EQ(Parameters(installs[4])["moduleFruPn"].asString(), "M-gamma");
  EXPECT_EQ(Parameters(installs[4])["action"].asInt(), 0);
  EXPECT_EQ(Parameters(installs[5])["action"].asInt(), 2);
  const std::vector<Json::Value> downloads = lab.Received("downloadProgress");
  EXPECT_EQ(Parameters(downloads[0])["fileName"].asString(), "alpha.cab");
  EXPECT_EQ(downloads[0]["query"].asString(), "deviceId=PC-0001");
}

TEST(Delivery, SecondRunFindsAllInstalledByTheCheckScriptsAlone) {
  Lab lab({{"alpha"}, {"beta"}});
  EXPECT_EQ(StatusOf(lab.Run("status"), "beta"), "not installed");
  ASSERT_EQ(lab.Run("install").exitStatus, 0);
  const RunResult second = lab.Run("status");
  EXPECT_EQ(second.exitStatus, 0);
  EXPECT_EQ(StatusOf(second, "alpha"), "installed");
  EXPECT_EQ(StatusOf(second, "beta"), "installed");
  const Types types = lab.ReceivedTypes();
  EXPECT_EQ(std::count(types.begin(), types.end(), "file alpha.cab"), 1);
}

TEST(Delivery, EntitlementIsAnsweredAndPublishedInTheRegistry) {
  Lab none({});
  const RunResult no = none.Run("entitled");
  EXPECT_EQ(no.exitStatus, 0) << no.errors;
  EXPECT_EQ(no.json["hasEntitlement"], Json::Value(false));
  EXPECT_EQ(none.EntitledValue(), "0x0");
  Lab some({{"alpha"}});
  EXPECT_EQ(some.Run("entitled").json["hasEntitlement"], Json::Value(true));
  EXPECT_EQ(some.EntitledValue(), "0x1");
}

TEST(Delivery, StartOfARegisteredDeviceInstallsPreinstallTitlesOnly) {
  Lab lab({{"alpha"}, {"beta", true}});
  // The worker is at work since the start; the announcement finds nothing new to ask.
  EXPECT_EQ(lab.Run("configure").exitStatus, 0);
  EXPECT_EQ(lab.Received("hasEntitlement").size(), 1U);
  EXPECT_TRUE(lab.IsInstalled("beta"));
  EXPECT_FALSE(lab.IsInstalled("alpha"));
}

TEST(Delivery, DeviceConfigureAsksAgainAndInstallsPreinstallTitles) {
  Lab lab({{"alpha"}, {"beta", true}});
  lab.Fault(R"({"on":"hasEntitlement","call":1,"status":404})");
  const RunResult run = lab.Run("configure");
  EXPECT_EQ(run.exitStatus, 0) << run.output << run.errors;
  EXPECT_EQ(lab.Received("hasEntitlement").size(), 2U);
  EXPECT_EQ(StatusOf(run, "beta"), "installed");
  EXPECT_EQ(StatusOf(run, "alpha"), "UnKnown");
  EXPECT_TRUE(lab.IsInstalled("beta"));
  EXPECT_FALSE(lab.IsInstalled("alpha"));
  EXPECT_NE(lab.LogText("TolmarAgent.log").find("DEVICE_CONFIGURE rcvd"), std::string::npos);
  EXPECT_NE(lab.LogText("ZLT.log").find("topicID: 4, eventState: 15"), std::string::npos);
}

TEST(Delivery, AQuoteInAPartNumberIsSentAsItStandsAndRefused) {
  Lab lab({{"quo\"ted", false, {"alpha"}}, {"beta"}});
  const RunResult run = lab.Run("install");
  EXPECT_EQ(CauseOf(run, "quo\"ted"), "reply.http") << run.output;
  EXPECT_EQ(StatusOf(run, "beta"), "installed");
  EXPECT_EQ(
      lab.Received("downloadRequest")[0]["rawBody"].asString(),
      R"({"type":"downloadRequest","parameters": { "deviceId":"PC-0001","l1FruPn":"T-quo"ted","moduleFruPn":"M-alpha"}})");
}

TEST(Delivery, LogsHoldNoSecrets) {
  Lab lab({{"alpha"}, {"beta"}});
  for (const char* fault : {R"({"on":"token","call":1,"status":503})",
                            R"({"on":"downloadRequest","call":1,"expired":true})",
                            R"({"on":"downloadRequest","call":4,"garbage":true})",
                            R"({"on":"entitlement","call":1,"resultCode":5})",
                            R"({"on":"file:alpha.cab","call":1,"dropAfter":1000})",
                            R"({"on":"file:check-beta.ps1","call":0,"status":403})"}) {
    lab.Fault(fault);
  }
  lab.Run("status");
  ASSERT_EQ(StatusOf(lab.Run("install"), "alpha"), "installed");
  // The header of every token, its other parts by how they look, and those of a signed address.
  const std::regex secret(HeaderOfATokenOf(lab) +
                          "|session-of-the-lab|eyJ|[A-Za-z0-9_-]{43}|signature=|expires=");
  const std::regex thumbprint("\"thumbprint\":\"[0-9a-f]{64}\"");
  std::size_t bytes = 0;
  const auto folder = lab.DriveC() / "lab" / "log";
  for (const auto& file : std::filesystem::recursive_directory_iterator(folder)) {
    // A publisher's thumbprint looks like a part of a token and is none.
    const std::string text =
        std::regex_replace(lab.LogText(file.path().filename()), thumbprint, "");
    bytes += text.size();
    std::smatch found;
    EXPECT_FALSE(std::regex_search(text, found, secret)) << file.path() << " holds " << found.str();
  }
  EXPECT_GT(bytes, 10000U);
}
