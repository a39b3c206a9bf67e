#include <stdexcept>

#include "tests/unit/AgentFixture.h"

using InstallTest = AgentFixture;

TEST_F(InstallTest, ATitleIsDownloadedInstalledAndCheckedInOrder) {
  EXPECT_EQ(Install("T:M"), "0 installed 0;");
  EXPECT_EQ(fake.Transcript({"d D", "d I", "d R", "d TolmarAgent::I", "d TolmarAgent::GetM", "down",
                             "m", "DOWN", "POST", "lock", "unlock", "with", "file", "extract",
                             "start", "wait", "run", "delete"}),
            R"(d TolmarAgent::InstallEntitledSoftware: Entry
lock
d TolmarAgent::InstallEntitledSoftware: Acquired downloadAgent lock
d TolmarAgent::GetModuleFileListNInstallationStatus: Entry
POST https://cloud/mp/zlt/v2/downloadRequest?deviceId=D-1 {"type":"downloadRequest","parameters": { "deviceId":"D-1","l1FruPn":"T","moduleFruPn":"M"}}
with Content-Type: application/json\r\ntoken: jwt
d TolmarAgent::GetModuleFileListNInstallationStatus: Exit
d DownloadNInstallSoftwarePackage: Entry
downloads ZLTKIVJob
mkdir C:\kiv true
d DownloadNInstallSoftwarePackage: Report Download progress
d ReportDownloadProgress: swFru=T, moduleFru=M, action=0, filename=a.cab, progress=0
POST https://cloud/mp/zlt/v2/downloadProgress?deviceId=D-1 {"type":"downloadProgress","parameters": { "l1FruPn":"T","moduleFruPn":"M","action":0,"message":"","fileName":"a.cab","progress":0,"custDeviceDate":"10:00:00"}}
with Content-Type: application/json\r\ntoken: jwt
d DownloadNInstallSoftwarePackage: After reporting download progress
DOWNLOAD ZLTKIVJob false cancel 1
with Content-Type: application/json\r\ntoken: jwt
file u/a.cab C:\kiv\a.cab
file u/c.ps1 C:\kiv\c.ps1
d DownloadNInstallSoftwarePackage: After download. Calling InstallModule now
d InstallModule: Entry
extract C:\kiv\a.cab
d InstallModule: Reporting install progress
d ReportInstallProgress: swFru=T, moduleFru=M, action=0
POST https://cloud/mp/zlt/v2/installProgress?deviceId=D-1 {"type":"installProgress","parameters": { "l1FruPn":"T","moduleFruPn":"M","action":0,"message":"","custDeviceDate":"10:00:00"}}
with Content-Type: application/json\r\ntoken: jwt
d InstallModule: Launching installer process now
start C:\sys\WindowsPowerShell\v1.0\powershell.exe -ExecutionPolicy bypass -NoProfile -NonInteractive -WindowStyle Hidden /f "C:\kiv\out\install.ps1" -command "install" in C:\kiv\out true
wait-any 2 -1
d InstallModule: Installer process has finished
d InstallModule: Checking installation state now
run C:\sys\WindowsPowerShell\v1.0\powershell.exe -ExecutionPolicy bypass -NoProfile -NonInteractive -WindowStyle Hidden /f "C:\kiv\c.ps1 in C:\kiv true cancel
d InstallModule: Status is Installed
d ReportInstallProgress: swFru=T, moduleFru=M, action=2
POST https://cloud/mp/zlt/v2/installProgress?deviceId=D-1 {"type":"installProgress","parameters": { "l1FruPn":"T","moduleFruPn":"M","action":2,"message":"","custDeviceDate":"10:00:00"}}
with Content-Type: application/json\r\ntoken: jwt
d InstallModule: Exit 0
d DownloadNInstallSoftwarePackage: Trying to delete KIV folder now
delete C:\kiv true
d DownloadNInstallSoftwarePackage: Exit. 0
d Download and install success
d Download and install code=0 for AppId=T
unlock
d TolmarAgent::InstallEntitledSoftware: Exit
)");
  EXPECT_NE(SetEvent(fake.installer), FALSE);  // its handle stays open
  Install("T:M");
  EXPECT_EQ(fake.Count("downloads "), 0U);  // the service is kept
}

