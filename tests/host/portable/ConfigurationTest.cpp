#include "reference_host/configuration/Layers.h"

#include <gtest/gtest.h>

namespace {

using refhost::Configuration;
using refhost::Effective;
using refhost::Layer;
using refhost::ParseConfiguration;
using refhost::Source;

const std::string Mandatory = R"("baseUrl":"https://localhost:8443","realm":"demo",)"
                              R"("deviceId":"PC-1","sessionToken":"s","tokenUrl":"https://t/x")";

std::string WithMore(const std::string& more) { return "{" + Mandatory + "," + more + "}"; }

TEST(Configuration, TakesTheMandatoryKeysAndDefaults) {
  Configuration read;
  ASSERT_EQ(ParseConfiguration("c.json", "\xEF\xBB\xBF{" + Mandatory + R"(,"unknown":[1]})", read),
            "");
  EXPECT_EQ(read.baseUrl, "https://localhost:8443");
  EXPECT_TRUE(read.registered);
  EXPECT_TRUE(read.requireSignedPackages);
  EXPECT_TRUE(read.downloadFolder.empty());
  EXPECT_EQ(read.processTimeoutSeconds, 600U);
  EXPECT_EQ(read.maxCheckScripts, 0U);
  EXPECT_EQ(read.installerSession, refhost::InstallerSession::User);
  EXPECT_EQ(read.retryWaitScale, 1.0);
}

TEST(Configuration, TakesAndNormalisesTheOptionalKeys) {
  Configuration read;
  const std::string thumbprint(64, 'A');
  ASSERT_EQ(
      ParseConfiguration(
          "c.json",
          WithMore(
              R"("registered":false,"downloadFolder":"C:\\Data\\D\u00E4\\","logFolder":"Z:/l",)"
              R"("requireSignedPackages":false,"processTimeoutSeconds":7,"logMaxBytes":4096,)"
              R"("downloadStallSeconds":9,"maxFileBytes":8589934592,"maxUnpackedBytes":1024,)"
              R"("installerSession":"service","maxCheckScripts":3,"cancelledCheckGraceSeconds":0,)"
              R"("downloadPatienceSeconds":0,"fileInUseSeconds":3,)"
              R"("serviceInstalls":"preinstall","maintenanceWindows":["Sat,Sun 00:00-24:00"],)"
              R"("deferWhileRunning":["present.exe"],)"
              R"("proxy":"proxy.example:8080","retryWaitScale":0.01,"trustedPublishers":[")" +
              thumbprint + "\"]"),
          read),
      "");
  EXPECT_FALSE(read.registered);
  EXPECT_FALSE(read.requireSignedPackages);
  EXPECT_EQ(read.downloadFolder, L"C:\\Data\\D\u00E4");
  EXPECT_EQ(read.logFolder, L"Z:\\l");
  EXPECT_EQ(read.processTimeoutSeconds, 7U);
  EXPECT_EQ(read.installerSession, refhost::InstallerSession::Service);
  EXPECT_EQ(read.maxCheckScripts, 3U);
  EXPECT_EQ(read.cancelledCheckGraceSeconds, 0U);
  EXPECT_EQ(read.downloadStallSeconds, 9U);
  EXPECT_EQ(read.downloadPatienceSeconds, 0U);
  EXPECT_EQ(read.fileInUseSeconds, 3U);
  EXPECT_EQ(read.maxFileBytes, 8589934592U);
  EXPECT_EQ(read.maxUnpackedBytes, 1024U);
  EXPECT_EQ(read.logMaxBytes, 4096U);
  EXPECT_EQ(read.retryWaitScale, 0.01);
  EXPECT_EQ(read.serviceInstalls, refhost::ServiceInstalls::Preinstall);
  EXPECT_EQ(read.maintenanceWindows.at(0).days, 0x60U);
  EXPECT_EQ(read.deferWhileRunning, std::vector<std::string>{"present.exe"});
  EXPECT_EQ(read.proxy, L"proxy.example:8080");
  EXPECT_EQ(read.trustedPublishers, std::vector<std::string>{std::string(64, 'a')});
}

