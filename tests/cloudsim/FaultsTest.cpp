#include <chrono>
#include <csignal>
#include <thread>

#include "tests/cloudsim/CloudsimProcess.h"

namespace {

class FaultsTest : public CloudsimTest {
 protected:
  /// Sends one call of what a fault is "on".
  httplib::Result Call(const std::string& on) {
    if (on == "token") {
      return _client->Post("/token", R"({"sessionToken":"s3cret-session"})", "application/json");
    }
    if (on.starts_with("file:")) return _client->Get(UrlOf(on.substr(5)));
    return Ask(on, R"(,"l1FruPn":"T-1","moduleFruPn":"M-1")");
  }
};

TEST_F(FaultsTest, EachKindChangesTheAnswer) {
  Start();
  const std::string inverted =
      "\x9a\x87\x96\x8b\xdf\xcf\xf5";  // "exit 0\n", each bit the other way
  const struct {
    std::string on, fault;
    int status;
    std::string body;
  } rows[] = {
      {"hasEntitlement", R"("status":503)", 503, ""},
      {"installProgress", R"("status":200)", 200, ""},
      {"token", R"("status":500)", 500, ""},
      {"file:check.ps1", R"("status":404)", 404, ""},
      {"entitlement", R"("resultCode":5)", 200, R"({"result":{"code":5}})"},
      {"downloadProgress", R"("resultCode":-1)", 200, R"({"result":{"code":-1}})"},
      {"entitlement", R"("garbage":true)", 200, "<garbage {\"result\": ["},
      {"token", R"("garbage":true)", 200, "<garbage {\"result\": ["},
      {"entitlement", R"("reply":"{}")", 200, "{}"},
      {"file:check.ps1", R"("garbage":true)", 200, inverted},
      {"file:check.ps1", R"("dropAfter":7)", 200, "exit 0\n"},  // behind the end: no drop
  };
  for (const auto& row : rows) {
    PutFaults(R"([{"on":")" + row.on + R"(",)" + row.fault + "}]");
    const auto reply = Call(row.on);
    ASSERT_TRUE(reply) << row.on << row.fault;
    EXPECT_EQ(reply->status, row.status) << row.on << row.fault;
    EXPECT_EQ(reply->body, row.body) << row.on << row.fault;
  }
}

TEST_F(FaultsTest, ADropAnnouncesTheWholeLengthAndBreaksOffAfterTheBytes) {
  Start();
  const struct {
    std::string on;
    std::size_t bytes;
    std::string length;
  } rows[] = {{"file:archiver.cab", 0, "300000"},
              {"file:archiver.cab", 1000, "300000"},
              {"file:archiver.cab", 299'999, "300000"},
              {"hasEntitlement", 10, "66"}};
  for (const auto& row : rows) {
    PutFaults(R"([{"on":")" + row.on + R"(","dropAfter":)" + std::to_string(row.bytes) + "}]");
    const std::string path =
        row.on == "hasEntitlement" ? "/mp/zlt/v2/hasEntitlement?deviceId=D" : UrlOf("archiver.cab");
    httplib::Request request;
    request.method = row.on == "hasEntitlement" ? "POST" : "GET";
    request.path = path;
    request.headers.emplace("token", Jwt());
    request.body = request.method == "POST" ? R"({"type":"hasEntitlement","parameters":{}})" : "";
    std::string length, body;
    request.response_handler = [&](const httplib::Response& response) {
      length = response.get_header_value("Content-Length");
      return true;
    };
    request.content_receiver = [&](const char* data, std::size_t size, auto, auto) {
      body.append(data, size);
      return true;
    };
    EXPECT_FALSE(NewClient()->send(request)) << "the connection did not break";
    EXPECT_EQ(length, row.length) << row.on;
    EXPECT_EQ(body.size(), row.bytes) << row.on;
  }
}

TEST_F(FaultsTest, ADelayHoldsTheAnswerBack) {
  Start(R"([{"on":"entitlement","delayMs":60}])");
  const std::string jwt = Jwt();
  const auto start = std::chrono::steady_clock::now();
  const auto reply = AskRaw("entitlement", R"({"type":"entitlement","parameters":{}})", jwt);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(60));
  EXPECT_EQ(reply->status, 200);
}

TEST_F(FaultsTest, ADelayDoesNotHoldTheProgramsEndBack) {
  Start(R"([{"on":"token","delayMs":600000}])");
  std::thread caller([client = NewClient()] { client->Post("/token", "{}", "application/json"); });
  while (Received().empty()) std::this_thread::yield();  // On record before it is delayed.
  EXPECT_EQ(_cloud->End(SIGTERM), 0);
  caller.join();
}

TEST_F(FaultsTest, AnExpiredAddressIsRefusedAndTheNextOneServes) {
  for (const char* on : {"downloadRequest", "file:archiver.cab"}) {
    Start(R"([{"on":")" + std::string(on) + R"(","call":1,"expired":true}])");
    EXPECT_EQ(_client->Get(UrlOf("archiver.cab"))->status, 403) << on;
    EXPECT_EQ(_client->Get(UrlOf("archiver.cab"))->status, 200) << on;
  }
}

TEST_F(FaultsTest, CallsAreCountedFromTheListOnAndPerKind) {
  Start(R"([{"on":"entitlement","call":2,"status":503}])");
  const auto statuses = [this](const std::string& on, int calls) {
    std::vector<int> codes(static_cast<std::size_t>(calls));
    for (int& code : codes) code = Call(on)->status;
    return codes;
  };
  EXPECT_EQ(statuses("hasEntitlement", 2), (std::vector{200, 200}));
  EXPECT_EQ(statuses("entitlement", 3), (std::vector{200, 503, 200}));
  PutFaults(R"([{"on":"entitlement","call":1,"count":2,"status":500},
                {"on":"entitlement","call":2,"count":2,"status":504},
                {"on":"file:archiver.cab","call":1,"status":503}])");
  EXPECT_EQ(statuses("entitlement", 4), (std::vector{500, 500, 504, 200}));
  EXPECT_EQ(_client->Head(UrlOf("archiver.cab"))->status, 200);  // Not counted.
  EXPECT_EQ(statuses("file:check.ps1", 1), (std::vector{200}));
  EXPECT_EQ(statuses("file:archiver.cab", 2), (std::vector{503, 200}));
  PutFaults(R"([{"on":"entitlement","call":0,"status":503}])");
  EXPECT_EQ(statuses("entitlement", 3), (std::vector{503, 503, 503}));
}

