#include "reference_host/causes/Causes.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <set>

namespace {

std::string CodesOf(const refhost::Cause& cause) {
  if (cause.last == 0) return cause.id == std::string("done") ? "0" : "";
  const std::string first = std::to_string(cause.first);
  return cause.first == cause.last ? first : first + "–" + std::to_string(cause.last);
}

std::string RowOf(const refhost::Cause& cause) {
  return "| `" + std::string(cause.id) + "` | " + CodesOf(cause) + " | " + cause.happened + " | " +
         cause.seen + " | " + cause.remedy + " |\n";
}

}  // namespace

TEST(Causes, EachCodeHasTheCauseThatSaysMostOfIt) {
  const struct {
    std::uint32_t code;
    const char* id;
  } rows[] = {{0, "done"},
              {11, "request.not-built"},
              {30, "token.none"},
              {401, "reply.http-401"},
              {410, "reply.http"},
              {503, "reply.http-busy"},
              {12029, "network.connection"},
              {12157, "network"},
              {47, "module.not-found"},
              {0xFFFFFFFF, "title.nothing-done"}};
  for (const auto& row : rows) {
    const refhost::Cause* cause = refhost::CauseOfCode(row.code);
    ASSERT_NE(cause, nullptr) << row.code;
    EXPECT_STREQ(cause->id, row.id) << row.code;
  }
  EXPECT_EQ(refhost::CauseOfCode(99), nullptr);
  EXPECT_EQ(refhost::FindCause("none.such"), nullptr);
}

TEST(Causes, TheOperatorsTableHasThemAllAsTheyAre) {
  std::ifstream file(TOLMAR_DOCS "/operations.md", std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  std::set<std::string> ids;
  for (const refhost::Cause& cause : refhost::AllCauses()) {
    EXPECT_TRUE(ids.insert(cause.id).second) << cause.id;
    EXPECT_NE(text.find(RowOf(cause)), std::string::npos) << RowOf(cause);
  }
}
