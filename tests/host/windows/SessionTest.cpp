#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <ctime>
#include <cwchar>
#include <future>
#include <set>
#include <thread>

#include "host/common/ApiUtility.h"
#include "host/common/DateTime.h"
#include "host/common/DownloadAgent.h"
#include "host/common/EpUrlProvider.h"
#include "host/common/HttpRequest.h"
#include "host/common/Text.h"
#include "host/common/Utility.h"
#include "host/core/DeviceIdAgent.h"
#include "host/core/ZLTPublisherSubscriber.h"
#include "host/session/Tessary.h"
#include "reference_host/Startup.h"
#include "tests/host/windows/FakeImport.h"
#include "tests/host/windows/TestMachine.h"

namespace {

using TestMachine::Cloud;

std::string Base64Url(const std::string& bytes) {
  const char* digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
  std::string text;
  unsigned int bits = 0, count = 0;
  for (const char c : bytes) {
    bits = bits << 8 | static_cast<unsigned char>(c);
    for (count += 8; count >= 6; count -= 6) text += digits[bits >> (count - 6) & 63];
  }
  if (count != 0) text += digits[bits << (6 - count) & 63];
  return text;
}

/// @return a token that expires in so many seconds; `mark` tells it from others.
std::string JwtFor(std::time_t seconds, const std::string& mark) {
  return "e30." + Base64Url("{\"exp\":" + std::to_string(std::time(nullptr) + seconds) + "}") +
         "." + mark;
}

HttpAnswer Giving(const std::string& jwt) { return {.body = "{\"jwt\":\"" + jwt + "\"}"}; }

unsigned long Ask(const std::string& sessionToken, std::string& jwt) {
  return Tessary::GetInstance()->GetJwtFromServer(sessionToken, jwt);
}

TEST(TokenBroker, SendsTheSessionTokenAsJson) {
  Cloud().Script([](const HttpSeen&) { return Giving(JwtFor(0, "a")); });
  EXPECT_NE(Tessary::GetInstance()->IsRegistered(), 0);
  EXPECT_EQ(Tessary::GetInstance()->GetCurrentToken(L"test"), L"session\"\\token");
  std::string jwt;
  ASSERT_EQ(Ask("session\"\\token", jwt), 0U);
  ASSERT_EQ(Cloud().Seen().size(), 1U);
  EXPECT_EQ(Cloud().Seen()[0].method + Cloud().Seen()[0].target, "POST/token");
  EXPECT_NE(Cloud().Seen()[0].body.find(R"("session\"\\token")"), std::string::npos);
}

TEST(TokenBroker, KeepsATokenUntilAMinuteBeforeItExpires) {
  const struct {
    const char* session;  ///< of its own for each row: tokens are kept by it
    std::time_t seconds;
    std::size_t exchanges;
  } rows[] = {{"lasting", 3600, 1}, {"nearly over", 59, 2}, {"over", -10, 2}};
  for (const auto& row : rows) {
    Cloud().Script([&](const HttpSeen&) {
      return Giving(JwtFor(row.seconds, row.session[0] + std::string("x")));
    });
    std::string first, second;
    EXPECT_EQ(Ask(row.session, first), 0U);
    EXPECT_EQ(Ask(row.session, second), 0U);
    EXPECT_FALSE(second.empty());
    EXPECT_EQ(Cloud().Seen().size(), row.exchanges) << row.session;
  }
}

TEST(TokenBroker, AFailureLeavesTheTokenAloneAndTellsWhy) {
  const struct {
    HttpAnswer answer;
    unsigned long code;
  } rows[] = {
      {{.status = 401}, 401},
      {{.status = 503, .body = "{\"jwt\":\"a.b.c\"}"}, 503},
      {{.body = "{\"jwt\":\"a.b.c\"", .announced = 99}, 12030},
      {{}, 12152},
      {{.body = "{"}, 12152},
      {{.body = "[1]"}, 12152},
      {{.body = "{\"jwt\":{}}"}, 12152},
      {{.body = "{\"jwt\":\"\"}"}, 12152},
      {{.body = "{\"jwt\":\"a.b.c\\r\\nHost: evil\"}"}, 12152},
      {{.body = std::string(5000, '[')}, 12152},
  };
  for (const auto& row : rows) {
    Cloud().Script([&](const HttpSeen&) { return row.answer; });
    std::string jwt = "before";
    EXPECT_EQ(Ask("failing", jwt), row.code) << row.answer.body;
    EXPECT_EQ(jwt, "before");
  }
}

TEST(TokenBroker, ManyThreadsShareOneExchange) {
  Cloud().Script([](const HttpSeen&) {
    HttpAnswer answer = Giving(JwtFor(3600, "shared"));
    answer.delay = std::chrono::milliseconds(100);
    return answer;
  });
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([] {
      std::string jwt;
      EXPECT_EQ(Ask("shared by all", jwt), 0U);
      EXPECT_TRUE(jwt.ends_with(".shared"));
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(Cloud().Seen().size(), 1U);
}

TEST(TokenBroker, ManyThreadsShareAFailureToo) {
  Cloud().Script([](const HttpSeen&) {
    return HttpAnswer{.status = 503, .delay = std::chrono::milliseconds(300)};
  });
  std::vector<std::thread> titles;
  for (int i = 0; i < 200; ++i) {
    titles.emplace_back([] {
      std::string jwt;
      for (int attempt = 0; attempt < 3; ++attempt) EXPECT_EQ(Ask("dead", jwt), 503U);
    });
  }
  for (std::thread& title : titles) title.join();
  EXPECT_LT(Cloud().Seen().size(), 30U);  // of 600
}

TEST(TokenBroker, AStopLetsGoOfWhoWaitsForAnothersExchange) {
  const struct {
    std::string session;
    std::function<void()> stop;
  } rows[] = {
      {"download service stops",
       [] { DownloadAgent::GetInstance(L"Broker", {}, {}, {})->CleanUp(); }},
      {"last subscriber goes",
       [] {
         auto* bus = ZLTPublisherSubscriber::GetInstance();
         bus->Unsubscribe(bus->Subscribe([](ZLTNotificationData&) {}, false));
       }},
  };
  for (const auto& row : rows) {
    std::promise<void> release;
    Cloud().Script([answer = release.get_future().share()](const HttpSeen&) {
      answer.wait();
      return Giving(JwtFor(3600, "late"));
    });
    std::string jwts[2];
    auto first = std::async(std::launch::async, Ask, row.session, std::ref(jwts[0]));
    while (Cloud().Seen().empty()) std::this_thread::yield();
    auto second = std::async(std::launch::async, Ask, row.session, std::ref(jwts[1]));
    row.stop();
    EXPECT_EQ(second.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    release.set_value();
    EXPECT_EQ(second.get(), 12017U) << row.session;
    EXPECT_EQ(first.get(), 0U) << row.session;
  }
}

/// The time since the system's start, as it is after a long sleep.
ULONGLONG slept = 0;
ULONGLONG WINAPI TickCountAfterSleep() { return GetTickCount64() + slept; }

TEST(TokenBroker, CountsATokensAgeWhileTheMachineSleepsAndByNoClockOfItsOwn) {
  const struct {
    std::string session;
    std::string times;
    std::string headers;
  } rows[] = {
      {"by its own times", R"({"iat":1000,"exp":4600})", ""},
      {"by the server's date", R"({"exp":784115377})", "Date: Sun, 06 Nov 1994 08:49:37 GMT\r\n"},
      {"both are of this year", R"({"iat":4102444800,"exp":4102448400})",
       "Date: Fri, 01 Jan 2100 00:00:00 GMT\r\n"},
  };
  slept = 0;
  const FakeImport clock("kernel32.dll", "GetTickCount64",
                         reinterpret_cast<void*>(&TickCountAfterSleep));
  for (const auto& row : rows) {
    Cloud().Script([&](const HttpSeen&) {
      HttpAnswer answer = Giving("e30." + Base64Url(row.times) + ".age");
      answer.headers = row.headers;
      return answer;
    });
    std::string jwt;
    for (const auto& [seconds, exchanges] : {std::pair(0ULL, 1U), {3500, 1}, {41, 2}}) {
      slept += 1000 * seconds;
      EXPECT_EQ(Ask(row.session, jwt), 0U);
      EXPECT_EQ(Cloud().Seen().size(), exchanges) << row.session;
    }
  }
}

TEST(TokenBroker, ATokenThatTheCloudRefusesIsExchangedAnew) {
  std::atomic<int> exchanges{0};
  Cloud().Script([&](const HttpSeen& seen) {
    if (seen.target != "/token") return HttpAnswer{.status = 401};
    return Giving(JwtFor(3600, "number" + std::to_string(++exchanges)));
  });
  const auto refuse = [](const std::string& jwt) {
    ZLT::HttpRequest request(Cloud().Url(L"/query").c_str(), L"", nullptr,
                             ZLT::HttpTimeouts::DEFAULT);
    const std::wstring headers =
        L"Content-Type: application/json\r\ntoken: " + ZLT::String::UTF8ToUTF16(jwt);
    request.doPost("{}", 2, headers.c_str());
    return request.getStatusCode();
  };
  std::string old, jwt;
  EXPECT_EQ(Ask("revoked", old), 0U);
  EXPECT_EQ(refuse(old), 401U);
  EXPECT_EQ(Ask("revoked", jwt), 0U);
  EXPECT_EQ(exchanges, 2);
  EXPECT_EQ(refuse(old), 401U);  // it is the newer one's that is kept
  EXPECT_EQ(Ask("revoked", jwt), 0U);
  EXPECT_EQ(exchanges, 2);
}

TEST(Identity, IsTheConfiguredTextAndItsHash) {
  DeviceIdAgent* agent = DeviceIdAgent::GetInstance(DeviceIdentityService::GetInstance());
  std::wstring text;
  EXPECT_EQ(agent->GetDeviceID(text), 0U);
  EXPECT_EQ(text, L"PC-T\u00E4st");
  unsigned char bytes[40] = {};
  std::uint32_t length = 8;
  EXPECT_NE(agent->GetDeviceID(bytes, &length, 0), 0U);
  EXPECT_EQ(length, 32U);
  EXPECT_EQ(bytes[0], 0);
  length = sizeof bytes;
  EXPECT_EQ(agent->GetDeviceID(bytes, &length, 0), 0U);
  EXPECT_EQ(length, 32U);
  const unsigned char expected[] = {0x00, 0xd5, 0x04, 0x67, 0x4e, 0x74, 0x4c, 0x91,
                                    0xc0, 0x4a, 0xbc, 0x13, 0x49, 0xbd, 0x1a, 0x11,
                                    0x5b, 0xbb, 0x2b, 0x5c, 0x7f, 0x26, 0xe4, 0x57,
                                    0x2c, 0xcd, 0x01, 0xa0, 0xad, 0xd1, 0x8d, 0xf1};
  EXPECT_TRUE(std::equal(std::begin(expected), std::end(expected), bytes));
}

TEST(Endpoint, IsTheConfiguredOne) {
  std::wstring url, realm;
  EXPECT_TRUE(EpUrlProvider::GetInstance()->GetBaseUrl(url));
  EXPECT_TRUE(EpUrlProvider::GetInstance()->GetRealm(realm));
  EXPECT_EQ(url, Cloud().Url(L""));
  EXPECT_EQ(realm, L"test");
  EXPECT_EQ(ZLT::utility::GetZltKivDownloadPath(), TestMachine::Folder() + L"\\downloads");
  EXPECT_TRUE(ZLT::utility::GetSystemDirectoryW().ends_with(L"\\system32"));
}

TEST(Clock, ShowsLocalTimeAndCountsSeconds) {
  EXPECT_NEAR(static_cast<double>(DateTimeUtility::GetCurrentDatetime()),
              static_cast<double>(std::time(nullptr)), 2);
  EXPECT_EQ(DateTimeUtility::CompareDateTime(10, 70), -60.0);
  const std::time_t before = std::time(nullptr);
  std::tm local{};
  localtime_s(&local, &before);
  wchar_t minute[20];
  std::wcsftime(minute, 20, L"%Y-%m-%d %H:%M:", &local);
  const std::wstring shown = ZLT::System::GetTime();
  EXPECT_EQ(shown.size(), 19U);
  EXPECT_TRUE(shown.starts_with(minute) || local.tm_sec >= 58);
}

TEST(RetryWait, DiffersFromCallToCallAndIsScaled) {
  std::set<unsigned int> waits;
  for (int i = 0; i < 100; ++i) {
    const unsigned int wait = ZLT::ApiUtility::GetSleepDurationInMillis(2, 2, 900);
    EXPECT_GE(wait, 45000U);  // half of 450 s: the configuration scales by 0.1
    EXPECT_LE(wait, 90000U);
    waits.insert(wait);
  }
  EXPECT_GT(waits.size(), 50U);
}

TEST(Start, TellsWhyThereIsNoConfiguration) {
  const std::wstring folder = TestMachine::Folder();
  TestMachine::WriteFile(folder + L"\\bad.json", "{\"baseUrl\":1}");
  TestMachine::WriteFile(folder + L"\\large.json", std::string(2 << 20, ' '));
  const struct {
    std::wstring name;
    const char* named;
  } rows[] = {
      {folder + L"\\none.json", "none.json: cannot be opened"},
      {folder + L"\\bad.json", "bad.json: key \"baseUrl\" must be a text"},
      {folder + L"\\large.json", "large.json: is larger"},
      {folder, "cannot be opened"},
  };
  for (const auto& row : rows) {
    std::string output;
    EXPECT_EQ(TestMachine::RunAgain(L"--start", row.name, output), 1U);
    EXPECT_NE(output.find(row.named), std::string::npos) << output;
    EXPECT_EQ(output.find('\n'), std::string::npos) << output;
  }
  std::wstring error = L"untouched";
  EXPECT_TRUE(refhost::Start(error));
  EXPECT_EQ(error, L"untouched");
}

}  // namespace
