#include "tests/unit/AgentFixture.h"

using RetryTest = AgentFixture;

const Reply Down{"", 503};
const Reply Junk{"<html>"};
const Reply Refused = Result(R"({"code":5})");

TEST_F(RetryTest, QueriesAreSentUpToFourTimesWithWaitsByTheKindOfFailure) {
  constexpr unsigned long refused = 1;  // stands for the query's own code
  // clang-format off
  const struct {
    std::deque<Reply> replies;
    std::string waits;  // l: 60 to 1800 seconds, s: 2 to 900
    unsigned long code;
  } rows[] = {
      {{}, "", 0},
      {{Down, Down, Down, Down, Down}, "lll", 503},
      {{Junk, Junk, Junk, Junk, Junk}, "sss", 39},
      {{Refused, Refused, Refused, Refused, Refused}, "sss", refused},
      {{Down, Junk, Refused}, "lss", 0},
      {{Refused, Junk, Down, Junk}, "ssl", 39},
      {{Down, {"", 404}}, "l", 404},
      {{{"", 500}}, "l", 0}, {{{"", 504}}, "l", 0}, {{{"", 12007, false}}, "l", 0},
      {{{"", 12029, false}}, "l", 0}, {{{"", 501}}, "", 501}, {{{"", 502}}, "", 502},
      {{{"", 12002, false}}, "", 12002}, {{{"throw"}}, "", 11}};
  // clang-format on
  for (const Operation& op : Queries) {
    fake.waitsFail = op.code == 30;  // changes nothing
    for (const auto& row : rows) {
      fake.next[op.type] = row.replies;
      EXPECT_EQ(Call(op), row.code == refused ? op.Refused() : row.code) << op.name;
      EXPECT_EQ(fake.Count("POST"), row.waits.size() + 1) << op.name;
      std::string waits;
      for (std::size_t i = 0; i < row.waits.size(); ++i) {
        waits += "retry-wait " + std::to_string(i) + " of " +
                 (row.waits[i] == 'l' ? "60 to 1800" : "2 to 900") + "\nwait stop " +
                 std::to_string(i + 1) + "00\n";
      }
      EXPECT_EQ(fake.Transcript({"retry-wait", "wait"}), waits) << op.name;
    }
  }
}

TEST_F(RetryTest, EveryStepIsLogged) {
  fake.next["hasEntitlement"] = {Down, Refused, Junk};
  Call(Queries[0]);
  EXPECT_EQ(fake.Transcript({"d TolmarAgent::"}),
            R"(d TolmarAgent::shouldRetry: responseCode = 503l
d TolmarAgent::HasEntitledSoftware: Retrying
d TolmarAgent::HasEntitledSoftware: retryMinSeconds = 60, retryMaxSeconds = 1800, retCode = 4294967295l
d TolmarAgent::HasEntitledSoftware: Retrying times 1
d TolmarAgent::shouldRetry: responseCode = 0l
d TolmarAgent::ParseHasEntitlementResponseForRetry: retCode = 34l
d TolmarAgent::HasEntitledSoftware: Retrying
d TolmarAgent::HasEntitledSoftware: retryMinSeconds = 2, retryMaxSeconds = 900, retCode = 34l
d TolmarAgent::HasEntitledSoftware: Retrying times 2
d TolmarAgent::shouldRetry: responseCode = 0l
d TolmarAgent::ParseHasEntitlementResponseForRetry: retCode = 39l
d TolmarAgent::HasEntitledSoftware: Retrying
d TolmarAgent::HasEntitledSoftware: retryMinSeconds = 2, retryMaxSeconds = 900, retCode = 39l
d TolmarAgent::HasEntitledSoftware: Retrying times 3
d TolmarAgent::ParseHasEntitlementResponseForRetry: retCode = 0l
d TolmarAgent::HasEntitledSoftware: retCode = 0l
)");
  Call(Queries[0]);
  EXPECT_EQ(fake.Count("d TolmarAgent::HasEntitledSoftware: breaking from While with nRetry = 0l"),
            1U);
  EXPECT_EQ(fake.Count("d TolmarAgent::ParseHasEntitlementResponseForRetry: retCode = 0l"), 2U);
  fake.next["hasEntitlement"] = {{"", 404}};
  Call(Queries[0]);
  EXPECT_EQ(fake.Count("d TolmarAgent::Parse"), 0U);
  fake.next["entitlement"] = {Down};
  Call(Queries[1]);
  const std::string label = "d TolmarAgent::GetEntitledSoftware: ";
  EXPECT_EQ(fake.Transcript({label + "E", label + "Retrying t", label + "b", label + "retCode"}),
            label + "Entry\n" + label + "Retrying times 1\n" + label + "retCode = 0l\n" + label +
                "Exit\n");
}

