#include "reference_host/doctor/Doctor.h"

#include <gtest/gtest.h>
#include <json/value.h>
#include <windows.h>

#include <ctime>
#include <filesystem>
#include <map>
#include <sstream>

#include "host/common/Text.h"
#include "tests/host/windows/TestMachine.h"

namespace {

namespace fs = std::filesystem;
using TestMachine::Cloud;

/// Verdict and text of each check, as a process of its own finds them.
using Findings = std::map<std::string, std::string>;

Findings Examine(const Json::Value& changes, int patienceMs = 20000) {
  std::string output;
  TestMachine::RunAgain(L"--doctor " + std::to_wstring(patienceMs),
                        TestMachine::ConfigurationWith(changes), output);
  Findings findings;
  std::istringstream lines(output);
  std::string id, rest;
  while (lines >> id && std::getline(lines >> std::ws, rest)) {
    if (rest.ends_with('\r')) rest.pop_back();
    findings[id] = rest;
  }
  return findings;
}

std::string DateIn(int seconds) {
  const std::time_t then = std::time(nullptr) + seconds;
  char text[64];
  std::strftime(text, sizeof text, "Date: %a, %d %b %Y %H:%M:%S GMT\r\n", std::gmtime(&then));
  return text;
}

std::string InFolder(const wchar_t* name) {
  return ZLT::String::UTF16ToUTF8(TestMachine::Folder() + L"\\" + name);
}

constexpr const wchar_t* PolicyKey = L"SOFTWARE\\Policies\\Microsoft\\Windows\\PowerShell";

}  // namespace

TEST(Doctor, TellsHowFarTheClockIsOffAndWhichWay) {
  const struct {
    int serverAhead;
    char verdict;
    const char* way;
  } rows[] = {{10, '0', "behind"}, {-150, '1', "ahead of"}, {1000, '2', "behind"}};
  for (const auto& row : rows) {
    Cloud().Script([&](const HttpSeen&) { return HttpAnswer{.headers = DateIn(row.serverAhead)}; });
    const std::string clock = Examine({})["clock"];
    EXPECT_EQ(clock[0], row.verdict) << clock;
    EXPECT_NE(clock.find(row.way), std::string::npos) << clock;
  }
}

TEST(Doctor, AnEndpointThatFallsSilentCostsItsPatienceOnly) {
  Cloud().Script([](const HttpSeen&) { return HttpAnswer{.delay = std::chrono::seconds(60)}; });
  const ULONGLONG begin = GetTickCount64();
  Findings findings = Examine({}, 1500);
  EXPECT_LT(GetTickCount64() - begin, 20000U);
  for (const char* id : {"endpoint", "token"}) {
    EXPECT_NE(findings[id].find("did not answer in time"), std::string::npos) << findings[id];
  }
  EXPECT_EQ(findings["clock"][0], '3') << findings["clock"];
  EXPECT_EQ(findings.size(), 12U);
}

TEST(Doctor, JudgesFoldersAndMakesNone) {
  Cloud().Script([](const HttpSeen&) { return HttpAnswer{.status = 401}; });
  TestMachine::WriteFile(TestMachine::Folder() + L"\\file", "x");
  Json::Value changes;
  changes["downloadFolder"] = InFolder(L"file\\downloads");
  changes["logFolder"] = InFolder(L"none yet\\logs");
  Findings findings = Examine(changes);
  EXPECT_NE(findings["download-folder"].find("\\file: a file has its name"), std::string::npos);
  EXPECT_EQ(findings["log-folder"][0], '0') << findings["log-folder"];
  EXPECT_EQ(findings["token"][0], '2') << findings["token"];  // Worth a record in a log.
  EXPECT_FALSE(fs::exists(TestMachine::Folder() + L"\\none yet"));
}

TEST(Doctor, ReadsThePolicyOfPowerShell) {
  const DWORD enabled = 1;
  RegSetKeyValueW(HKEY_CURRENT_USER, PolicyKey, L"EnableScripts", REG_DWORD, &enabled,
                  sizeof enabled);
  const wchar_t policy[] = L"AllSigned";
  RegSetKeyValueW(HKEY_CURRENT_USER, PolicyKey, L"ExecutionPolicy", REG_SZ, policy, sizeof policy);
  const std::string found = Examine({})["powershell"];
  RegDeleteTreeW(HKEY_CURRENT_USER, PolicyKey);
  EXPECT_EQ(found, "2 a policy allows signed scripts only");
}
