#include <atomic>
#include <thread>

#include "tests/cloudsim/CloudsimProcess.h"

namespace {

const std::string Known = R"(,"l1FruPn":"T-1","moduleFruPn":"M-1")";

class ServiceTest : public CloudsimTest {
 protected:
  Json::Value ResultOf(const std::string& type, const std::string& members = "") {
    const auto reply = Ask(type, members);
    EXPECT_TRUE(reply && reply->status == 200) << type;
    return reply ? Parsed(reply->body)["result"] : Json::Value();
  }
};

TEST_F(ServiceTest, AnswersEveryRequestOfAnEntitledDevice) {
  Start("[]", {}, R"(["D"])");
  const struct {
    std::string type, members, result;
  } rows[] = {
      {"hasEntitlement", "", R"({"code":0,"hasEntitlement":true,"hasPreinstallSw":true})"},
      {"entitlement", "",
       R"({"code":0,"swList":[{"l1FruPn":"T-1","name":"Archiver","preinstallSw":true,
           "moduleList":[{"moduleFruPn":"M-1"}]},
           {"l1FruPn":"T-2","name":"Empty","moduleList":[]}]})"},
      {"downloadRequest", R"(,"l1FruPn":"T-1","moduleFruPn":"M-9")", R"({"code":4})"},
      {"downloadRequest", R"(,"l1FruPn":"T-2","moduleFruPn":"M-1")", R"({"code":4})"},
      {"downloadRequest", R"(,"l1FruPn":["T-1"],"moduleFruPn":7)", R"({"code":4})"},
      {"downloadProgress", Known + R"(,"action":0,"progress":40)", R"({"code":0})"},
      {"installProgress", Known + R"(,"action":2)", R"({"code":0})"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(ResultOf(row.type, row.members), Parsed(row.result)) << row.type << row.members;
  }
}

TEST_F(ServiceTest, ListsAModulesFilesWithSizeAndChecksum) {
  Start();
  const Json::Value list = ResultOf("downloadRequest", Known)["fileList"];
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[0]["name"], "archiver.cab");
  EXPECT_EQ(list[0]["size"], 300'000);
  EXPECT_EQ(list[1]["name"], "check.ps1");
  EXPECT_EQ(list[1]["size"], 7);
  EXPECT_EQ(list[1]["crc"], "d432886a");
}

TEST_F(ServiceTest, OffersNothingToADeviceWithoutEntitlement) {
  Start("[]", {}, R"(["PC-0001"])");
  EXPECT_EQ(ResultOf("hasEntitlement"),
            Parsed(R"({"code":0,"hasEntitlement":false,"hasPreinstallSw":false})"));
  EXPECT_EQ(ResultOf("entitlement"), Parsed(R"({"code":0,"swList":[]})"));
  EXPECT_EQ(ResultOf("downloadRequest", Known), Parsed(R"({"code":4})"));
}

TEST_F(ServiceTest, ExchangesOnlyTheSessionTokenOfTheCatalogue) {
  Start();
  const struct {
    std::string body;
    int status;
  } rows[] = {{R"({"sessionToken":"s3cret-session"})", 200},
              {R"({"sessionToken":"s3cret-sessioN"})", 401},
              {R"({"sessionToken":""})", 401},
              {R"({"sessionToken":7})", 400},
              {R"(["s3cret-session"])", 400},
              {"", 400}};
  for (const auto& row : rows) {
    const auto reply = _client->Post("/token", row.body, "application/json");
    ASSERT_TRUE(reply) << row.body;
    EXPECT_EQ(reply->status, row.status) << row.body;
    EXPECT_EQ(Parsed(reply->body).isMember("jwt"), row.status == 200) << row.body;
  }
}

TEST_F(ServiceTest, RefusesEveryTokenButItsOwn) {
  Start();
  const std::string strangers = Jwt();
  Start();  // Another process, with a key of its own.
  const std::string jwt = Jwt();
  const std::size_t first = jwt.find('.');
  const std::size_t last = jwt.rfind('.');
  const std::string claims = jwt.substr(first, last - first);
  const std::string longer = ".eyJleHAiOjk5OTk5OTk5OTl9";  // {"exp":9999999999}
  const std::string tokens[] = {
      "",
      "none",
      ".",
      "..",
      strangers,
      jwt + "A",
      jwt.substr(0, last),
      jwt.substr(0, last + 1),
      jwt.substr(0, first) + longer + jwt.substr(last),
      "eyJhbGciOiJub25lIn0" + claims + ".",               // {"alg":"none"}
      "eyJhbGciOiJub25lIn0" + claims + jwt.substr(last),  // the same with a signature
  };
  const std::string body = R"({"type":"entitlement","parameters":{"deviceId":"D"}})";
  for (const std::string& token : tokens) {
    const auto reply = AskRaw("entitlement", body, token);
    ASSERT_TRUE(reply) << token;
    EXPECT_EQ(reply->status, 401) << token;
  }
  EXPECT_EQ(AskRaw("entitlement", body, jwt)->status, 200);
  EXPECT_EQ(_client->Post("/mp/zlt/v2/entitlement?deviceId=D", body, "application/json")->status,
            401);
}

TEST_F(ServiceTest, RefusesATokenWhoseTimeIsOver) {
  Start("[]", {"--jwt-seconds", "0"});
  ASSERT_FALSE(Jwt().empty());
  EXPECT_EQ(Ask("hasEntitlement")->status, 401);
}

TEST_F(ServiceTest, RefusesBodiesThatAreNotTheRequestOfTheirPath) {
  Start();
  const std::string bodies[] = {
      "",
      "[]",
      R"({"type":"entitlement","parameters": { "deviceId":"D"D"}})",
      R"({"type":"hasEntitlement","parameters":{"deviceId":"D"}})",
      R"({"type":"entitlement"})",
      R"({"type":"entitlement","parameters":[]})",
      R"({"type":"entitlement","parameters":{"deviceId":"E"}})",
      R"({"type":"entitlement","parameters":{}} x)",
      std::string(5000, '['),
  };
  for (const std::string& body : bodies) {
    EXPECT_EQ(AskRaw("entitlement", body, Jwt())->status, 400) << body.substr(0, 100);
  }
}

TEST_F(ServiceTest, ServesAFleetAtOnceOnConnectionsThatStayOpen) {
  Start();
  constexpr int Devices = 50;
  constexpr int Requests = 20;
  const std::string jwt = Jwt();
  std::atomic<int> answered{0};
  std::vector<std::thread> fleet;
  fleet.reserve(Devices);
  for (int i = 0; i < Devices; ++i) {
    fleet.emplace_back([&, client = std::shared_ptr(NewClient())] {
      for (int n = 0; n < Requests; ++n) {
        const auto reply =
            client->Post("/mp/zlt/v2/hasEntitlement?deviceId=D", {{"token", jwt}},
                         R"({"type":"hasEntitlement","parameters":{}})", "application/json");
        if (reply && reply->status == 200) ++answered;
      }
    });
  }
  for (std::thread& device : fleet) device.join();
  EXPECT_EQ(answered, Devices * Requests);
  EXPECT_EQ(Received().size(), 1U + Devices * Requests);
}

}  // namespace