TEST_F(RetryTest, TheStopEventEndsTheWaitAndTheLastReplyIsStillRead) {
  SetEvent(StopEvent());
  for (const Operation& op : Queries) {
    fake.next[op.type] = {Refused};
    EXPECT_EQ(Call(op), op.Refused());
    const std::string label = "d TolmarAgent::" + op.query + ": ";
    EXPECT_EQ(fake.Transcript({"POST", label + "_h", label + "Retrying t"})
                  .find("_hStopEvent Signaled\n"),
              fake.Transcript({"POST"}).size() + label.size());
    EXPECT_EQ(fake.Count("POST"), 1U);
  }
}

TEST_F(RetryTest, TheCodeOfAReplyIsReadByEachQueryInItsOwnWay) {
  // clang-format off
  const struct {
    std::string body;
    unsigned long codes[3];  // has-entitlement, entitlement, download request
  } rows[] = {
      {R"({"result":{"code":0}})", {0, 0, 0}}, {R"({"result":{"code":-1}})", {34, 35, 36}},
      {R"({"result":{}})", {34, 0, 36}}, {R"({})", {34, 0, 36}}, {R"(null)", {34, 0, 36}},
      {R"({"result":{"code":null}})", {34, 0, 36}}, {R"({"result":{"code":0.0}})", {34, 0, 36}},
      {R"({"result":{"code":"0"}})", {34, 39, 36}}, {R"({"result":{"code":[]}})", {34, 39, 36}},
      {R"({"result":5})", {39, 39, 39}}, {R"({"result":[]})", {39, 39, 39}},
      {R"([])", {39, 39, 39}}, {R"("text")", {39, 39, 39}}, {R"({"result":{"code":0)", {39, 39, 39}},
      {std::string(5000, '['), {39, 39, 39}}};
  // clang-format on
  for (std::size_t i = 0; i < 3; ++i) {
    for (const auto& row : rows) {
      fake.always[Queries[i].type] = {row.body};
      EXPECT_EQ(Call(Queries[i]), row.codes[i]) << i << row.body.substr(0, 80);
      EXPECT_EQ(fake.Count("POST"), row.codes[i] == 0 ? 1U : 4U) << i << row.body.substr(0, 80);
    }
  }
}

TEST_F(RetryTest, HasEntitlementIsTakenAndPublishedOnEveryReading) {
  const struct {
    std::string result;
    int entitled;  // 9: as the caller set it
    bool preinstall;
    std::size_t published;
  } rows[] = {{R"({"code":0,"hasEntitlement":true,"hasPreinstallSw":true})", 1, true, 2},
              {R"({"code":0,"hasEntitlement":false})", 0, true, 2},
              {R"({"code":0,"hasEntitlement":2,"hasPreinstallSw":false})", 1, false, 2},
              {R"({"hasEntitlement":true,"hasPreinstallSw":true})", 1, true, 4},
              {R"({"code":0,"hasEntitlement":"yes"})", 9, true, 0},
              {R"([])", 9, true, 0}};
  for (const auto& row : rows) {
    fake.always["hasEntitlement"] = Result(row.result);
    fake.Forget();
    unsigned char entitled = 9;
    Agent().HasEntitledSoftware(entitled);
    EXPECT_EQ(entitled, row.entitled) << row.result;
    EXPECT_EQ(HasPreinstallFlag(), row.preinstall) << row.result;
    const std::string key = " true Software\\Corvan\\ZLT\\Entitlement";
    EXPECT_EQ(fake.Count("key" + key), row.published) << row.result;
    EXPECT_EQ(fake.Count("value" + key + " Entitled " + std::to_string(entitled)), row.published);
  }
  fake.keyExists = 0;
  fake.always.clear();
  Call(Queries[0]);
  const std::string line = "e TolmarAgent: Failed to create registry path for entitled flag\n";
  EXPECT_EQ(fake.Transcript({"e ", "value"}), line + line);
}

TEST_F(RetryTest, TheAnswerIsHandedOutAsItStandsAlsoWhenItIsARefusal) {
  for (const std::string answer : {R"({"code":0,"swList":[{"l1FruPn":"T"}]})", R"({"code":5})"}) {
    fake.always["entitlement"] = fake.always["downloadRequest"] = Result(answer);
    Json::Value titles, files;
    Agent().GetEntitledSoftware(titles);
    Agent().GetDownloadFiles(files, L"P", L"M");
    EXPECT_TRUE(titles == Parsed(answer) && files == titles) << titles << files;
    fake.always["entitlement"] = Junk;
    EXPECT_EQ(Agent().GetEntitledSoftware(titles), 39U);
    EXPECT_EQ(titles, files);  // nothing to read: left as it was
  }
}
