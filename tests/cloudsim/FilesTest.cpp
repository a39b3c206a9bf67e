#include "tests/cloudsim/CloudsimProcess.h"

namespace {

class FilesTest : public CloudsimTest {};

/// The complement of the last character, so that a text differs in it alone.
std::string WithOtherEnd(std::string text) {
  text.back() = text.back() == 'A' ? 'B' : 'A';
  return text;
}

TEST_F(FilesTest, SendsAFileWholeAndInParts) {
  Start();
  const std::string url = UrlOf("archiver.cab");
  const auto part = [this](std::size_t at, std::size_t count) { return _cab.substr(at, count); };
  const struct {
    std::string range;
    int status;
    std::string body, contentRange;
  } rows[] = {
      {"", 200, _cab, ""},
      {"bytes=0-9", 206, part(0, 10), "bytes 0-9/300000"},
      {"bytes=270000-", 206, part(270'000, 30'000), "bytes 270000-299999/300000"},
      {"bytes=-5", 206, part(299'995, 5), "bytes 299995-299999/300000"},
      {"bytes=299990-999999", 206, part(299'990, 10), "bytes 299990-299999/300000"},
      {"bytes=-999999", 206, _cab, "bytes 0-299999/300000"},
      {"bytes=300000-", 416, "", "bytes */300000"},
      {"bytes=0-1,5-6", 200, _cab, ""},
  };
  for (const auto& row : rows) {
    const auto reply = _client->Get(
        url, row.range.empty() ? httplib::Headers{} : httplib::Headers{{"Range", row.range}});
    ASSERT_TRUE(reply) << row.range;
    EXPECT_EQ(reply->status, row.status) << row.range;
    EXPECT_TRUE(reply->body == row.body) << row.range;
    EXPECT_EQ(reply->get_header_value("Content-Range"), row.contentRange) << row.range;
    EXPECT_EQ(reply->get_header_value("Content-Length"), std::to_string(row.body.size()));
  }
}

TEST_F(FilesTest, ARangeOfAnotherVersionGetsTheWholeFile) {
  Start();
  const std::string url = UrlOf("archiver.cab");
  const std::string tag = _client->Head(url)->get_header_value("ETag");
  EXPECT_EQ(_client->Get(url, {{"Range", "bytes=5-"}, {"If-Range", tag}})->status, 206);
  EXPECT_EQ(_client->Get(url, {{"Range", "bytes=5-"}, {"If-Range", "\"other\""}})->status, 200);
}

TEST_F(FilesTest, HeadTellsTheLengthAndThatPartsCanBeHad) {
  Start();
  const auto reply = _client->Head(UrlOf("archiver.cab"), {{"Range", "bytes=0-9"}});
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->status, 200);
  EXPECT_EQ(reply->get_header_value("Content-Length"), "300000");
  EXPECT_EQ(reply->get_header_value("Accept-Ranges"), "bytes");
  EXPECT_EQ(reply->body, "");
}

TEST_F(FilesTest, RefusesAddressesThatItDidNotMake) {
  Start();
  const std::string url = UrlOf("archiver.cab");
  ASSERT_EQ(_client->Get(url)->status, 200);
  const std::string path = url.substr(0, url.find('?'));
  const std::string query = url.substr(url.find('?'));
  const std::string signature = query.substr(query.find('&'));
  const std::string urls[] = {
      path,
      path + "?expires=9999999999",
      path + "?expires=9999999999" + signature,
      path + "?expires=" + signature,
      WithOtherEnd(url),
      "/files/T-1/M-1/check.ps1" + query,
      "/files/T-1/M-1/none.cab" + query,
      "/files/../catalogue.json" + query,
  };
  for (const std::string& each : urls) EXPECT_EQ(_client->Get(each)->status, 403) << each;
}

TEST_F(FilesTest, RefusesAnAddressWhoseTimeIsOver) {
  Start("[]", {"--url-seconds", "0"});
  EXPECT_EQ(_client->Get(UrlOf("archiver.cab"))->status, 403);
}

TEST_F(FilesTest, ARenewedAddressDiffersEvenWithinTheSameSecond) {
  Start();
  EXPECT_NE(UrlOf("archiver.cab"), UrlOf("archiver.cab"));
}

}  // namespace
