#include "tests/cloudsim/CloudsimProcess.h"

namespace {

class RecordTest : public CloudsimTest {};

TEST_F(RecordTest, KeepsEveryRequestInOrderWithWhatWasAnswered) {
  Start(R"([{"on":"hasEntitlement","status":503}])");
  const std::string url = UrlOf("check.ps1");
  _client->Get(url);
  _client->Head(url);
  Ask("hasEntitlement", R"(,"note":"\u00e4")");
  AskRaw("entitlement", "{\"type\":\"\xff\"x", "no token");
  _client->Get("/nowhere?a=b");
  const struct {
    std::string method, path, type;
    int status;
    bool authorised;
  } rows[] = {
      {"POST", "/token", "token", 200, true},
      {"POST", "/mp/zlt/v2/downloadRequest", "downloadRequest", 200, true},
      {"GET", "/files/T-1/M-1/check.ps1", "file", 200, true},
      {"HEAD", "/files/T-1/M-1/check.ps1", "file", 200, true},
      {"POST", "/token", "token", 200, true},
      {"POST", "/mp/zlt/v2/hasEntitlement", "hasEntitlement", 503, true},
      {"POST", "/mp/zlt/v2/entitlement", "entitlement", 401, false},
      {"GET", "/nowhere", "unknown", 404, false},
  };
  const Json::Value record = Received();
  ASSERT_EQ(record.size(), std::size(rows));
  for (Json::ArrayIndex i = 0; i < record.size(); ++i) {
    EXPECT_EQ(record[i]["n"].asUInt(), i + 1);
    EXPECT_EQ(record[i]["method"], rows[i].method) << i;
    EXPECT_EQ(record[i]["path"], rows[i].path) << i;
    EXPECT_EQ(record[i]["type"], rows[i].type) << i;
    EXPECT_EQ(record[i]["status"], rows[i].status) << i;
    EXPECT_EQ(record[i]["authorised"], rows[i].authorised) << i;
  }
  EXPECT_EQ(record[5]["query"], "deviceId=D");
  EXPECT_EQ(record[5]["body"],
            Parsed(R"({"type":"hasEntitlement","parameters":{"deviceId":"D","note":"ä"}})"));
  EXPECT_EQ(record[6]["rawBody"], "{\"type\":\"\xef\xbf\xbd\"x");  // U+FFFD for the stray byte
  EXPECT_EQ(record[7]["query"], "a=b");
}

TEST_F(RecordTest, HoldsNoSecret) {
  Start();
  const std::string url = UrlOf("check.ps1");
  const std::string signature = url.substr(url.find("signature=") + 10);
  _client->Get(url);
  _client->Post("/token", "s3cret-session is not JSON", "text/plain");
  _client->Post("/token", R"({"token":"s3cret-session"})", "application/json");
  const std::string text = _client->Get("/received")->body;
  EXPECT_EQ(text.find("s3cret-session"), std::string::npos) << text;
  EXPECT_EQ(text.find(signature), std::string::npos) << text;
  EXPECT_EQ(text.find("eyJ"), std::string::npos) << text;  // How every JWT starts.
  EXPECT_NE(text.find("&signature=\""), std::string::npos) << text;
}

TEST_F(RecordTest, StartsAnewWhenItIsEmptied) {
  Start();
  Jwt();
  EXPECT_EQ(_client->Delete("/received")->status, 200);
  EXPECT_EQ(Received(), Json::Value(Json::arrayValue));
  Jwt();
  EXPECT_EQ(Received()[0]["n"], 1);
}

}  // namespace
