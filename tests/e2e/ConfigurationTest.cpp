#include <gtest/gtest.h>

#include "tests/e2e/Lab.h"

namespace {

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

/// @return "VALUE from SOURCE" of a setting.
std::string Shown(const RunResult& show, const std::string& key) {
  for (const Json::Value& setting : show.json["settings"]) {
    if (setting["key"].asString() != key) continue;
    return setting["value"].asString() + " from " + setting["source"].asString();
  }
  return "nothing";
}

}  // namespace

TEST(Configuration, PolicyStandsAboveTheFileAndShowSaysSo) {
  Lab lab({{"alpha"}});
  const std::string address = lab.Configuration()["baseUrl"].asString();
  lab.Configuration()["baseUrl"] = "https://localhost:9";
  lab.Policy("baseUrl", "REG_SZ", address);
  lab.Policy("registered", "REG_DWORD", "1");
  lab.Policy("trustedPublishers", "REG_MULTI_SZ",
             std::string(64, 'a') + "\\0" + std::string(64, 'b'));
  const RunResult show = lab.Run("config show");
  EXPECT_EQ(show.exitStatus, 0) << show.errors;
  EXPECT_EQ(Shown(show, "baseUrl"), address + " from policy");
  EXPECT_EQ(Shown(show, "registered"), "true from policy");
  EXPECT_EQ(Shown(show, "deviceId"), "PC-0001 from file");
  EXPECT_EQ(Shown(show, "leaseWaitSeconds"), "600 from default");
  EXPECT_EQ(show.json["settings"][10]["value"].size(), 2U) << show.output;
  EXPECT_FALSE(Contains(show.output, "session-of-the-lab"));
  EXPECT_EQ(lab.Run("list").exitStatus, 0);
  EXPECT_EQ(lab.Run("config validate").exitStatus, 0);

  lab.Policy("pollSeconds", "REG_DWORD", "0");
  lab.Policy("colour", "REG_SZ", "red");
  const RunResult refused = lab.RunForPeople("--json list");
  EXPECT_EQ(refused.exitStatus, 2);
  EXPECT_TRUE(Contains(refused.errors, "Policies\\Tolmar: key \"pollSeconds\" must be"))
      << refused.errors;
  const RunResult validated = lab.RunForPeople("--json config validate");
  EXPECT_EQ(validated.exitStatus, 2);
  EXPECT_TRUE(Contains(validated.errors, "key \"colour\" is not known")) << validated.errors;
  EXPECT_TRUE(Contains(validated.output, "\"isUsable\":false")) << validated.output;
}

TEST(Configuration, AKeptTokenStandsInForTheFilesAndIsNowhereToBeRead) {
  Lab lab({{"alpha"}});
  lab.Configuration()["sessionToken"] = "of another device";
  EXPECT_EQ(lab.RunWithInput("", "config set-token").exitStatus, 2);
  const RunResult kept = lab.RunWithInput("session-of-the-lab", "config set-token");
  EXPECT_EQ(kept.exitStatus, 0) << kept.errors;
  EXPECT_EQ(Shown(lab.Run("config show"), "sessionToken"), "[left out] from store");
  const RunResult list = lab.Run("list");
  EXPECT_EQ(list.exitStatus, 0) << list.errors;
  lab.Configuration().removeMember("sessionToken");
  EXPECT_EQ(lab.Run("list").exitStatus, 0);
  const std::string sealed = lab.Wine("cmd /c type 'C:\\ProgramData\\Tolmar\\session.token'");
  EXPECT_FALSE(sealed.empty() || Contains(sealed, "session-of-the-lab"));

  lab.Configuration()["sessionToken"] = "of another device";
  EXPECT_EQ(lab.RunWithInput("", "config set-token --remove").exitStatus, 0);
  EXPECT_EQ(Shown(lab.Run("config show"), "sessionToken"), "[left out] from file");
}
