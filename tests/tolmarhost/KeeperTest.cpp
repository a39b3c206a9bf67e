#include "tools/tolmarhost/Keeper.h"

#include <gtest/gtest.h>

#include <map>

#include "tools/tolmarhost/Passing.h"

namespace {

using namespace service;
using Lines = std::vector<std::string>;

constexpr Time Monday = 1925424000;  ///< 2031-01-06 00:00 UTC, which is the wall clock here
constexpr Time Minute = 60, Hour = 60 * Minute;

struct FakeTitle {
  bool preinstall = false;
  bool installed = false;
  std::string version = "1";
  std::string cause{};  ///< of its next installations; empty: they work
};

/// A device that does what the test says, and tells in order what was asked of it.
class FakeDevice : public Device {
 public:
  Time now = Monday;
  std::map<std::string, FakeTitle> titles;
  std::uint32_t code = 0;
  std::string running;
  bool isStopping = false;
  std::string stopsAt;  ///< the title in whose installation the stop comes
  State kept;
  Lines seen;

  Lines Take() { return std::exchange(seen, {}); }

  Time Now() override { return now; }
  WallTime Wall(Time time) override {
    const Time minutes = time / Minute;
    return {static_cast<int>((minutes / 1440 + 3) % 7), static_cast<int>(minutes % 1440)};
  }
  double Random() override { return 0; }
  bool IsStopping() override { return isStopping; }

  std::uint32_t Ask(refhost::ServiceInstalls wanted, Json::Value& document) override {
    seen.push_back("ask");
    if (code != 0 || wanted == refhost::ServiceInstalls::None) return code;
    document["swList"] = Json::arrayValue;
    for (const auto& [name, title] : titles) {
      Json::Value& entry = document["swList"].append(Json::objectValue);
      entry["l1FruPn"] = name;
      entry["preinstallSw"] = title.preinstall;
      entry["status"] = title.installed ? "installed" : "not installed";
    }
    return 0;
  }

  std::string VersionOf(const Json::Value& title) override {
    return titles[title["l1FruPn"].asString()].version;
  }

  void Install(Json::Value& title, std::optional<Time> until) override {
    const std::string name = title["l1FruPn"].asString();
    seen.push_back("install " + name +
                   (until ? " until +" + std::to_string((*until - Monday) / Minute) : ""));
    const std::string& cause = titles[name].cause;
    isStopping = stopsAt == name;
    titles[name].installed = cause.empty() && !isStopping;
    title["status"] = titles[name].installed ? "installed" : "not installed";
    title["code"] = titles[name].installed ? 0u : 47u;
    if (!cause.empty()) title["cause"] = cause;
  }

  void Fetch(const Json::Value& title) override {
    seen.push_back("fetch " + title["l1FruPn"].asString());
  }

  std::string Running(const std::vector<std::string>& programs) override {
    return !programs.empty() && programs[0] == running ? running : "";
  }

  void Tell(const Notice& notice) override {
    constexpr const char* Kinds[] = {"asking failed", "installed", "failed", "refused",
                                     "given up",      "deferred",  "outside"};
    const std::string& about = notice.title.empty() ? notice.text : notice.title;
    seen.push_back("told " + std::string(Kinds[static_cast<int>(notice.kind)]) +
                   (about.empty() ? "" : " " + about));
  }

  void Keep(const State& state) override { kept = StateIn(TextOf(state)); }
};

class KeeperTest : public testing::Test {
 protected:
  /// Goes on until the next thing is due, and does it. @return minutes since Monday's begin.
  Time Next() {
    device.now = std::max(device.now, next);
    next = keeper.Work(settings);
    return (device.now - Monday) / Minute;
  }

  void SetUp() override {
    settings.pollSpreadSeconds = 0;
    keeper.Begin(settings);
  }

