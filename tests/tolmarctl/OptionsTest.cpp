#include "tools/tolmarctl/Options.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tools/tolmarctl/Examples.h"
#include "tools/tolmarctl/LogFilter.h"

namespace {

bool Read(const std::string& line, Options& options, int& exitStatus) {
  std::istringstream words(line);
  std::vector<std::string> arguments;
  for (std::string word; words >> word;) arguments.push_back(word);
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const bool isRead = ReadOptions(arguments, options, exitStatus);
  testing::internal::GetCapturedStdout();
  testing::internal::GetCapturedStderr();
  return isRead;
}

}  // namespace

TEST(Options, EveryExampleOfTheHelpIsACommandLineAndEveryContradictionNone) {
  for (const Example& example : AllExamples()) {
    Options options;
    int exitStatus = 0;
    EXPECT_TRUE(Read(std::string(example.line).substr(std::string("tolmarctl ").size()), options,
                     exitStatus))
        << example.line;
  }
  for (const char* line : {"--quiet --json list", "list --quiet --verbose", "list --progress=jsonl",
                           "install --progress=xml", "install --progress=jsonl --quiet"}) {
    Options options;
    int exitStatus = 0;
    EXPECT_FALSE(Read(line, options, exitStatus)) << line;
    EXPECT_EQ(exitStatus, 2) << line;
  }
}

TEST(Options, GeneralOnesStandOnEitherSideOfTheCommand) {
  for (const char* line : {"--verbose --config c install --progress=jsonl",
                           "install --progress jsonl --config c --verbose"}) {
    Options options;
    int exitStatus = 0;
    ASSERT_TRUE(Read(line, options, exitStatus)) << line;
    EXPECT_TRUE(options.json && options.progressLines && options.verbose) << line;
    EXPECT_EQ(options.config, "c") << line;
  }
}

TEST(LogFilter, TakesTheProcesssRecordsWhole) {
  LogFilter filter(12);
  const std::string mine = "2031-02-03T04:05:06.789Z 12 5 D a\n    b\n";
  const std::string others = "2031-02-03T04:05:06.789Z 1 12 D a 12 5\n    c\n";
  using Records = std::vector<std::string>;
  EXPECT_EQ(filter.Take(others + mine + mine + others), (Records{mine, mine}));
  EXPECT_EQ(filter.Take("    of the other's\n" + mine.substr(0, 30)), Records{});
  EXPECT_EQ(filter.Take(mine.substr(30)), Records{mine});
  EXPECT_EQ(filter.Take("    d\n" + others), Records{"    d\n"});
}
