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

std::string Document(const std::string& name) {
  std::ifstream file(TOLMAR_DOCS "/" + name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
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
  const std::string text = Document("operations.md");
  std::set<std::string> ids;
  for (const refhost::Cause& cause : refhost::AllCauses()) {
    EXPECT_TRUE(ids.insert(cause.id).second) << cause.id;
    EXPECT_NE(text.find(RowOf(cause)), std::string::npos) << RowOf(cause);
  }
}

TEST(Causes, TheTroubleshootingPageNamesNoneThatIsNot) {
  const std::string text = Document("troubleshooting.md");
  // Words in front of the dot, as the causes have them: a file's name is no cause.
  std::set<std::string> groups;
  for (const refhost::Cause& cause : refhost::AllCauses()) {
    const std::string id = cause.id;
    if (id.find('.') != std::string::npos) groups.insert(id.substr(0, id.find('.')));
  }
  int count = 0;
  for (std::size_t at = 0; (at = text.find('`', at)) != std::string::npos; ++at) {
    const std::string word = text.substr(at + 1, text.find('`', at + 1) - at - 1);
    const bool isCause = word.find_first_of(" \n") == std::string::npos;
    if (!isCause || groups.count(word.substr(0, word.find('.'))) == 0) continue;
    if (word.find('.') == std::string::npos) continue;
    ++count;
    EXPECT_NE(refhost::FindCause(word), nullptr) << word;
  }
  EXPECT_GT(count, 30);
}