  FakeDevice device;
  refhost::Configuration settings;
  Keeper keeper{device, {}};
  Time next = 0;
};

TEST_F(KeeperTest, InstallsWhatIsMissingThoseForSetUpFirstAndAsksAgainLater) {
  device.titles = {{"A", {}}, {"B", {.preinstall = true}}, {"C", {.installed = true}}};
  EXPECT_EQ(Next(), 0);
  EXPECT_EQ(device.Take(),
            (Lines{"ask", "install B", "told installed B", "install A", "told installed A"}));
  EXPECT_EQ(device.kept.titles.at("C").status, "installed");
  EXPECT_EQ(device.kept.lastRun.ended, Monday);
  EXPECT_EQ(Next(), 240);
  EXPECT_EQ(device.Take(), Lines{"ask"});
  device.titles.erase("A");
  device.code = 503;
  Next();
  EXPECT_EQ(device.Take(), (Lines{"ask", "told asking failed"}));
  EXPECT_EQ(device.kept.titles.count("A"), 1U);
  device.code = 0;
  Next();
  EXPECT_EQ(device.kept.titles.count("A"), 0U);
}

TEST_F(KeeperTest, RunsWhenItIsAskedToButNotTwiceAMinute) {
  Next();
  device.now = Monday + 10;
  keeper.RunNow();
  EXPECT_EQ(keeper.Work(settings), Monday + Minute);
  EXPECT_EQ(device.Take(), Lines{"ask"});
  device.now = Monday + Hour;
  keeper.RunNow();
  EXPECT_EQ(keeper.Work(settings), Monday + 5 * Hour);
  EXPECT_EQ(device.Take(), Lines{"ask"});
}

TEST_F(KeeperTest, InstallsOnlyWhatItIsToldTo) {
  device.titles = {{"A", {}}, {"B", {.preinstall = true}}};
  settings.serviceInstalls = refhost::ServiceInstalls::None;
  Next();
  EXPECT_EQ(device.Take(), Lines{"ask"});
  settings.serviceInstalls = refhost::ServiceInstalls::Preinstall;
  Next();
  EXPECT_EQ(device.Take(), (Lines{"ask", "install B", "told installed B"}));
}

TEST_F(KeeperTest, AFailingTitleHasItsAttemptsThenWaitsForANewList) {
  device.titles = {{"A", {.cause = "check.exit-code"}}};
  settings.pollSeconds = 100 * Hour;
  EXPECT_EQ(Next(), 0);
  EXPECT_EQ(device.Take(), (Lines{"ask", "install A", "told failed A"}));
  EXPECT_EQ(Next(), 60);
  // So long ago that it is asked again what is missing.
  EXPECT_EQ(device.Take(), (Lines{"ask", "install A", "told failed A"}));
  EXPECT_EQ(Next(), 60 + 240);
  EXPECT_EQ(device.Take(), (Lines{"ask", "install A", "told failed A", "told given up A"}));
  EXPECT_EQ(device.kept.titles.at("A").status, "given up");
  EXPECT_EQ(Next(), 300 + 6000);
  EXPECT_EQ(device.Take(), Lines{"ask"});
  device.titles["A"].version = "2";
  device.titles["A"].cause = "package.publisher";
  Next();
  EXPECT_EQ(device.Take(), (Lines{"ask", "install A", "told refused A"}));
  EXPECT_EQ(device.kept.titles.at("A").failures, 1U);
}

TEST_F(KeeperTest, WhatPassesIsNoAttempt) {
  settings.titleAttempts = 1;
  for (const char* cause : {"download.network", "device.disk-full", "network.name"}) {
    device.titles = {{"A", {.cause = cause}}};
    EXPECT_EQ(Next() % 240, 0);
    EXPECT_EQ(device.Take(), (Lines{"ask", "install A", "told failed A"})) << cause;
  }
  device.titles = {{"A", {.cause = "device.lease"}}};
  const Time begin = Next();
  EXPECT_EQ(Next(), begin + 5);  // deferSeconds
}

TEST_F(KeeperTest, WaitsForAWindowFetchesMeanwhileAndEndsWithIt) {
  device.titles = {{"A", {}}, {"B", {}}};
  settings.maintenanceWindows = {*refhost::ParseWindow("22:00-23:00")};
  EXPECT_EQ(Next(), 0);
  EXPECT_EQ(device.Take(), (Lines{"ask", "told outside Mon 22:00"}));
  settings.downloadOutsideWindows = true;
  EXPECT_EQ(Next(), 240);
  EXPECT_EQ(device.Take(), (Lines{"ask", "fetch A", "fetch B"}));
  settings.pollSeconds = 100 * Hour;
  while (Next() < 22 * 60) device.Take();
  EXPECT_EQ(device.Take(), (Lines{"ask", "install A until +1380", "told installed A",
                                  "install B until +1380", "told installed B"}));
}

TEST_F(KeeperTest, WaitsForTheEndOfAProgramAndSaysSoOnce) {
  device.titles = {{"A", {}}};
  settings.deferWhileRunning = {"show.exe"};
  device.running = "show.exe";
  Next();
  EXPECT_EQ(device.Take(), (Lines{"ask", "told deferred show.exe"}));
  EXPECT_EQ(device.kept.waitsFor, "the end of show.exe");
  EXPECT_EQ(Next(), 5);
  EXPECT_EQ(device.Take(), Lines{});
  EXPECT_FALSE(keeper.MayInstall(settings));
  settings.deferWhileRunning.clear();
  keeper.LookAgain();
  next = 0;
  EXPECT_EQ(Next(), 5);
  EXPECT_EQ(device.Take(), (Lines{"install A", "told installed A"}));
  EXPECT_EQ(device.kept.waitsFor, "");
}

TEST_F(KeeperTest, ARestartKeepsThePlanAndWhatAStopCutOffComesSoon) {
  device.titles = {{"A", {}}, {"B", {}}};
  device.stopsAt = "A";
  Next();
  EXPECT_EQ(device.Take(), (Lines{"ask", "install A"}));
  EXPECT_EQ(device.kept.lastRun.ended, 0);
  device.stopsAt.clear();
  device.isStopping = false;
  device.now += Hour;
  Keeper second(device, device.kept);
  second.Begin(settings);
  EXPECT_EQ(second.Work(settings), device.now + 4 * Hour);
  EXPECT_EQ(device.Take().size(), 5U);

  device.now += Hour;
  Keeper third(device, device.kept);
  third.Begin(settings);
  EXPECT_EQ(third.Work(settings), device.now + 3 * Hour);
  EXPECT_EQ(device.Take(), Lines{});
  settings.pollSeconds = Hour;
  third.Work(settings);
  EXPECT_EQ(device.Take(), Lines{"ask"}) << "it is to be asked more often now";
  device.now -= 9 * Hour;
  third.Work(settings);
  EXPECT_EQ(device.Take(), Lines{"ask"}) << "the clock was set back";
  device.now += Minute;
  third.RunSoon(settings);
  third.Work(settings);
  EXPECT_EQ(device.Take(), Lines{"ask"});
}

TEST_F(KeeperTest, AListOfAnotherShapeInstallsNothing) {
  class Odd : public FakeDevice {
   public:
    std::uint32_t Ask(refhost::ServiceInstalls, Json::Value& document) override {
      document["swList"].append(5);
      return 0;
    }
  } odd;
  Keeper other(odd, {});
  other.Begin(settings);
  other.Work(settings);
  EXPECT_EQ(odd.Take(), Lines{"told asking failed"});
  EXPECT_EQ(odd.kept.lastRun.code, 39U);
}

}  // namespace

