#include "reference_host/doctor/Judgement.h"

#include <gtest/gtest.h>

namespace {

using refhost::Finding;
using refhost::Health;

struct Row {
  Finding finding;
  Health health;
  const char* said;  ///< in what was found or in the remedy
};

}  // namespace

TEST(Judgement, IsAsItsLimitsSay) {
  using namespace refhost;
  const Row rows[] = {
      {JudgeClock(0), Health::Ok, "as the service's"},
      {JudgeClock(-60), Health::Ok, "60 s behind"},
      {JudgeClock(61), Health::Warn, "61 s ahead of"},
      {JudgeClock(300), Health::Warn, "w32tm"},
      {JudgeClock(-301), Health::Fail, "301 s behind"},
      {JudgeSpace(2'000'000'000), Health::Ok, "2000 MB"},
      {JudgeSpace(1'999'999'999), Health::Warn, "1999 MB"},
      {JudgeSpace(100'000'000), Health::Warn, "Free some"},
      {JudgeSpace(99'999'999), Health::Fail, "99 MB"},
      {JudgeSpace(std::uint64_t{5} << 40), Health::Ok, "5497558 MB"},
      {JudgeScriptPolicy(std::nullopt, "AllSigned"), Health::Ok, "no policy"},
      {JudgeScriptPolicy(0, ""), Health::Fail, "forbids all"},
      {JudgeScriptPolicy(1, "AllSigned"), Health::Fail, "signed scripts only"},
      {JudgeScriptPolicy(1, "RemoteSigned"), Health::Ok, "RemoteSigned"},
      {JudgeEndpoint(404), Health::Ok, "404"},
      {JudgeEndpoint(407), Health::Fail, "logon"},
      {JudgeEndpoint(12175), Health::Fail, "trusted roots"},
      {JudgeEndpoint(12999), Health::Fail, "not reached"},
      {JudgeToken(0), Health::Ok, "exchanged"},
      {JudgeToken(401), Health::Fail, "Check sessionToken and tokenUrl"},
      {JudgeToken(503), Health::Fail, "overloaded"},
      {JudgeToken(12029), Health::Fail, "No connection"},
      {JudgeToken(12152), Health::Fail, "another shape"},
      {JudgeToken(1168), Health::Fail, "(1168)"},
  };
  for (const Row& row : rows) {
    const std::string text = row.finding.found + " " + row.finding.remedy;
    EXPECT_EQ(row.finding.health, row.health) << text;
    EXPECT_NE(text.find(row.said), std::string::npos) << text;
    EXPECT_EQ(row.finding.health == Health::Ok, row.finding.remedy.empty()) << text;
  }
}
