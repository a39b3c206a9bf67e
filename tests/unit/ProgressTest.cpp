#include "tests/unit/AgentFixture.h"

class ProgressTest : public AgentFixture {
 protected:
  /// Installs the title "T" with the module "M"; the events come while it is downloaded.
  void During(const std::function<void()>& events) {
    fake.download = [&] { return events(), true; };
    Install("T:M");
  }
};

const std::string Report = "d ReportDownloadProgress: swFru=T, moduleFru=M, action=";

TEST_F(ProgressTest, StepsAreKeptAndReportedOnceAMinute) {
  const std::string step = "d TolmarAgent: OnFileDownloadProgress: total(B)=";
  const struct {
    std::int64_t second;
    std::uint64_t done, total;
    std::string percent;
    bool reported;
  } rows[] = {{0, 1, 3, "33", true},   {10, 2, 3, "66", false},  {59, 40, 100, "40", false},
              {60, 3, 3, "100", true}, {119, 1, 2, "50", false}, {120, 0, 0, "-2147483648", true}};
  During([&] {
    for (const auto& row : rows) {
      fake.now = 5000 + row.second;
      fake.Forget();
      EXPECT_TRUE(Progress(row.done, row.total));
      EXPECT_EQ(Poll(), "0 downloading " + row.percent + ";");
      EXPECT_EQ(
          fake.Transcript({step, Report}),
          step + std::to_string(row.total) + " Xfered(B)=" + std::to_string(row.done) +
              " Files(T)=2 FilesX=1\n" +
              (row.reported ? Report + "0, filename=a.cab, progress=" + row.percent + "\n" : ""));
    }
    fake.Forget();
    EXPECT_TRUE(Progress(1, 2, L"zltkivjob"));
    Complete(true, L"zltkivjob");
    IgnoreDownloadEvents();
    EXPECT_TRUE(Progress(1, 2));
    Complete(true);
    EXPECT_EQ(fake.Transcript(), "");
  });
}

TEST_F(ProgressTest, AStopIsTakenAtTheNextStepAndItsReportPacedAway) {
  const std::string line =
      "d TolmarAgent: OnFileDownloadProgress: Stop event or cancel event is sent by ZLT service. "
      "Return false\n";
  const HANDLE signalled = CreateEventW(nullptr, TRUE, TRUE, nullptr);
  const HANDLE quiet = cancel;
  During([&] {
    cancel = nullptr;
    Check("");  // its handle is the newest one now
    EXPECT_FALSE(Progress(1, 4));
  });
  for (const HANDLE handle : {signalled, HANDLE{nullptr}, quiet}) {
    if (handle == quiet) SetEvent(StopEvent());
    cancel = handle;
    During([&] {
      fake.Forget();
      EXPECT_FALSE(Progress(1, 4));
      EXPECT_EQ(fake.Transcript({Report, line.substr(0, line.size() - 1)}),
                Report + "0, filename=a.cab, progress=25\n" + line);
      fake.now += 60;
      fake.atStep = [&](auto&) { fake.now += 60; };  // a slow service: the next report is due again
      EXPECT_FALSE(Progress(1, 4));
      fake.atStep = nullptr;
      EXPECT_EQ(fake.Count(Report + "3, filename=a.cab, progress=25"), 1U);
    });
  }
  CloseHandle(signalled);
}

TEST_F(ProgressTest, TheEndOfADownloadIsReportedUnlessPacedAway) {
  const std::string end = "d TolmarAgent: OnDownloadComplete: (";
  const struct {
    bool success;
    std::int64_t later;
    std::string polled, lines;
  } rows[] = {
      {true, 60, "0 downloaded 100;", "Success) \n" + Report + "4, filename=a.cab, progress=100\n"},
      {false, 60, "0 downloading 40;", "Failed) \n" + Report + "-1, filename=a.cab, progress=40\n"},
      {true, 30, "0 downloaded 100;", "Success) \n"}};
  for (const auto& row : rows) {
    During([&] {
      Progress(40, 100);
      fake.now += row.later;
      fake.Forget();
      Complete(row.success);
      EXPECT_EQ(Poll(), row.polled);
      EXPECT_EQ(fake.Transcript({end, Report}), end + row.lines);
    });
  }
}

