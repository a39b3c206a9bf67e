#include "tests/host/windows/DownloadFixture.h"
#include "tests/host/windows/FakeBits.h"
#include "tests/host/windows/TestMachine.h"

namespace {

constexpr HRESULT InUse = static_cast<HRESULT>(0x80070020);
constexpr HRESULT Forbidden = static_cast<HRESULT>(0x80190193);
constexpr HRESULT NameNotResolved = static_cast<HRESULT>(0x80072EE7);
constexpr HRESULT ServerGone = static_cast<HRESULT>(0x800706BA);

using Errors = std::vector<std::pair<std::int32_t, std::int32_t>>;

Errors ErrorsOf(const Download& download) {
  Errors errors;
  for (const ErrorDetails& error : download.errors) {
    errors.emplace_back(error.errorContext, error.errorCode);
  }
  return errors;
}

}  // namespace

/// What Windows's BITS does and Wine's does not, on a BITS of the test's own.
class BitsTest : public DownloadAgentTest {
 protected:
  bool Run(Download& download) { return download.Run({{Url(L"/whole"), InFolder(L"a.cab")}}); }

  /// A job as an earlier download has left it, for the file of `Run`.
  FakeBitsJob& Leave(const Download& download) {
    FakeBitsJob& job = bits.Leave(download.name);
    job.Add(server.Url(L"/whole?sig=OLD"), Arriving(L"a.cab"));
    SetUp(job);
    return job;
  }

  /// Once it goes, all comes at once.
  static void SetUp(FakeBitsJob& job) {
    job.onResume = [](FakeBitsJob& resumed) {
      for (const auto& file : resumed.files) file->body = Body(100000);
      resumed.Arrive();
    };
  }

  FakeBits bits;
};