TEST(Configuration, AMistakeIsOneLineThatNamesFileAndKey) {
  const struct {
    std::string json;
    const char* named;
  } rows[] = {
      {R"({"baseUrl":"https://h"})", "\"realm\" is missing"},
      {WithMore(R"("proxy":"http://proxy:8080")"), "\"proxy\" must be a host and a port"},
      {WithMore(R"("proxy":"user:word@proxy:8080")"), "\"proxy\" must be a host"},
      {WithMore(R"("proxy":"one:1 two:2")"), "\"proxy\" must be a host"},
      {WithMore(R"("registered":1)"), "\"registered\" must be true or false"},
      {WithMore(R"("logFolder":true)"), "\"logFolder\" must be a text"},
      {WithMore(R"("downloadFolder":"C:\\")"), "\"downloadFolder\""},
      {WithMore(R"("downloadFolder":"C:\\a\\..\\b")"), "\"downloadFolder\""},
      {WithMore(R"("downloadFolder":"relative\\x")"), "\"downloadFolder\""},
      {WithMore(R"("processTimeoutSeconds":0)"), "\"processTimeoutSeconds\""},
      {WithMore(R"("processTimeoutSeconds":-1)"), "\"processTimeoutSeconds\""},
      {WithMore(R"("maxCheckScripts":0)"), "\"maxCheckScripts\""},
      {WithMore(R"("cancelledCheckGraceSeconds":3601)"), "\"cancelledCheckGraceSeconds\""},
      {WithMore(R"("installerSession":"users")"),
       "\"installerSession\" must be \"user\" or \"service\""},
      {WithMore(R"("logMaxBytes":"1")"), "\"logMaxBytes\""},
      {WithMore(R"("requestTimeoutSeconds":3601)"), "\"requestTimeoutSeconds\""},
      {WithMore(R"("installerTimeoutSeconds":0)"), "\"installerTimeoutSeconds\""},
      {WithMore(R"("downloadStallSeconds":86401)"), "\"downloadStallSeconds\""},
      {WithMore(R"("downloadPatienceSeconds":86401)"), "\"downloadPatienceSeconds\""},
      {WithMore(R"("fileInUseSeconds":3601)"), "\"fileInUseSeconds\""},
      {WithMore(R"("maxFileBytes":9007199254740992)"), "\"maxFileBytes\" must be a whole number"},
      {WithMore(R"("maxUnpackedBytes":1023)"), "\"maxUnpackedBytes\""},
      {WithMore(R"("retryWaitScale":2)"), "\"retryWaitScale\""},
      {WithMore(R"("serviceInstalls":"some")"), "must be \"all\", \"preinstall\" or \"none\""},
      {WithMore(R"("maintenanceWindows":["Mon 5-6"])"), "\"maintenanceWindows\" must list times"},
      {WithMore(R"("deferWhileRunning":["C:\\a.exe"])"), "\"deferWhileRunning\" must list names"},
      {WithMore(R"("trustedPublishers":"x")"), "\"trustedPublishers\""},
      {WithMore(R"("trustedPublishers":[1])"), "\"trustedPublishers\""},
      {WithMore(R"("trustedPublishers":["AB"])"), "\"trustedPublishers\""},
      {R"({"baseUrl":"http://cloud.example"})", "\"baseUrl\" must be an https URL"},
      {R"({"baseUrl":""})", "\"baseUrl\" must not be empty"},
      {"{" + Mandatory + ",\"realm\":\"again\"}", "realm"},
      {"{\"baseUrl\":\n \"x", "Line 2, Column 2"},
      {"[]", "one JSON object"},
      {"", "not well-formed JSON"},
      {std::string(5000, '['), "not well-formed JSON"},
  };
  for (const auto& row : rows) {
    Configuration untouched;
    untouched.realm = "before";
    const std::string error = ParseConfiguration("c.json", row.json, untouched);
    EXPECT_EQ(error.find("c.json: "), 0U) << row.json;
    EXPECT_NE(error.find(row.named), std::string::npos) << error;
    EXPECT_EQ(error.find('\n'), std::string::npos) << error;
    EXPECT_EQ(untouched.realm, "before");
  }
}

Layer LayerOf(Source source, const std::string& json) {
  Layer layer{source, NameOf(source)};
  EXPECT_EQ(ReadValues(json, layer), "");
  return layer;
}

TEST(Configuration, IsSharedWithItsSourcesAndWithoutSecrets) {
  std::string json = WithMore(R"("apiKey":"s3","logMaxBytes":4096)");
  json.replace(json.find("https://t/x"), 11, "https://t/x?key=s4");
  Effective effective;
  ASSERT_EQ(Combine({LayerOf(Source::File, json)}, effective), "");
  const Json::Value shared = refhost::Shareable(effective);
  std::string lines;
  for (const Json::Value& setting : shared) {
    lines += setting["key"].asString() + " " + setting["value"].toStyledString() + " " +
             setting["source"].asString() + "\n";
  }
  for (const char* kept :
       {"sessionToken \"[left out]\"\n file", "\"https://t/x\"", "logMaxBytes 4096\n file",
        "pollSeconds 14400\n default", "proxy null\n default", "trustedPublishers []\n default"}) {
    EXPECT_NE(lines.find(kept), std::string::npos) << kept << lines;
  }
  for (const char* secret : {"\"s\"", "s3", "s4", "apiKey"}) {
    EXPECT_EQ(lines.find(secret), std::string::npos) << secret << lines;
  }
}

TEST(Configuration, AStrongerLayerCoversAWeakerOneKeyByKey) {
  const std::vector<Layer> layers{
      LayerOf(Source::Policy, R"({"realm":"fleet","pollSeconds":900,"hobby":1})"),
      LayerOf(Source::Store, R"({"sessionToken":"kept"})"),
      LayerOf(Source::File, WithMore(R"("pollSeconds":"often","titleAttempts":5)"))};
  Effective effective;
  ASSERT_EQ(Combine(layers, effective), "");
  EXPECT_EQ(effective.configuration.realm, "fleet");
  EXPECT_EQ(effective.configuration.pollSeconds, 900U);
  EXPECT_EQ(effective.configuration.sessionToken, "kept");
  EXPECT_EQ(effective.configuration.titleAttempts, 5U);
  EXPECT_EQ(effective.sources.at("realm"), Source::Policy);
  EXPECT_EQ(effective.sources.at("deviceId"), Source::File);
  EXPECT_EQ(effective.sources.count("proxy"), 0U);
  EXPECT_EQ(refhost::ComplaintsOver(layers),
            (std::vector<std::string>{
                "policy: key \"hobby\" is not known",
                "file: key \"pollSeconds\" must be a whole number from 1 to 604800"}));

  const struct {
    const char* policy;
    const char* error;
  } rows[] = {{R"({"sessionToken":"t"})", "policy: key \"sessionToken\" is a secret"},
              {R"({"titleAttempts":0})", "policy: key \"titleAttempts\" must be"},
              {R"({"realm":null})", "policy: key \"realm\" must be a text"}};
  for (const auto& row : rows) {
    const std::vector<Layer> with{LayerOf(Source::Policy, row.policy),
                                  LayerOf(Source::File, "{" + Mandatory + "}")};
    EXPECT_EQ(Combine(with, effective).find(row.error), 0U) << Combine(with, effective);
  }
  EXPECT_EQ(Combine({layers[0], LayerOf(Source::File, R"({"baseUrl":"https://h"})")}, effective),
            "file: key \"deviceId\" is missing");
}

TEST(Configuration, TakesValuesAsTheRegistryHasThem) {
  using Texts = std::vector<std::string>;
  const struct {
    const char* key;
    refhost::PolicyValue value;
    Json::Value meant;
  } rows[] = {{"registered", 1ull, true},
              {"registered", 2ull, Json::UInt64{2}},
              {"registered", std::string("false"), false},
              {"pollSeconds", 900ull, Json::UInt64{900}},
              {"pollSeconds", std::string("900"), 900},
              {"pollSeconds", std::string("15 min"), "15 min"},
              {"retryWaitScale", std::string("0.5"), 0.5},
              {"realm", std::string("7"), "7"},
              {"realm", {}, Json::Value()},
              {"deferWhileRunning", Texts{}, Json::Value(Json::arrayValue)},
              {"deferWhileRunning", std::string(), Json::Value(Json::arrayValue)}};
  for (const auto& row : rows) {
    EXPECT_EQ(FromPolicy(*refhost::FindKey(row.key), row.value), row.meant) << row.key;
  }
  const Json::Value two = FromPolicy(*refhost::FindKey("deferWhileRunning"), Texts{"a", "b"});
  EXPECT_EQ(two[1], "b");
}

TEST(MaintenanceWindow, IsOpenByDayAndMinuteOverMidnightToo) {
  constexpr int Noon = 12 * 60;
  const struct {
    const char* text;
    int day, minute;
    bool isOpen;
  } rows[] = {
      {"Mon-Fri 22:00-05:00", 0, 22 * 60, true},
      {"Mon-Fri 22:00-05:00", 0, 22 * 60 - 1, false},
      {"Mon-Fri 22:00-05:00", 5, 5 * 60 - 1, true},
      {"Mon-Fri 22:00-05:00", 5, 5 * 60, false},
      {"Mon-Fri 22:00-05:00", 0, 0, false},
      {"Sun 22:00-05:00", 0, 0, true},
      {"Sat,Sun 00:00-24:00", 6, 1439, true},
      {"Sat,Sun 00:00-24:00", 0, 0, false},
      {"Fri-Mon 11:00-13:00", 0, Noon, true},
      {"Fri-Mon 11:00-13:00", 1, Noon, false},
      {"11:00-13:00", 3, Noon, true},
  };
  for (const auto& row : rows) {
    const auto window = refhost::ParseWindow(row.text);
    ASSERT_TRUE(window) << row.text;
    EXPECT_EQ(IsOpen(std::vector{*window}, row.day, row.minute), row.isOpen)
        << row.text << " " << row.day << " " << row.minute;
    EXPECT_EQ(TextOfWindow(*refhost::ParseWindow(TextOfWindow(*window))), TextOfWindow(*window));
  }
  EXPECT_TRUE(refhost::IsOpen({}, 0, 0));
  for (const char* text : {"", "Mon", "Mon ", "mon 10:00-11:00", "Mon- 10:00-11:00", "10:00-10:00",
                           "24:00-01:00", "10:00-24:01", "10:60-11:00", "10:00-11:00 ", "1:00-2:00",
                           "Mon,10:00-11:00", "22:00-00:00"}) {
    EXPECT_FALSE(refhost::ParseWindow(text)) << text;
  }
}

TEST(Configuration, AServiceFollowsTheMachinesValueAlone) {
  EXPECT_EQ(refhost::FileToRead(false, L"variable", L"machine"), L"variable");
  EXPECT_EQ(refhost::FileToRead(false, L"", L"machine"), L"machine");
  EXPECT_EQ(refhost::FileToRead(true, L"variable", L"machine"), L"machine");
  EXPECT_EQ(refhost::FileToRead(true, L"variable", L""), L"");
}

}  // namespace
