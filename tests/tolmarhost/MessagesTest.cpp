#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace {

/// @return "1000 Informational\n…", as the message file has them.
std::string MessagesInProgram() {
  std::ifstream file(TOLMAR_ROOT "/tools/tolmarhost/messages.mc");
  std::string found;
  for (std::string line; std::getline(file, line);) {
    const std::string value = line.substr(line.find('=') + 1);
    if (line.starts_with("MessageId=")) found += value + " ";
    if (line.starts_with("Severity=")) found += value + "\n";
  }
  return found;
}

/// @return the same of the rows of docs/operations.md that begin with four digits.
std::string MessagesInDocument() {
  std::ifstream file(TOLMAR_ROOT "/docs/operations.md");
  std::string found;
  for (std::string line; std::getline(file, line);) {
    const std::string id = line.substr(0, 2) == "| " ? line.substr(2, 4) : "";
    if (id.size() != 4 || id.find_first_not_of("0123456789") != std::string::npos) continue;
    found += id + " " + line.substr(9, line.find(" |", 9) - 9) + "\n";
  }
  return found;
}

}  // namespace

TEST(Messages, AreThoseOfTheDocument) {
  EXPECT_EQ(MessagesInDocument(), MessagesInProgram());
  EXPECT_NE(MessagesInProgram().find("1000 Informational\n"), std::string::npos);
}
