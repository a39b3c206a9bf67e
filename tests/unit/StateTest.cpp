#include "tests/unit/AgentFixture.h"

using StateTest = AgentFixture;

TEST_F(StateTest, EveryTitleGetsItsState) {
  const struct {
    std::string titles;
    bool preinstallOnly;
    std::deque<int> checks;
    std::string outcome;
    std::size_t runs;
  } rows[] = {{"", false, {}, "0 ", 0},
              {"T:", false, {}, "0 installed 0;", 0},
              {"T:M", true, {}, "0 UnKnown ;", 0},
              {"T!:M", true, {-1}, "0 installed 0;", 1},
              {"T:MNO", false, {1, 0, 1}, "0 not installed 0;", 2}};
  for (const auto& row : rows) {
    fake.checks = row.checks;
    EXPECT_EQ(Check(row.titles, row.preinstallOnly), row.outcome) << row.titles;
    EXPECT_EQ(fake.Count("run"), row.runs) << row.titles;
  }
}

TEST_F(StateTest, ADocumentOfTheWrongShapeIsNoCrash) {
  const struct {
    std::string document;
    unsigned long code;
    std::size_t errors;
  } rows[] = {{R"({"swList":[{"moduleList":[{"moduleFruPn":{}}]},{"l1FruPn":5}]})", 0, 1},
              {R"({"swList":[{"l1FruPn":{}},{"preinstallSw":"x"},[]]})", 0, 3},
              {R"([])", 39, 0},
              {R"({})", 0, 0}};
  for (const auto& row : rows) {
    fake.Forget();
    Json::Value document = Parsed(row.document);
    EXPECT_EQ(Agent().GetEntitledSoftwareStatus(document, cancel, false), row.code);
    EXPECT_EQ(fake.Count("e TolmarAgent::GetEntitledSoftwareStatusThreadRtn: Exception occured "
                         "while Json parsing"),
              row.errors);
  }
}

TEST_F(StateTest, ATitleIsCheckedByItsScriptAndLogged) {
  Check("T:M");
  EXPECT_EQ(fake.Transcript({"d TolmarAgent::Get", "mkdir", "GET", "with", "run"}),
            R"(d TolmarAgent::GetEntitledSoftwareStatus: Entry
d TolmarAgent::GetEntitledSoftwareStatusThreadRtn: Entry for T
d TolmarAgent::GetModuleFileListNInstallationStatus: Entry
d TolmarAgent::GetDownloadFiles: Entry
with Content-Type: application/json\r\ntoken: jwt
d TolmarAgent::GetDownloadFiles: retCode =  0l
d TolmarAgent::GetDownloadFiles: Exit
mkdir C:\kiv true
d TolmarAgent::GetModuleFileListNInstallationStatus: Trying to download file now
GET u/c.ps1 C:\kiv\c.ps1
with Content-Type: application/json\r\ntoken: jwt
d TolmarAgent::GetModuleFileListNInstallationStatus: launching install checked now
run C:\sys\WindowsPowerShell\v1.0\powershell.exe -ExecutionPolicy bypass -NoProfile -NonInteractive -WindowStyle Hidden /f "C:\kiv\c.ps1" in C:\kiv true cancel
d TolmarAgent::GetModuleFileListNInstallationStatus: Exit
d TolmarAgent::GetEntitledSoftwareStatusThreadRtn: Exit for T. Name=, Status=Installed
d TolmarAgent::GetEntitledSoftwareStatus: Exit
)");
  fake.Forget();
  Json::Value document = Titles("T:");
  Agent().GetEntitledSoftwareStatusThreadRtn(nullptr, cancel, 0, false);
  for (const int outside : {-1, 1}) {
    Agent().GetEntitledSoftwareStatusThreadRtn(&document, cancel, outside, false);
  }
  const std::string exit =
      "d TolmarAgent::GetEntitledSoftwareStatusThreadRtn: Exit for . Name=, Status=Not "
      "Installed\n";
  EXPECT_EQ(fake.Transcript(), exit + exit);
}

TEST_F(StateTest, TheLastScriptOfTheFileListDecides) {
  const std::string type = R"({"code":0,"fileList":[{"name":"a.ps1","size":"x"}]})";
  // clang-format off
  const struct {
    Reply list;
    bool fetches;
    std::string calls, outcome;
  } rows[] = {
      {Files("a.ps1 B.PS1.bak c.cab"), true, "GET u/B.PS1.bak C:\\kiv\\B.PS1.bak\nrun", "0 installed 0;"},
      {Files("old.ps1"), false, "run", "0 installed 0;"},
      {Files("new.ps1"), false, "GET u/new.ps1 C:\\kiv\\new.ps1\n", "0 not installed 0;"},
      {Files("c.cab"), true, "", "0 not installed 0;"},
      {Files(""), true, "", "0 not installed 0;"},
      {Result(type), true, "", "0  ;"},
      {Reply{"", 404}, true, "", "0 not installed 0;"}};
  // clang-format on
  fake.files = {L"C:\\kiv\\old.ps1"};
  for (const auto& row : rows) {
    fake.fetches = row.fetches;
    fake.always["downloadRequest"] = row.list;
    EXPECT_EQ(Check("T:M"), row.outcome);
    const std::string calls = fake.Transcript({"GET", "run"});
    EXPECT_EQ(calls.substr(0, calls.find(" C:\\sys")), row.calls);
  }
}

TEST_F(StateTest, ThreadsThatRunAreJoinedWhenAFurtherOneCannotStart) {
  fake.threadStarts = {true, true, false};
  EXPECT_EQ(Check("A:M B:M C:M D:M"), "39 installed 0;installed 0; ; ;");
}