TEST_F(FaultsTest, AListAtFaultIsRefusedAndTheOldOneStays) {
  Start(R"([{"on":"entitlement","status":503}])");
  const struct {
    std::string list, error;
  } rows[] = {
      {"[", ""},
      {"{}", "faults: must be an array"},
      {R"([{"status":503}])", "faults[0].on: is missing"},
      {R"([{"on":"entitlment","status":503}])", "faults[0].on: "},
      {R"([{"on":"file:none.cab","status":503}])", "faults[0].on: the catalogue has no such file"},
      {R"([{"on":"token"}])", "faults[0]: must have one of"},
      {R"([{"on":"token","status":503,"garbage":true}])", "faults[0]: must have one of"},
      {R"([{"on":"token","status":"503"}])", "faults[0].status: must be a whole number"},
      {R"([{"on":"token","status":42}])", "faults[0].status: must be a whole number"},
      {R"([{"on":"token","status":503,"calls":2}])", "faults[0].calls: unknown key"},
      {R"([{"on":"token","status":503,"count":2}])", "faults[0].count: needs"},
      {R"([{"on":"token","resultCode":5}])", "faults[0].resultCode: "},
      {R"([{"on":"entitlement","expired":true}])", "faults[0].expired: "},
      {R"([{"on":"token","garbage":false}])", "faults[0].garbage: must be true"},
      {R"([{"on":"file:check.ps1","reply":"x"}])", "faults[0].reply: a file is"},
  };
  for (const auto& row : rows) {
    const auto reply = _client->Put("/faults", row.list, "application/json");
    ASSERT_TRUE(reply && reply->status == 400) << row.list;
    EXPECT_TRUE(Parsed(reply->body)["error"].asString().starts_with(row.error)) << reply->body;
  }
  EXPECT_EQ(Ask("entitlement")->status, 503);
}

}  // namespace
