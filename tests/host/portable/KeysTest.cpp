#include "reference_host/configuration/Keys.h"

#include <gtest/gtest.h>
#include <json/reader.h>

#include <fstream>
#include <map>
#include <string_view>

namespace {

using refhost::Key;
using refhost::KeyType;

std::ifstream Open(const std::string& name) {
  return std::ifstream(TOLMAR_DOCS "/" + name, std::ios::binary);
}

/// @return the default as the documents have it.
Json::Value DefaultOf(const Key& key) {
  if (key.otherwise != nullptr) return key.otherwise;
  return key.show(refhost::Configuration());
}

/// A default without the signs that JSON and Markdown put around it.
std::string Bare(std::string text) {
  std::erase_if(text,
                [](char c) { return std::string_view("`\"\\ \n").find(c) != std::string::npos; });
  return text == "1.0" ? "1" : text;
}

/// @return of each key's row in the table of docs/operations.md, its second cell.
std::map<std::string, std::string> DocumentedKeys() {
  std::ifstream file = Open("operations.md");
  std::map<std::string, std::string> rows;
  std::string line;
  while (std::getline(file, line) && !line.starts_with("| key |")) {
  }
  while (std::getline(file, line) && line.starts_with("|")) {
    const std::size_t name = line.find('`'), end = line.find("` | "),
                      next = line.find(" | ", end + 4);
    if (end != std::string::npos)
      rows[line.substr(name + 1, end - name - 1)] = line.substr(end + 4, next - end - 4);
  }
  return rows;
}

const char* SchemaType(KeyType type) {
  constexpr const char* Types[] = {"string", "boolean", "integer", "number", "", "array"};
  return Types[static_cast<int>(type)];
}

std::string WordsIn(const Json::Value& list) {
  std::string words;
  for (const Json::Value& word : list) words += word.asString() + "|";
  return words;
}

}  // namespace

TEST(Keys, EachHasItsRowInTheDocuments) {
  auto rows = DocumentedKeys();
  for (const Key& key : refhost::AllKeys()) {
    const std::string otherwise = key.isMandatory ? "mandatory" : DefaultOf(key).toStyledString();
    EXPECT_EQ(Bare(rows[key.name]), Bare(otherwise)) << key.name;
    rows.erase(key.name);
  }
  for (const auto& [name, otherwise] : rows) ADD_FAILURE() << name << " is no key";
}

TEST(Keys, EachHasItsEntryInTheSchema) {
  Json::Value schema;
  std::ifstream file = Open("schema/configuration.json");
  file >> schema;
  Json::Value entries = schema["properties"];
  const std::string required = WordsIn(schema["required"]);
  for (const Key& key : refhost::AllKeys()) {
    const Json::Value entry = entries[key.name];
    entries.removeMember(key.name);
    EXPECT_EQ(entry["description"].asString(), key.meaning) << key.name;
    // A file may do without the secret, which is better kept elsewhere.
    EXPECT_EQ(required.find(key.name + std::string("|")) != std::string::npos,
              key.isMandatory && !key.isSecret)
        << key.name;
    if (key.type == KeyType::Word) {
      EXPECT_EQ(WordsIn(entry["enum"]), key.words + std::string("|"));
    } else {
      EXPECT_EQ(entry["type"].asString(), SchemaType(key.type)) << key.name;
    }
    if (key.type == KeyType::Number) {
      EXPECT_EQ(entry["minimum"].asUInt64(), key.least) << key.name;
      EXPECT_EQ(entry["maximum"].asUInt64(), key.most) << key.name;
    }
    // A default in words is no value that an editor could fill in.
    const bool isValue = key.otherwise == nullptr || std::string(key.otherwise).starts_with('%');
    const Json::Value expected = key.isMandatory || !isValue ? Json::Value("null") : DefaultOf(key);
    EXPECT_EQ(Bare(entry["default"].toStyledString()), Bare(expected.toStyledString())) << key.name;
  }
  entries.removeMember("$schema");
  EXPECT_EQ(entries.size(), 0U) << entries.toStyledString();
}
