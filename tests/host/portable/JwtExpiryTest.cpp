#include "reference_host/identity/JwtExpiry.h"

#include <gtest/gtest.h>

namespace {

TEST(JwtExpiry, IsReadFromWhatTellsIt) {
  const struct {
    const char* name;
    std::string jwt;
    std::optional<std::int64_t> expiry;
  } rows[] = {
      {"whole number", "eyJhbGciOiJIUzI1NiJ9.eyJleHAiOjIwMDAwMDAwMDB9.c2ln", 2000000000},
      {"with a fraction", "e30.eyJleHAiOjIwMDAwMDAwMDAuNX0.c2ln", 2000000000},
      {"both digits of base64url", "e30.eyJhIjoi77-_Pz8_IiwiZXhwIjo3fQ.", 7},
      {"no signature", "e30.eyJleHAiOjIwMDAwMDAwMDB9.", 2000000000},
      {"no expiry", "e30.e30.c2ln", std::nullopt},
      {"a text", "e30.eyJleHAiOiIyMDAwIn0.c2ln", std::nullopt},
      {"negative", "e30.eyJleHAiOi0xfQ.c2ln", std::nullopt},
      {"past every calendar", "e30.eyJleHAiOjFlMzAwfQ.c2ln", std::nullopt},
      {"a list", "e30.W10.c2ln", std::nullopt},
      {"no JSON", "e30.AAAA.c2ln", std::nullopt},
      {"two parts", "e30.eyJleHAiOjIwMDAwMDAwMDB9", std::nullopt},
      {"four parts", "e30.eyJleHAiOjIwMDAwMDAwMDB9.a.b", std::nullopt},
      {"a line end", "e30.eyJleHAiOjIwMDAwMDAwMDB9.a\r\nHost: evil", std::nullopt},
      {"nothing", "", std::nullopt},
      {"dots", "..", std::nullopt},
  };
  for (const auto& row : rows) {
    const std::optional<refhost::JwtTimes> times = refhost::TimesOf(row.jwt);
    EXPECT_EQ(times ? std::optional(times->expiry) : std::nullopt, row.expiry) << row.name;
  }
  EXPECT_EQ(refhost::TimesOf("e30.eyJleHAiOjksImlhdCI6N30.")->issued, 7);
  EXPECT_EQ(refhost::TimesOf("e30.eyJleHAiOjksImlhdCI6IjcifQ.")->issued, std::nullopt);
}

TEST(JwtExpiry, IsCountedByTheCloudsClockWhereThatIsKnown) {
  const struct {
    const char* name;
    std::optional<std::int64_t> issued, serverTime;
    std::int64_t ownTime;
    std::int64_t left;  ///< of a token that ends at 10,000
  } rows[] = {
      {"own clock hours fast", 6400, 6401, 20000, 3599},
      {"own clock hours slow", 6400, 6401, 0, 3599},
      {"issued long before it came", 6400, 9000, 6400, 1000},
      {"server's clock behind the issuer's", 6400, 100, 0, 3600},
      {"no date", 6400, std::nullopt, 0, 3600},
      {"no time of issue", std::nullopt, 6400, 0, 3600},
      {"neither", std::nullopt, std::nullopt, 9900, 100},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(refhost::SecondsLeft({10000, row.issued}, row.serverTime, row.ownTime), row.left)
        << row.name;
  }
}

TEST(JwtExpiry, OnlyAJwtMayStandInAHeader) {
  EXPECT_TRUE(refhost::IsJwt("a.b-_9.c"));
  for (const char* refused : {"a.b.c\r\nx: y", "a.b.c d", "a.b=.c", ".b.c", "a..c", "abc"}) {
    EXPECT_FALSE(refhost::IsJwt(refused)) << refused;
  }
}

}  // namespace
