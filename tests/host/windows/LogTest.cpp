#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>
#include <thread>

#include "host/common/Log.h"
#include "host/common/Utility.h"
#include "tests/host/windows/TestMachine.h"

namespace {

using TestMachine::ReadLog;

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

/// @return the log's only record without its head.
std::string MessageOf(const std::string& log) {
  std::size_t at = 0;
  for (int blanks = 0; blanks < 4; ++blanks) at = log.find(' ', at) + 1;
  return log.substr(at);
}

TEST(Log, FormatsWideTextAndNumbersAsWindowsDoes) {
  ZLT::Log log;
  log.d(L"dropped: the log is closed");
  ASSERT_TRUE(ZLT::utility::InitLog(log, L"format.log", 4));
  log.d(L"%s: retCode = %ul, %d%% %S\n%s", L"T\u00E4\U0001F600::x", 4294967295U, -1, "narrow",
        L"2031-01-01T00:00:00.000Z 1 1 E forged");
  EXPECT_EQ(MessageOf(ReadLog(L"format.log")),
            "T\xC3\xA4\xF0\x9F\x98\x80::x: retCode = 4294967295l, -1% narrow\n"
            "    2031-01-01T00:00:00.000Z 1 1 E forged\n");
}

TEST(Log, LosesNoTextToABufferButNamesWhatItCuts) {
  for (const std::size_t length : {0U, 1U, 2047U, 2048U, 70000U, 1000000U}) {
    const std::wstring name = L"long" + std::to_wstring(length) + L".log";
    ZLT::Log log;
    ASSERT_TRUE(ZLT::utility::InitLog(log, name.c_str(), 4));
    log.d(L"%s", std::wstring(length, L'x').c_str());
    EXPECT_EQ(MessageOf(ReadLog(name)), std::string(length, 'x') + "\n");
  }
  ZLT::Log log;
  ASSERT_TRUE(ZLT::utility::InitLog(log, L"cut.log", 4));
  log.d(L"%s", std::wstring(1000007, L'x').c_str());
  EXPECT_TRUE(ReadLog(L"cut.log").ends_with("xxx [7 more characters]\n"));
}

TEST(Log, LeavesOutSecretsAndLevelsNotAskedFor) {
  ZLT::Log log;
  ASSERT_TRUE(ZLT::utility::InitLog(log, L"errors.log", 1));
  log.d(L"debug");
  log.e(L"GET https://h/f?signature=%s", L"secret");
  const std::string text = ReadLog(L"errors.log");
  EXPECT_EQ(text.find("debug"), std::string::npos);
  EXPECT_EQ(text.find("secret"), std::string::npos);
  EXPECT_NE(text.find(" E GET https://h/f"), std::string::npos);
}

TEST(Log, RefusesANameWithAFolderAndKeepsTheOpenFile) {
  ZLT::Log log;
  ASSERT_TRUE(ZLT::utility::InitLog(log, L"kept.log", 4));
  EXPECT_FALSE(ZLT::utility::InitLog(log, L"..\\other.log", 4));
  EXPECT_FALSE(ZLT::utility::InitLog(log, L"", 4));
  EXPECT_FALSE(ZLT::utility::InitLog(log, L"no?name", 4));
  log.e(L"still here");
  EXPECT_EQ(MessageOf(ReadLog(L"kept.log")), "still here\n");
}

TEST(Log, TheSuitesOwnLogOpensItself) {
  ZLT::g_log.d(L"opened by %s", L"its first line");
  EXPECT_NE(ReadLog(L"ZLT.log").find("opened by its first line\n"), std::string::npos);
}

TEST(Log, ARecordIsInTheFileWhenItsCallReturnsHoweverManyThreadsWrite) {
  ZLT::Log log;
  ASSERT_TRUE(ZLT::utility::InitLog(log, L"crowd.log", 4));
  const auto record = [](int thread, int number) {
    return "thread " + std::to_string(thread) + " record " + std::to_string(number) + "\n";
  };
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 16; ++thread) {
    threads.emplace_back([&, thread] {
      for (int i = 0; i < 50; ++i) {
        log.d(L"thread %d record %d", thread, i);
        if (i % 10 == 0) {
          EXPECT_NE(ReadLog(L"crowd.log").find(record(thread, i)), std::string::npos);
        }
        if (i == 25) {
          EXPECT_TRUE(ZLT::utility::InitLog(log, L"crowd.log", 4));
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  const std::string text = ReadLog(L"crowd.log");
  EXPECT_EQ(LinesOf(text).size(), 16U * 50U);
  for (int thread = 0; thread < 16; ++thread) {
    std::size_t at = 0;
    for (int i = 0; i < 50; ++i) {
      at = text.find(record(thread, i), at);
      ASSERT_NE(at, std::string::npos) << thread << " " << i;
    }
  }
}

TEST(Log, SeveralProcessesAndThreadsLoseNoRecordAcrossRotation) {
  // 2 processes and 2 threads, 300 records each of about 75 bytes: more than the 64 KiB that one
  // file may have, less than the two that are kept.
  const std::wstring configuration = TestMachine::Folder() + L"\\host.json";
  const auto run = [&](const wchar_t* mark) {
    std::string output;
    EXPECT_EQ(
        TestMachine::RunAgain(L"--append shared.log " + std::wstring(mark), configuration, output),
        0U);
  };
  std::thread first([&] { run(L"process-one"); });
  ZLT::Log log;
  ASSERT_TRUE(ZLT::utility::InitLog(log, L"shared.log", 4));
  const auto append = [&](const wchar_t* mark) {
    for (int i = 0; i < 300; ++i) log.d(L"%s %d of three hundred .", mark, i);
  };
  std::thread second([&] { append(L"thread-one"); });
  append(L"thread-two");
  second.join();
  first.join();
  run(L"process-two");
  std::multiset<std::string> messages;
  for (const std::string& line : LinesOf(ReadLog(L"shared.log.1") + ReadLog(L"shared.log"))) {
    messages.insert(MessageOf(line));
  }
  EXPECT_LE(ReadLog(L"shared.log").size(), 65536U);
  EXPECT_LE(ReadLog(L"shared.log.1").size(), 66000U);
  EXPECT_FALSE(ReadLog(L"shared.log.1").empty());
  for (const std::string mark : {"process-one", "process-two", "thread-one", "thread-two"}) {
    for (int i = 0; i < 300; ++i) {
      ASSERT_EQ(messages.count(mark + " " + std::to_string(i) + " of three hundred ."), 1U)
          << mark << i;
    }
  }
}

}  // namespace
