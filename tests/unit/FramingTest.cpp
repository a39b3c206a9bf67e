#include "tests/unit/AgentFixture.h"

using FramingTest = AgentFixture;

TEST_F(FramingTest, EveryRequestIsAuthorisedSentAndLogged) {
  for (const Operation& op : Requests) {
    const Reply reply{R"({"result":{"code":0,"text":"ü"}})", 201};
    fake.next[op.type] = {reply};
    const std::string name = "d TolmarAgent: " + op.name;
    const std::string payload = op.IsReport() ? name + " payload:\\n" + op.Body() + "\n" : "";
    EXPECT_EQ(Call(op), 0U) << op.name;
    EXPECT_EQ(fake.Transcript({"session", "jwt", "POST", "with", "d TolmarAgent: ", "e "}),
              payload + "session TolmarAgent\njwt session\nPOST https://cloud/mp/zlt/v2/" +
                  op.type + "?deviceId=D-1 " + op.Body() +
                  "\nwith Content-Type: application/json\\r\\ntoken: jwt\n" + name +
                  " response:\\n" + reply.body + "\n" + name + " succeeded\n");
    fake.sessions = {L"", L"", L""};
    EXPECT_EQ(Call(op), op.code) << op.name;
    EXPECT_EQ(fake.Transcript({"POST", "d TolmarAgent: "}),
              payload + name + " failed due to empty token\n");
    for (const Reply& failure : {Reply{reply.body, 404},
                                 {reply.body, 202},
                                 {"", 200},
                                 {"", 201},
                                 {reply.body, 200, false},
                                 {"", 12002, false}}) {
      fake.next[op.type] = {failure};
      EXPECT_EQ(Call(op), op.IsReport() ? op.code : failure.status) << op.name;
      EXPECT_EQ(fake.Count("POST"), 1U);
      EXPECT_EQ(fake.Transcript({"d TolmarAgent: "}), payload);
    }
    fake.next[op.type] = {{"throw", 503}};
    EXPECT_EQ(Call(op), 11U) << op.name;
  }
}

TEST_F(FramingTest, TheTokenIsTriedForThreeTimes) {
  const std::string empty = "e KIV.GetJwtFromServer: Current Token is empty. count=";
  const std::string failed = "e KIV.GetJwtFromServer: Failed to get Jwt from server. count=";
  const std::string with = "with Content-Type: application/json\\r\\ntoken: ";
  const std::string twice = "jwt a\n" + failed + "0\njwt session\n" + failed + "1\njwt session\n";
  // clang-format off
  const struct {
    std::deque<std::wstring> sessions;
    std::deque<std::pair<unsigned long, std::string>> exchanges;
    std::string lines;
  } rows[] = {
      {{L"", L"a"}, {}, empty + "0\njwt a\n" + with + "jwt\n"},
      {{L"", L"", L""}, {}, empty + "0\n" + empty + "1\n" + empty + "2\n"},
      {{L"a", L"", L"c"}, {{401, ""}}, "jwt a\n" + failed + "0\n" + empty + "1\njwt c\n" + with + "jwt\n"},
      {{L"a"}, {{0, ""}, {0, ""}}, twice + with + "jwt\n"},
      {{L"a"}, {{0, ""}, {0, ""}, {0, ""}}, twice + failed + "2\n"},
      {{L"a"}, {{5, "half"}, {5, ""}, {5, ""}}, twice + failed + "2\n" + with + "half\n"},
  };
  // clang-format on
  for (const auto& row : rows) {
    fake.sessions = row.sessions;
    fake.exchanges = row.exchanges;
    Call(Queries[1]);
    EXPECT_EQ(fake.Transcript({"e ", "jwt", "with"}), row.lines);
  }
}

TEST_F(FramingTest, TextThatDoesNotFitIsNeverSent) {
  const std::size_t body = Reports[1].Body().size() - 4;  // without the message, four bytes
  const std::size_t path = std::string("/mp/zlt/v2/installProgress?deviceId=D-1").size();
  const struct {
    std::size_t body, url;
    unsigned long code;
  } rows[] = {{2047, 1023, 0}, {2048, 99, 11}, {9000, 99, 11}, {200, 1024, 11}, {200, 3000, 11}};
  for (const auto& row : rows) {
    fake.Forget();
    TolmarAgent::SetBaseUri(std::wstring(row.url - path, L'u'));
    const std::wstring message(row.body - body, L'm');
    EXPECT_EQ(Agent().ReportInstallProgress(L"P", L"M", 2, message, L"T"), row.code);
    EXPECT_EQ(fake.Count("POST"), row.code == 0 ? 1U : 0U);
  }
}
