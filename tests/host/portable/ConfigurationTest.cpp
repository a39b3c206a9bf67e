#include "reference_host/configuration/Configuration.h"

#include <gtest/gtest.h>

namespace {

using refhost::Configuration;
using refhost::ParseConfiguration;

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
  EXPECT_TRUE(read.installersMeetUser);
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
              R"("proxy":"proxy.example:8080","retryWaitScale":0.01,"trustedPublishers":[")" +
              thumbprint + "\"]"),
          read),
      "");
  EXPECT_FALSE(read.registered);
  EXPECT_FALSE(read.requireSignedPackages);
  EXPECT_EQ(read.downloadFolder, L"C:\\Data\\D\u00E4");
  EXPECT_EQ(read.logFolder, L"Z:\\l");
  EXPECT_EQ(read.processTimeoutSeconds, 7U);
  EXPECT_FALSE(read.installersMeetUser);
  EXPECT_EQ(read.maxCheckScripts, 3U);
  EXPECT_EQ(read.cancelledCheckGraceSeconds, 0U);
  EXPECT_EQ(read.downloadStallSeconds, 9U);
  EXPECT_EQ(read.downloadPatienceSeconds, 0U);
  EXPECT_EQ(read.fileInUseSeconds, 3U);
  EXPECT_EQ(read.maxFileBytes, 8589934592U);
  EXPECT_EQ(read.maxUnpackedBytes, 1024U);
  EXPECT_EQ(read.logMaxBytes, 4096U);
  EXPECT_EQ(read.retryWaitScale, 0.01);
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

TEST(Configuration, IsSharedWithoutSecretsAndWhatNobodyKnows) {
  std::string json = WithMore(R"("apiKey":"s3","logMaxBytes":4096)");
  json.replace(json.find("https://t/x"), 11, "https://t/x?key=s4");
  const std::string shared = refhost::ShareableConfiguration(json);
  for (const char* kept : {"[left out]", "\"https://t/x\"", "4096", "PC-1"}) {
    EXPECT_NE(shared.find(kept), std::string::npos) << kept << shared;
  }
  for (const char* secret : {"\"s\"", "s3", "s4", "apiKey"}) {
    EXPECT_EQ(shared.find(secret), std::string::npos) << secret << shared;
  }
  EXPECT_EQ(refhost::ShareableConfiguration("{\"sessionToken\":\"s"), "no usable configuration\n");
}

TEST(Configuration, AServiceFollowsTheMachinesValueAlone) {
  EXPECT_EQ(refhost::FileToRead(false, L"variable", L"machine"), L"variable");
  EXPECT_EQ(refhost::FileToRead(false, L"", L"machine"), L"machine");
  EXPECT_EQ(refhost::FileToRead(true, L"variable", L"machine"), L"machine");
  EXPECT_EQ(refhost::FileToRead(true, L"variable", L""), L"");
}

}  // namespace