TEST_F(InstallTest, TitlesAreTakenUpOneByOneAndTheLastCodeCounts) {
  const Reply gone{"", 404};
  const struct {
    std::string titles;
    bool preinstallOnly;
    std::deque<Reply> lists;
    std::deque<int> checks;
    std::string outcome, failure;
  } rows[] = {{"", false, {}, {}, "0 ", ""},
              {"A:M P!:M", true, {}, {}, "0  ;installed 0;", ""},
              {"P!:M A:M", true, {}, {0}, "47 not installed 0; ;", "47 for AppId=P\n"},
              {"A:M P!:M", false, {}, {0}, "0 not installed 0;installed 0;", "47 for AppId=A\n"},
              {"N:", false, {}, {}, "4294967295 not installed 0;", "-1 for AppId=N\n"},
              {"A:M B:M", false, {gone}, {}, "0  ;installed 0;", ""},
              {"A:M N:", false, {gone}, {}, "404  ; ;", ""},
              {"A:MNO", false, {Files(""), gone}, {}, "404  ;", ""}};
  for (const auto& row : rows) {
    fake.next["downloadRequest"] = row.lists;
    fake.checks = row.checks;
    EXPECT_EQ(Install(row.titles, row.preinstallOnly), row.outcome) << row.titles;
    const std::string all = "d Download and install ";
    EXPECT_EQ(fake.Transcript({all + "failed", all + "code=4", all + "code=-"}),
              row.failure.empty() ? "" : all + "failed\n" + all + "code=" + row.failure);
    EXPECT_FALSE(HoldsInstallLock());
  }
}

TEST_F(InstallTest, ADocumentOfTheWrongShapeLeavesTheLockHeld) {
  Json::Value document = Parsed("{}");
  EXPECT_EQ(Agent().InstallEntitledSoftware(document, cancel, false), 0U);
  EXPECT_EQ(document, Parsed("{}"));
  document = Titles("A:M B:M");
  document["swList"][1]["moduleList"][0]["moduleFruPn"] = Parsed("{}");
  fake.Forget();
  EXPECT_EQ(Agent().InstallEntitledSoftware(document, cancel, false), 39U);
  EXPECT_EQ(document["swList"][0]["status"], "installed");
  EXPECT_EQ(fake.Count("d TolmarAgent::InstallEntitledSoftware: Exit"), 0U);
  EXPECT_TRUE(HoldsInstallLock());
}

TEST_F(InstallTest, MissingFilesAreDownloadedAndTheLastPackageAndScriptUsed) {
  const struct {
    std::string files, lines, script;
  } rows[] = {
      {"a.cab=2 b.CAB=1 c.ps1=3 d.PS1=4",
       "file 1 C:\\kiv\\b.CAB\nfile 2 C:\\kiv\\a.cab\nfile 3 C:\\kiv\\c.ps1\n"
       "file 4 C:\\kiv\\d.PS1\nextract C:\\kiv\\b.CAB\n",
       "C:\\kiv\\d.PS1"},
      {"here.cab c.ps1=2", "file 2 C:\\kiv\\c.ps1\nextract C:\\kiv\\here.cab\n", "C:\\kiv\\c.ps1"},
      {"a.cab=1 b.txt=1", "file 1 C:\\kiv\\b.txt\nextract C:\\kiv\\a.cab\n", ""},
      {"here.cab here.ps1", "wait cancel 5000\nextract C:\\kiv\\here.cab\n", "C:\\kiv\\here.ps1"}};
  fake.files = {L"C:\\kiv\\here.cab", L"C:\\kiv\\here.ps1"};
  for (const auto& row : rows) {
    fake.always["downloadRequest"] = Files(row.files);
    std::string polled;
    fake.atStep = [&](auto& line) {
      polled += HoldsInstallLock() || line == "asks-for-lock" ? Poll() : "unlocked";
    };
    Install("T:M");
    const bool paused = row.lines.starts_with("wait");
    EXPECT_EQ(polled.find("0 downloaded 100;") != std::string::npos, paused);
    EXPECT_EQ(polled.find("unlocked"), std::string::npos);
    EXPECT_EQ(fake.Count("DOWNLOAD"), paused ? 0U : 1U);
    EXPECT_EQ(fake.Transcript({"file", "wait ", "extract"}), row.lines);
    EXPECT_NE(fake.Transcript({"run"}).find("/f \"" + row.script + " in "), std::string::npos);
  }
}

