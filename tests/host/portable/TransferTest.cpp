#include "reference_host/download/FailureClass.h"

#include <gtest/gtest.h>

#include "reference_host/download/BitsLimits.h"
#include "reference_host/download/RetryPatience.h"
#include "reference_host/download/StallWatch.h"

namespace {

using namespace std::chrono_literals;
using refhost::ClassOf;
using refhost::RetryPatience;
using refhost::StallWatch;
using Context = refhost::FailureClass::Context;

constexpr std::int32_t RemoteApplication = 7;

TEST(FailureClass, ACodeThatIsKnownDecidesWhateverTheContextSays) {
  const struct {
    std::uint32_t code;
    const char* name;
    Context context;
    bool transient;
  } rows[] = {
      {0x8019012E, "moved", Context::RemoteFile, false},
      {0x8007012E, "moved, refused by BITS", Context::RemoteFile, false},
      {0x80190191, "401, expired", Context::RemoteFile, false},
      {0x80190193, "403, expired", Context::RemoteFile, false},
      {0x80190194, "404", Context::RemoteFile, false},
      {0x80190197, "407, the proxy", Context::Transport, false},
      {0x80190198, "408", Context::Transport, true},
      {0x801901AD, "429", Context::Transport, true},
      {0x801901F3, "499", Context::RemoteFile, false},
      {0x801901F4, "500", Context::Transport, true},
      {0x801901F7, "503", Context::Transport, true},
      {0x8007274C, "WSAETIMEDOUT", Context::Transport, true},
      {0x80072EE0, "the first of WinHTTP", Context::Transport, true},
      {0x80072EE2, "12002, time-out", Context::Transport, true},
      {0x80072EE5, "12005, no URL", Context::Transport, false},
      {0x80072EE7, "12007, name not resolved", Context::Transport, true},
      {0x80072EFD, "12029, no connection", Context::Transport, true},
      {0x80072EFE, "12030, connection broken", Context::Transport, true},
      {0x80072F05, "12037, certificate's date", Context::Transport, false},
      {0x80072F06, "12038, certificate's name", Context::Transport, false},
      {0x80072F0C, "12044, certificate wanted", Context::Transport, false},
      {0x80072F0D, "12045, certificate's authority", Context::Transport, false},
      {0x80072F19, "12057, revocation", Context::Transport, false},
      {0x80072F7C, "12156, redirected", Context::Transport, false},
      {0x80072F7D, "12157, handshake", Context::Transport, true},
      {0x80072F8A, "12170, revoked", Context::Transport, false},
      {0x80072F8F, "12175, certificate", Context::Transport, false},
      {0x80072F93, "12179, certificate's usage", Context::Transport, false},
      {0x80072F98, "12184, too long", Context::Transport, false},
      {0x80072FFF, "the last of WinHTTP", Context::Transport, true},
      {0x80200001, "no such job", Context::Queue, false},
      {0x8020000D, "disk locked", Context::LocalFile, false},
      {0x8020000F, "BITS does not say", Context::Unknown, true},
      {0x80200010, "no network", Context::Transport, true},
      {0x80200013, "no ranges", Context::Transport, false},
      {0x8020001B, "no answer of HTTP", Context::Transport, true},
      {0x8020001D, "piece changed", Context::LocalFile, false},
      {0x80200024, "no progress", Context::Transport, true},
      {0x8020002D, "no connection", Context::Transport, true},
      {0x80200030, "message too long", Context::Transport, false},
      {0x80200031, "name not resolved", Context::Transport, true},
      {0x8020003B, "time-out", Context::Transport, true},
      {0x8020003C, "no trust", Context::Transport, false},
      {0x8020003E, "policy", Context::Transport, true},
      {0x80200040, "proxy's logon", Context::Transport, false},
      {0x8020FFFF, "the last of BITS", Context::Queue, false},
      {0x8007000D, "other answer", Context::RemoteFile, true},
      {0x80070018, "longer", Context::Transport, true},
      {0x80070026, "shorter", Context::Transport, true},
      {0x800700CE, "name too long", Context::Queue, false},
      {0x800700DF, "too large", Context::Transport, false},
      {0x8007041D, "not run", Context::Queue, false},
      {0x800704C7, "ended by others", Context::Queue, false},
      {0x800705B4, "silent", Context::Transport, false},
  };
  for (const auto& row : rows) {
    for (const std::int32_t context : {1, 2, 4, 5, 6, 7}) {
      const refhost::FailureClass found = ClassOf(context, row.code);
      EXPECT_EQ(found.context, row.context) << row.name;
      EXPECT_EQ(found.transient, row.transient) << row.name;
    }
  }
}

TEST(FailureClass, AnUnknownCodeIsWhatItsContextSaysButNoExpiredAddress) {
  constexpr std::uint32_t AccessDenied = 0x80070005;
  const struct {
    std::int32_t told, context;
    bool transient;
  } rows[] = {{1, 1, true},  {2, 2, false},
              {4, 4, false}, {Context::RemoteFile, Context::Transport, true},
              {6, 6, true},  {RemoteApplication, Context::Transport, true}};
  for (const auto& row : rows) {
    EXPECT_EQ(ClassOf(row.told, AccessDenied).context, row.context) << row.told;
    EXPECT_EQ(ClassOf(row.told, AccessDenied).transient, row.transient) << row.told;
  }
}

TEST(StallWatch, CountsWhatAJobWaitsForAlone) {
  using Verdict = StallWatch::Verdict;
  struct Look {
    StallWatch::Time waited;
    bool runs;
    std::uint64_t bytes;
    Verdict verdict;
  };
  const struct {
    const char* name;
    std::vector<Look> looks;
  } rows[] = {
      {"silence",
       {{30s, true, 5, Verdict::GoesOn},
        {59s, true, 5, Verdict::GoesOn},
        {1s, true, 5, Verdict::Silent}}},
      {"silent from the first", {{60s, true, 0, Verdict::Silent}}},
      {"a byte begins it anew",
       {{59s, true, 0, Verdict::GoesOn},
        {59s, true, 6, Verdict::GoesOn},
        {59s, true, 6, Verdict::GoesOn},
        {1s, true, 6, Verdict::Silent}}},
      {"asleep, or in a report", {{59s, true, 0, Verdict::GoesOn}, {0s, true, 0, Verdict::GoesOn}}},
      {"behind others",
       {{59s, true, 0, Verdict::GoesOn},
        {599s, false, 0, Verdict::GoesOn},
        {1s, true, 0, Verdict::Silent}}},
      {"behind others for ever",
       {{599s, false, 0, Verdict::GoesOn}, {1s, false, 0, Verdict::HeldBack}}},
  };
  for (const auto& row : rows) {
    StallWatch watch(60s, 600s);
    for (const Look& look : row.looks) {
      EXPECT_EQ(watch.Look(look.waited, look.runs, look.bytes), look.verdict) << row.name;
    }
  }
}

TEST(RetryPatience, WaitsLongerEachTimeUntilItIsOver) {
  RetryPatience patience(10min, 1);
  RetryPatience::Time now = 1h;
  std::vector<RetryPatience::Time> waits;
  while (const auto wait = patience.Next(now, 0)) {
    waits.push_back(*wait);
    now += *wait;
  }
  ASSERT_GT(waits.size(), 7U);
  EXPECT_EQ(waits[0], 1s);
  EXPECT_EQ(waits[1], 2s);
  EXPECT_EQ(waits[7], 1min);
  EXPECT_EQ(now, 1h + 10min);  // The last try is when it is over.
  EXPECT_FALSE(patience.Next(now, 0));
  EXPECT_EQ(patience.Next(now, 1), 1s);  // It has got further.
  EXPECT_EQ(patience.Next(now, 0), 2s);  // A job that began anew has not.
  patience.Restart();
  EXPECT_EQ(patience.Next(now + 1h, 0), 1s);
  RetryPatience lab(10s, 0.1);
  EXPECT_EQ(lab.Next(0s, 0), 100ms);
  EXPECT_FALSE(lab.Next(1s, 0));
  EXPECT_FALSE(RetryPatience(0s, 1).Next(0s, 0));
}

TEST(BitsLimits, AreThoseOfTheDocumentation) {
  const std::wstring host = L"https://h/";
  const std::wstring part(260, L'x');
  const struct {
    std::wstring url;
    bool taken;
  } rows[] = {{host + part, true},
              {host + part + L"x", false},
              {host + part + L"/" + part, true},
              {host + L"a/" + part + L"x/b", false},
              {host + L"a?" + part + part, true},
              {host + L"?" + std::wstring(2189, L'x'), true},
              {host + L"?" + std::wstring(2190, L'x'), false}};
  for (const auto& row : rows) EXPECT_EQ(refhost::IsAddressForBits(row.url), row.taken);
  EXPECT_TRUE(refhost::IsPathForBits(part));
  EXPECT_FALSE(refhost::IsPathForBits(part + L"x"));
  EXPECT_EQ(refhost::HeadersForBits(L"a: b\r\nc: d"), L"a: b\r\nc: d\r\n");
  EXPECT_EQ(refhost::HeadersForBits(L"a: b\r\n"), L"a: b\r\n");
  EXPECT_EQ(refhost::HeadersForBits(L""), L"");
}

}  // namespace
