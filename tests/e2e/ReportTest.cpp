#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "tests/e2e/Lab.h"

namespace fs = std::filesystem;

namespace {

std::string ReadFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

/// @return what a command of the shell prints, both of its streams.
std::string OutputOf(const std::string& command) {
  std::string output;
  FILE* pipe = popen(("{ " + command + "; } 2>&1 </dev/null").c_str(), "r");
  char buffer[4096];
  for (std::size_t n = 0; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
    output.append(buffer, n);
  pclose(pipe);
  return output;
}

struct BrowserLook {
  std::string page;  ///< as the browser has built it
  std::string said;  ///< its console's lines among them
  bool hasAsked;     ///< the page has asked for something
};

/// Opens a page in a browser that finds no host by its name: it has questions of its own otherwise.
BrowserLook LookAt(const std::string& page, const std::string& folder) {
  BrowserLook look;
  const std::string command =
      "timeout 60 chromium --headless --no-sandbox --disable-gpu --no-first-run --disable-sync "
      "--disable-background-networking --disable-component-update "
      "--host-resolver-rules='MAP * ~NOTFOUND' --user-data-dir='" +
      folder + "/browser' --log-net-log='" + folder + "/net.json' --enable-logging=stderr ";
  look.said = OutputOf(command + "--dump-dom 'file://" + page + "' >'" + folder + "/dom.html'");
  look.page = ReadFile(folder + "/dom.html");
  const std::string log = ReadFile(folder + "/net.json");
  look.hasAsked = log.empty() || Contains(log, "\"initiator\":\"null\"");
  return look;
}

}  // namespace

TEST(Report, NamesEachTitlesCauseAndTheRestartUntilTheNextBoot) {
  Lab lab({{"stranger"}, {"unsigned"}, {"beta"}, {"missing"}, {"gamma"}, {"restart"}});
  lab.Fault(R"({"on":"file:beta.cab","call":0,"status":404})");
  lab.Fault(R"({"on":"file:gamma.cab","call":1,"status":503})");
  const struct {
    const char* name;
    unsigned int code;
    const char* cause;
    const char* why;
    const char* output;
  } rows[] = {
      {"stranger", 48, "package.signature", "signed by \"Stranger\", refused: its signer", ""},
      {"unsigned", 48, "package.unsigned", "unsigned.cab: no signer to be told, refused", ""},
      {"beta", 0xFFFFFFFF, "download.refused",
       "beta.cab, attempt 4: the server answered with HTTP status 404", ""},
      {"missing", 47, "check.exit-code", "check-missing.ps1: exit code 3, no such program",
       "missing is in its place"},
      {"gamma", 0, "", "", ""},
      {"restart", 0, "", "", ""}};
  const RunResult run = lab.Run("install");
  EXPECT_EQ(run.json["code"].asUInt(), 0U) << run.errors;  // The last title's.
  for (const auto& row : rows) {
    const Json::Value& title = TitleOf(run, row.name);
    EXPECT_EQ(title["code"].asUInt(), row.code) << row.name;
    EXPECT_EQ(CauseOf(run, row.name), row.cause) << row.name;
    EXPECT_TRUE(Contains(title["why"].asString(), row.why)) << row.name << title.toStyledString();
    EXPECT_EQ(title["installerOutput"].asString(), row.output) << row.name;
  }
  EXPECT_EQ(run.json["restart"].asString(), "required");

  const Json::Value titles = lab.Run("report").json["runs"][0]["titles"];
  ASSERT_EQ(titles.size(), std::size(rows));
  for (Json::ArrayIndex i = 0; i < titles.size(); ++i) {
    EXPECT_EQ(titles[i]["cause"].asString(), rows[i].cause) << rows[i].name;
    EXPECT_EQ(titles[i]["retries"].asInt(), rows[i].name == std::string("gamma") ? 1 : 0);
  }
  EXPECT_EQ(titles[5]["restart"].asString(), "required");
  std::string phases;
  for (const Json::Value& step : titles[5]["steps"]) phases += step["phase"].asString() + " ";
  EXPECT_EQ(phases, "asked downloaded checked unpacked installed verified ");

  EXPECT_TRUE(Contains(lab.RunForPeople("status").output, "restart: required"));
  RunResult events;
  events.exitStatus = 0;
  events.output = lab.LogText("events.jsonl");
  lab.Keep("events", events);
  lab.Reboot();
  EXPECT_FALSE(lab.Run("status").json.isMember("restart"));
}

TEST(Report, APageShowsItInABrowserAndABundleHoldsItWithoutSecrets) {
  Lab lab({{"stranger"}, {"alpha"}});
  const std::string people = lab.RunForPeople("install").errors;
  EXPECT_TRUE(Contains(people, "package.signature")) << people;
  ASSERT_EQ(lab.Run("report --html C:/lab/report.html").exitStatus, 0);
  const RunResult again = lab.Run("report --html C:/lab/report.html");
  EXPECT_EQ(again.exitStatus, 2);
  EXPECT_TRUE(Contains(again.errors, "is there already")) << again.errors;

  const std::string folder = (lab.DriveC() / "lab").string();
  const BrowserLook look = LookAt(folder + "/report.html", folder);
  EXPECT_TRUE(Contains(look.page, "<h1>Software delivery on this device</h1>")) << look.said;
  EXPECT_TRUE(Contains(look.page, "not installed, code 48")) << look.page;
  EXPECT_FALSE(Contains(look.said, "CONSOLE")) << look.said;
  EXPECT_FALSE(look.hasAsked);
  // Whatever came into the page would be stopped by its policy.
  std::ofstream(folder + "/report.html", std::ios::app) << "<img src='http://localhost:1/x'>";
  const BrowserLook foreign = LookAt(folder + "/report.html", folder);
  EXPECT_TRUE(Contains(foreign.said, "Content Security Policy")) << foreign.said;
  EXPECT_FALSE(foreign.hasAsked);

  ASSERT_EQ(lab.Run("bundle C:/lab/ticket.cab").exitStatus, 0);
  OutputOf("cabextract -q -d '" + folder + "/ticket' '" + folder + "/ticket.cab'");
  for (const char* name : {"ZLT.log", "TolmarAgent.log", "events.jsonl"}) {
    const std::string packed = ReadFile(folder + "/ticket/" + name);
    EXPECT_FALSE(packed.empty()) << name;
    EXPECT_TRUE(lab.LogText(name).starts_with(packed)) << name;
  }
  const std::string shown = ReadFile(folder + "/ticket/configuration.json");
  EXPECT_TRUE(Contains(shown, "\"value\" : \"PC-0001\"")) << shown;
  for (const auto& entry : fs::directory_iterator(folder + "/ticket")) {
    const std::string text = ReadFile(entry.path());
    for (const char* secret : {"session-of-the-lab", "eyJ"}) {
      EXPECT_FALSE(Contains(text, secret)) << entry.path() << secret;
    }
  }
  EXPECT_TRUE(Contains(ReadFile(folder + "/ticket/report.txt"), "package.signature"));
  EXPECT_TRUE(Contains(ReadFile(folder + "/ticket/doctor.txt"), "configuration"));
}