TEST_F(BitsTest, AJobIsSetUpWhole) {
  const struct {
    const char* name;
    std::function<void(FakeBitsJob&)> change;
    Errors errors;
  } rows[] = {
      {"as it should be", [](FakeBitsJob&) {}, {}},
      {"redirections cannot be refused",
       [](FakeBitsJob& job) { job.flagsResult = E_ACCESSDENIED; },
       {{2, E_ACCESSDENIED}}},
      {"its files are not told",
       [](FakeBitsJob& job) { job.nextResult = ServerGone; },
       {{2, ServerGone}}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Download download;
    bits.jobs.clear();
    bits.onMake = [&](FakeBitsJob& job) {
      SetUp(job);
      row.change(job);
    };
    EXPECT_EQ(Run(download), row.errors.empty());
    EXPECT_EQ(ErrorsOf(download), row.errors);
    EXPECT_EQ(download.completions, std::vector<bool>{row.errors.empty()});
    const FakeBitsJob& job = *bits.jobs.at(0);
    EXPECT_EQ(job.cancelled, !row.errors.empty());
    if (job.securityFlags == 0) {
      EXPECT_FALSE(job.headers);  // No token in a job that could carry it elsewhere.
    } else {
      EXPECT_EQ(job.headers, L"X-Kind: test\r\ntoken: secret\r\n");
    }
  }
}

TEST_F(BitsTest, FailuresAreClassedByTheirCodeAndResumedInTheSameJob) {
  const struct {
    const char* name;
    BG_ERROR_CONTEXT context;
    HRESULT code;
    int times;  ///< that the job fails
    Errors errors;
    std::size_t resumed;
  } rows[] = {
      {"name not resolved for a while", BG_ERROR_CONTEXT_REMOTE_FILE, NameNotResolved, 4, {}, 5},
      {"name not resolved",
       BG_ERROR_CONTEXT_REMOTE_FILE,
       NameNotResolved,
       1000,
       {{6, NameNotResolved}},
       3},
      {"no network for a while",
       BG_ERROR_CONTEXT_GENERAL_TRANSPORT,
       static_cast<HRESULT>(0x80200010),
       2,
       {},
       3},
      {"address expired",
       BG_ERROR_CONTEXT_REMOTE_FILE,
       static_cast<HRESULT>(0x80190193),
       1,
       {{5, static_cast<std::int32_t>(0x80190193)}},
       1},
      {"redirected",
       BG_ERROR_CONTEXT_REMOTE_FILE,
       static_cast<HRESULT>(0x8007012E),
       1,
       {{5, static_cast<std::int32_t>(0x8007012E)}},
       1},
      {"disk",
       BG_ERROR_CONTEXT_LOCAL_FILE,
       static_cast<HRESULT>(0x80070070),
       1,
       {{4, static_cast<std::int32_t>(0x80070070)}},
       1},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Download download;
    bits.jobs.clear();
    bits.onMake = [&](FakeBitsJob& job) {
      job.onResume = [&](FakeBitsJob& resumed) {
        EXPECT_EQ(resumed.files.front()->url, Url(L"/whole"));
        resumed.files.front()->url = other.Url(L"/whole");  // As BITS does where it is redirected.
        if (resumed.resumed <= row.times) return resumed.Fail(row.context, row.code);
        resumed.files.front()->body = Body(100000);
        resumed.Arrive();
      };
    };
    EXPECT_EQ(Run(download), row.errors.empty());
    EXPECT_EQ(ErrorsOf(download), row.errors);
    ASSERT_EQ(bits.jobs.size(), 1U);
    if (row.times == 1000) {
      EXPECT_GE(bits.jobs[0]->resumed, static_cast<int>(row.resumed));
    } else {
      EXPECT_EQ(bits.jobs[0]->resumed, static_cast<int>(row.resumed));
    }
  }
}

TEST_F(BitsTest, ACallThatFailsIsAFailureOfTheDownload) {
  Download download;
  bits.onMake = [](FakeBitsJob& job) {
    job.onResume = [](FakeBitsJob& resumed) {
      resumed.files.front()->progressResult = ServerGone;
      resumed.Arrive();
    };
  };
  EXPECT_FALSE(Run(download));
  EXPECT_EQ(ErrorsOf(download), (Errors{{2, ServerGone}}));
}

TEST_F(BitsTest, AJobThatEndsWithoutItsFileIsAFailure) {
  Download download;
  bits.onMake = [](FakeBitsJob& job) {
    job.onResume = [](FakeBitsJob& resumed) { resumed.state = BG_JOB_STATE_TRANSFERRED; };
  };
  EXPECT_FALSE(Run(download));
  EXPECT_EQ(download.errors.size(), 1U);
  EXPECT_EQ(download.completions, std::vector<bool>{false});
}

TEST_F(BitsTest, WhatAScannerHoldsIsTriedAgain) {
  const struct {
    const char* name;
    std::deque<HRESULT> results;
    DWORD heldMs;  ///< how long the file is held when it has its first name
    Errors errors;
  } rows[] = {{"the first name", {InUse, InUse, S_OK}, 0, {}},
              {"the last name", {}, 300, {}},
              {"the first name, for long", std::deque<HRESULT>(1000, InUse), 0, {{4, InUse}}},
              {"the last name, for long", {}, 3000, {{4, InUse}}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Download download;
    std::thread scanner;
    bits.jobs.clear();
    bits.onMake = [&](FakeBitsJob& job) {
      SetUp(job);
      job.completeResults = row.results;
      job.onComplete = [&](FakeBitsJob&) {
        scanner = std::thread([held = TestMachine::Hold(Arriving(L"a.cab")), &row, &download] {
          WaitForSingleObject(download.cancel, row.heldMs);
          CloseHandle(held);
        });
      };
    };
    EXPECT_EQ(Run(download), row.errors.empty());
    EXPECT_EQ(ErrorsOf(download), row.errors);
    EXPECT_EQ(bits.jobs.size(), 1U);
    SetEvent(download.cancel);
    if (scanner.joinable()) scanner.join();
    EXPECT_EQ(TestMachine::ReadFile(InFolder(L"a.cab")).size(), row.errors.empty() ? 100000U : 0U);
  }
}

TEST_F(BitsTest, AnEarlierDownloadsJobIsTakenUpWhereItFits) {
  enum Fate { TakenUp, Cancelled, LetAlone };
  const struct {
    const char* name;
    std::function<void(FakeBitsJob&)> change;
    Fate fate;
  } rows[] = {
      {"rests since a stop", [](FakeBitsJob&) {}, TakenUp},
      {"goes on since a death", [](FakeBitsJob& job) { job.state = BG_JOB_STATE_TRANSFERRING; },
       TakenUp},
      {"failed meanwhile",
       [](FakeBitsJob& job) { job.Fail(BG_ERROR_CONTEXT_GENERAL_TRANSPORT, NameNotResolved); },
       TakenUp},
      {"has arrived meanwhile",
       [](FakeBitsJob& job) {
         job.files.front()->body = Body(100000);
         job.Arrive();
       },
       TakenUp},
      {"another file of the server",
       [this](FakeBitsJob& job) { job.files.front()->url = Url(L"/other"); }, Cancelled},
      {"another place", [](FakeBitsJob& job) { job.files.front()->path = InFolder(L"b"); },
       Cancelled},
      {"of another version",
       [this](FakeBitsJob& job) {
         job.files.front()->path = Arriving(L"b");
         job.Add(Url(L"/other"), Arriving(L"a.cab"));
       },
       Cancelled},
      {"a file more, which has come another way since",
       [this](FakeBitsJob& job) { job.Add(Url(L"/check"), Arriving(L"check.ps1")); }, TakenUp},
      {"whose address is good no more",
       [this](FakeBitsJob& job) {
         job.Add(Url(L"/check"), Arriving(L"check.ps1"));
         job.onResume = [](FakeBitsJob& resumed) {
           resumed.files.front()->body = Body(100000);
           resumed.Arrive();
           resumed.files.back()->progress.Completed = FALSE;
           resumed.Fail(BG_ERROR_CONTEXT_REMOTE_FILE, Forbidden, 1);
         };
       },
       TakenUp},
      {"a file more somewhere else",
       [this](FakeBitsJob& job) { job.Add(Url(L"/other"), InFolder(L"b")); }, Cancelled},
      {"another account's", [](FakeBitsJob& job) { job.owner = L"S-1-5-21-1"; }, LetAlone},
      {"another name's", [](FakeBitsJob& job) { job.name = L"Somebody's"; }, LetAlone},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Download download;
    bits.jobs.clear();
    bits.onMake = [](FakeBitsJob& job) { SetUp(job); };
    FakeBitsJob& job = Leave(download);
    row.change(job);
    const bool hadArrived = job.state == BG_JOB_STATE_TRANSFERRED;
    EXPECT_TRUE(Run(download));
    EXPECT_EQ(TestMachine::ReadFile(InFolder(L"a.cab")).size(), 100000U);
    EXPECT_EQ(bits.jobs.size(), row.fate == TakenUp ? 1U : 2U);
    EXPECT_EQ(job.cancelled, row.fate == Cancelled);
    EXPECT_FALSE(FileSystem::fileExists(Arriving(L"check.ps1")));
    EXPECT_TRUE(download.errors.empty());
    if (row.fate != TakenUp || hadArrived) continue;
    EXPECT_EQ(job.files.front()->url, Url(L"/whole"));
    EXPECT_EQ(job.headers, L"X-Kind: test\r\ntoken: secret\r\n");
    EXPECT_NE(job.securityFlags, 0U);
    EXPECT_EQ(job.resumed, 1);
  }
}

TEST_F(BitsTest, AStopKeepsWhatHasComeWithoutTheToken) {
  for (const bool rests : {true, false}) {
    Download download;
    bits.jobs.clear();
    bits.onMake = [&](FakeBitsJob& job) {
      job.suspendResult = rests ? S_OK : E_FAIL;
      job.onResume = [](FakeBitsJob& resumed) {
        resumed.files.front()->progress = {500, 100000, FALSE};
      };
    };
    download.goOn = false;
    EXPECT_FALSE(Run(download));
    EXPECT_EQ(download.completions, std::vector<bool>{false});
    FakeBitsJob& job = *bits.jobs.at(0);
    EXPECT_EQ(job.cancelled, !rests);
    if (!rests) continue;
    EXPECT_EQ(job.state, BG_JOB_STATE_SUSPENDED);
    EXPECT_FALSE(job.headers);
    FileSystem::deleteDirectoryOrFile(ZLT::utility::GetZltKivDownloadPath(), true);
    FileSystem::createDirectory(ZLT::utility::GetZltKivDownloadPath(), false);
    SetUp(job);
    download.goOn = true;
    EXPECT_TRUE(Run(download));
    EXPECT_EQ(bits.jobs.size(), 1U);
    EXPECT_FALSE(FileSystem::fileExists(Arriving(L"a.cab")));
  }
}

TEST_F(BitsTest, AReportThatHangsDoesNotFailWhatHasArrived) {
  Download download;
  FakeBitsJob* going = nullptr;
  bits.onMake = [&](FakeBitsJob& job) {
    going = &job;
    job.onResume = [](FakeBitsJob& resumed) {
      resumed.files.front()->body = Body(100000);
      resumed.files.front()->progress = {100000, 100000, FALSE};
    };
  };
  download.onProgress = [&] {
    WaitForSingleObject(download.cancel, 3500);  // Longer than downloadStallSeconds.
    going->Arrive();
    download.onProgress = {};
  };
  EXPECT_TRUE(Run(download));
}

TEST_F(BitsTest, AnExceptionLeavesNoJobBehind) {
  Download download;
  bits.onMake = [](FakeBitsJob& job) {
    job.onResume = [](FakeBitsJob& resumed) {
      resumed.onState = [](FakeBitsJob&) { throw std::bad_alloc(); };
    };
  };
  EXPECT_FALSE(Run(download));
  EXPECT_TRUE(bits.jobs.at(0)->cancelled);
  EXPECT_TRUE(bits.jobs.at(0)->cancelledInApartment);
}