TEST(ServiceState, StandsWhateverTheFileHolds) {
  for (const char* text : {"", "5", "[]", "{\"titles\":[]}", "{\"lastRun\":7,\"titles\":{\"A\":1}}",
                           "{\"nextRun\":-4}", "{\"nextRun\":\"soon\"}"}) {
    EXPECT_EQ(StateIn(text).nextRun, 0) << text;
    EXPECT_EQ(StateIn(text).lastRun.began, 0) << text;
  }
  EXPECT_EQ(StateIn(std::string(5000, '[')).nextRun, 0);
}

TEST(ListVersion, ChangesWithTheFilesAndNotWithTheirAddresses) {
  const auto lists = [](const char* name, int size, const char* address) {
    Json::Value list;
    Json::Value& file = list["fileList"].append(Json::objectValue);
    file["name"] = name;
    file["size"] = size;
    file["downloadUrl"] = address;
    return std::vector<Json::Value>{list};
  };
  const std::string version = VersionOfLists(lists("a.cab", 5, "https://h/a?1"));
  EXPECT_EQ(VersionOfLists(lists("a.cab", 5, "https://h/a?2")), version);
  EXPECT_NE(VersionOfLists(lists("a.cab", 6, "https://h/a?1")), version);
  EXPECT_NE(VersionOfLists(lists("b.cab", 5, "https://h/a?1")), version);
}
