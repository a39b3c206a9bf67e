#include <chrono>
#include <thread>

#include "tests/cloudsim/CloudsimProcess.h"

namespace {

class ControlTest : public CloudsimTest {
 protected:
  int Switch(const std::string& fault, bool active) {
    const std::string body =
        R"({"fault":)" + fault + R"(,"active":)" + (active ? "true" : "false") + "}";
    return _client->Patch("/faults", body, "application/json")->status;
  }
  Json::Value State(const std::string& query = "") {
    return Parsed(NewClient()->Get("/console/state?" + query)->body);
  }

  /// @return the first state that tells of a download, or of none; the last one after 10 s.
  Json::Value Await(bool download) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    Json::Value state = State("since=2");
    while (state["downloads"].empty() == download && std::chrono::steady_clock::now() < deadline) {
      state = State("since=2");
    }
    return state;
  }
};

TEST_F(ControlTest, FaultsAreSwitchedOneByOneWhileCallsCountOn) {
  Start(R"([{"on":"entitlement","call":3,"status":404},{"on":"token","call":9,"reply":"x"}])");
  Ask("entitlement");
  const std::string down = R"({"on":"entitlement","status":503})";
  EXPECT_EQ(Switch(down, true), 200);
  EXPECT_EQ(Ask("entitlement")->status, 503);
  EXPECT_EQ(State()["faults"].size(), 3U);
  EXPECT_EQ(State()["faults"][0], Parsed(down));
  EXPECT_EQ(State()["faults"][1], Parsed(R"({"on":"entitlement","call":3,"status":404})"));
  EXPECT_EQ(State()["faults"][2], Parsed(R"({"on":"token","call":9,"reply":""})"));
  EXPECT_EQ(Switch(down, false), 200);
  EXPECT_EQ(Ask("entitlement")->status, 404);
  EXPECT_EQ(Ask("entitlement")->status, 200);
  EXPECT_EQ(Switch(R"({"on":"entitlement","status":42})", true), 400);
  EXPECT_EQ(_client->Patch("/faults", down, "application/json")->status, 400);
}

TEST_F(ControlTest, TellsWhatCameSinceAndWhichFilesAreOnTheirWay) {
  Start("[]", {"--file-rate", "100000"});
  const std::string url = UrlOf("archiver.cab");
  std::thread device([&, client = std::shared_ptr(NewClient())] {
    EXPECT_EQ(client->Get(url, {{"Range", "bytes=100000-"}})->body, _cab.substr(100'000));
  });
  const Json::Value state = Await(true);
  EXPECT_EQ(state["last"], 3);
  EXPECT_EQ(state["received"].size(), 1U);
  EXPECT_EQ(state["received"][0]["type"], "file");
  EXPECT_EQ(state["downloads"][0]["device"], "D");
  EXPECT_EQ(state["downloads"][0]["from"], 100'000);
  EXPECT_EQ(state["downloads"][0]["size"], 300'000);
  device.join();
  EXPECT_TRUE(Await(false)["downloads"].empty());
  EXPECT_EQ(State("since=9")["received"].size(), 0U);
}

TEST_F(ControlTest, AnswersUnderThisMachinesNamesAlone) {
  Start();
  const std::string port = std::to_string(_cloud->Port());
  const char* const paths[] = {"/", "/received", "/console/state"};
  for (const char* path : paths) {
    for (const std::string& name : {"localhost:" + port, "127.0.0.1:" + port, "[::1]:" + port}) {
      EXPECT_EQ(_client->Get(path, {{"Host", name}})->status, 200) << path << name;
    }
    for (const std::string& name : {"elsewhere.example:" + port, "localhost.example:" + port}) {
      EXPECT_EQ(_client->Get(path, {{"Host", name}})->status, 403) << path << name;
    }
  }
}

}  // namespace