TEST_F(ProgressTest, AnExpiredAddressIsRenewed) {
  const std::string on = "d TolmarAgent: OnFileDownloadError: ";
  const std::string known =
      on + "File details which encountered error Name: (a.cab), Localpath: (u/1)\n";
  const std::string no =
      known + on + "No try to resume download as this doesn't seem URL expiry error.\n";
  const auto renewed = [&](const std::string& url, const std::string& name) {
    return known + on + "Setting the new source URL (" + url + ") to resume download for file (" +
           name + ").\n" + on + " Call to resume download with new URL (" + url +
           ") for file (a.cab)\nresume ZLTKIVJob\nfile a.cab " + url + "\n";
  };
  const struct {
    int context;
    Reply reply;
    bool resumes;
    std::string lines;
  } rows[] = {
      {6, Files("a.cab=u/2"), true, ""},
      {4, Files("a.cab=u/2"), true, ""},
      {5, Result(R"({"code":5,"fileList":[{"name":"a.cab","downloadUrl":"u/2"}]})"), true, no},
      {5, Files(""), true, no},
      {7, Result(R"({"code":0})"), true, no},
      {5, Files("a.cab=u/1 A.CAB=u/2"), true, no},
      {5, Files("A.CAB=u/0 a.cab=u/2"), true, renewed("u/2", "a.cab")},
      {7, Files("a.cab=u/1 xa.cab=u/3 a.cab=u/4"), false, renewed("u/3", "xa.cab")}};
  for (const auto& row : rows) {
    During([&] {
      fake.next["downloadRequest"] = std::deque<Reply>(4, row.reply);
      fake.resumes = row.resumes;
      fake.Forget();
      DownloadAgent::FileMap files{{L"u/1", L"C:\\kiv\\a.cab"}, {L"u/9", L"C:\\kiv\\b.cab"}};
      ErrorDetails error{row.context, -5, L"why"};
      bool resumed = true;
      fake.onError(files, error, resumed);
      fake.next.clear();
      const std::size_t calls = fake.Count("resume");
      EXPECT_EQ(resumed, calls == 1 && row.resumes);
      EXPECT_EQ(files.size(), 2 - calls);
      EXPECT_EQ(fake.Transcript({on, "resume", "file"}),
                on + " Download failed due to the error. ErrorCode:(-5), ErrorContext:(" +
                    std::to_string(row.context) + ") and ErrorDescription:(why)\n" + row.lines);
    });
  }
  DownloadAgent::FileMap files{{L"u/1", L"C:\\kiv\\"}};
  ErrorDetails error{5, 0, L""};
  bool resumed = false;
  fake.Forget();
  fake.onError(files, error, resumed);  // no name: the first new address is taken
  EXPECT_TRUE(fake.Count(on + "File details") == 0 && files[L""] == L"u/a.cab");
  EXPECT_NE(fake.Transcript({"POST"}).find(R"("l1FruPn":"T","moduleFruPn":"M"}})"),
            std::string::npos);
  DownloadAgent::FileMap none;
  fake.Forget();
  fake.onError(none, error, resumed);
  EXPECT_TRUE(fake.Count("d ") == 1 && !resumed);
  fake.always["downloadRequest"] = Result(R"({"code":0,"fileList":[{"name":{}}]})");
  EXPECT_THROW(fake.onError(files, error, resumed), Json::Exception);
}

TEST_F(ProgressTest, DataFilesOfTheReportedModuleAreReported) {
  fake.always["downloadRequest"] = Files("a.cab b.PS1 c.bin");
  // What a report is answered with does not stop the installation.
  fake.always["downloadProgress"] = fake.always["installProgress"] = {"[]"};
  EXPECT_EQ(Install("T:MN"), "0 installed 0;");
  EXPECT_EQ(fake.Count("d ReportInstallProgress"), 4U);
  for (const auto& [module, sent] : {std::pair{L"X", 0U}, {L"N", 2U}}) {
    fake.now += 60;
    fake.Forget();
    ReportDownload(L"t", module);  // another title: nothing is sent, but the minute is used up
    ReportDownload(L"T", module);
    EXPECT_EQ(fake.Count("POST"), 0U);
    fake.now += 60;
    ReportDownload(L"T", module);
    EXPECT_EQ(fake.Count("POST"), sent);
  }
  Install("T:");
  EXPECT_EQ(Poll(), "0 installed 0;");  // a new title starts from 0 percent
  fake.now += 60;
  ReportDownload(L"T", L"M");  // a title without modules leaves the minute to the next report
  Install("T:M");
  EXPECT_EQ(fake.Count(Report + "0"), 2U);
}

TEST_F(ProgressTest, TheReplyToAReportIsRead) {
  for (const Operation& op : Reports) {
    for (const auto& [body, code] : {std::pair{R"({"result":{"code":0}})", 0UL},
                                     {R"({"result":{"code":5}})", op.Refused()},
                                     {R"({"result":{"code":0.0}})", op.Refused()},
                                     {R"({})", op.Refused()},
                                     {"<html>", 39UL}}) {
      fake.always[op.type] = {body};
      EXPECT_EQ(Call(op), code) << op.name << body;
      EXPECT_EQ(fake.Count("POST"), 1U);
    }
    fake.always[op.type] = {R"({"result":5})"};
    EXPECT_THROW(Call(op), Json::Exception);
  }
}

TEST_F(ProgressTest, TheStatusOfTheCurrentTitleIsFilledIn) {
  const std::string line = "d GetInstallEntitledSoftwareStatus: code=";
  EXPECT_EQ(Poll(Parsed(R"({"swList":[{"l1FruPn":""}]})")), "0  0;");  // none was taken up yet
  EXPECT_EQ(fake.Transcript(), line + "0 n status= for AppId=\n");
  Install("T:M");
  fake.Forget();
  EXPECT_EQ(Poll(Titles("t: T: T:")), "0  ;installed 100; ;");
  EXPECT_EQ(fake.Transcript(), line + "0 n status=installed for AppId=T\n");
  const struct {
    std::string document;
    DWORD code;
  } rows[] = {{R"({"swList":[{"l1FruPn":"U"},{}]})", 0xFFFFFFFF},
              {R"({})", 0xFFFFFFFF},
              {R"(null)", 0xFFFFFFFF},
              {R"([])", 39},
              {R"({"swList":"T"})", 39},
              {R"({"swList":{}})", 39},
              {R"({"swList":[5]})", 39}};
  for (const auto& row : rows) {
    fake.Forget();
    Json::Value document = Parsed(row.document);
    EXPECT_EQ(Agent().GetInstallEntitledSoftwareStatus(document), row.code) << row.document;
    EXPECT_EQ(document, Parsed(row.document));
    EXPECT_EQ(fake.Transcript(),
              row.code == 39 ? "" : line + "-1 n status=installed for AppId=T\n");
  }
}