TEST_F(InstallTest, TheFirstFailingModuleEndsItsTitle) {
  std::deque<bool> downloads;
  fake.download = [&] { return fake.Next(downloads, true); };
  const struct {
    std::string titles;
    std::deque<bool> downloads;
    std::deque<int> checks;
    std::string outcome, polled, last;
    std::size_t fetched;
  } rows[] = {
      {"T:MNO",
       {false},
       {},
       "4294967295 not installed 0;",
       "0 not installed 0;",
       "M, action=-1",
       1},
      // The module before went well: that code stays.
      {"T:MNO", {true, false}, {}, "0 installed 0;", "0 not installed 100;", "N, action=-1", 2},
      {"T:MNO", {}, {0}, "47 not installed 0;", "0 not installed 100;", "M, action=0", 1},
      {"T:MN", {}, {}, "0 installed 0;", "0 installed 100;", "N, action=0", 2},
      {"T:", {}, {}, "4294967295 not installed 0;", "0 installed 0;", "", 0}};
  for (const auto& row : rows) {
    downloads = row.downloads;
    fake.checks = row.checks;
    StartQuietly();
    EXPECT_EQ(Install(row.titles), row.outcome);
    EXPECT_EQ(Poll(), row.polled);
    EXPECT_EQ(fake.Count("DOWNLOAD"), row.fetched);
    EXPECT_EQ(fake.Count("delete"), 1U);
    const std::string reports = fake.Transcript({"d ReportDownloadProgress"});
    const std::string line = "d ReportDownloadProgress: swFru=T, moduleFru=" + row.last;
    EXPECT_TRUE(row.last.empty() ? reports.empty() : reports.rfind(line) == reports.rfind("d Rep"));
  }
}

TEST_F(InstallTest, TheFolderIsDeletedInAtMostTwoTries) {
  const std::string once = "delete C:\\kiv true\n";
  const std::string again = once + "e Failed to delete KIV folder. Retry\nsleep 1000\n" + once;
  const std::string gaveUp = again + "e Failed to delete KIV folder in second attempt\n";
  for (const auto& [results, lines] :
       {std::pair{std::deque<bool>{}, once}, {{false}, again}, {{false, false, true}, gaveUp}}) {
    fake.deletions = results;
    EXPECT_EQ(Install("T:M"), "0 installed 0;");
    EXPECT_EQ(fake.Transcript({"delete", "sleep", "e "}), lines);
  }
}

TEST_F(InstallTest, EveryOutcomeOfAModuleIsToldInStatusPercentageAndReport) {
  const auto unpack = [] { return std::wstring(L"C:\\kiv\\out"); };
  const auto refuse = [] { return std::wstring(); };
  const auto fail = []() -> std::wstring { throw std::runtime_error("no cabinet \xc3\xbc"); };
  const auto odd = []() -> std::wstring { throw 5; };
  const std::string refused =
      "Package destination is empty. This happens when package have failed Certificate Validation.";
  // clang-format off
  const struct {
    std::function<std::wstring()> extract;
    bool starts, ends;
    int check;
    std::string code, steps, actions, line;
  } rows[] = {
      {unpack, true, true, 7, "0", "installing 95;installed 95;installed 100;", "02", "Status is Installed"},
      {unpack, true, true, 0, "47", "installing 95;not installed 95;not installed 100;", "01", "status is Not installed"},
      {unpack, true, false, 1, "0", "installing 95;installed 95;installed 100;", "02", "Installation cancelled by CancelEvent"},
      {unpack, false, true, 1, "48", "not installed 100;", "0-1", "Exit 48"},
      {refuse, true, true, 1, "48", "not installed 100;", "-1", refused},
      {fail, true, true, 1, "48", "not installed 100;", "-1", refused},
      {odd, true, true, 1, "48", "not installed 100;", "-1", refused}};
  // clang-format on
  SetEvent(cancel);
  std::string errors;
  for (const auto& row : rows) {
    StartQuietly();
    fake.extract = row.extract;
    fake.installerStarts = row.starts;
    fake.installerEnds = row.ends;
    fake.checks = {row.check};
    std::string steps, last;
    fake.atStep = [&](auto&) {
      const std::string now = Poll();
      if (std::exchange(last, now) != now) steps += now.substr(now.find(' ') + 1);
    };
    EXPECT_EQ(Install("T:M").substr(0, row.code.size() + 1), row.code + " ");
    fake.atStep = nullptr;
    EXPECT_EQ(steps, " ; 0;downloading 0;installing 50;" + row.steps);
    std::string reported;
    for (const std::string action : {"0", "-1", "1", "2"}) {
      const std::string report = "d ReportInstallProgress: swFru=T, moduleFru=M, action=" + action;
      if (fake.Count(report) == 1) reported += action;
    }
    EXPECT_EQ(reported, row.actions);
    EXPECT_EQ(fake.Count("d InstallModule: " + row.line), 1U);
    errors += fake.Transcript({"e "});
  }
  const std::string error =
      "e InstallModule : Exception while extracting the package with error - ";
  EXPECT_EQ(errors, error + "no cabinet ü\n" + error + "unknown error\n");
}
