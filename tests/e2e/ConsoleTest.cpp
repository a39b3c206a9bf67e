#include <gtest/gtest.h>

#include <cstdio>
#include <utility>

#include "tests/e2e/Lab.h"

namespace {

/// The browser's side, tests/e2e/console.js. It tells by lines how far it is.
class Browser {
 public:
  explicit Browser(const Lab& lab)
      : _pipe(popen(("timeout 120 node '" CONSOLE_SCRIPT "' " + lab.CloudUrl() + " 2>&1 </dev/null")
                        .c_str(),
                    "r")) {}
  ~Browser() {
    if (_pipe != nullptr) End();
  }
  Browser(const Browser&) = delete;
  Browser& operator=(const Browser&) = delete;

  std::string NextLine() {
    char line[4096] = "";
    if (std::fgets(line, sizeof line, _pipe) == nullptr) return "it has ended";
    return std::string(line).substr(0, std::string(line).find('\n'));
  }
  int End() { return pclose(std::exchange(_pipe, nullptr)); }

 private:
  FILE* _pipe;
};

}  // namespace

TEST(Console, ATitleIsWatchedAndAFaultSwitchedOnAndOff) {
  Lab lab({{"alpha"}}, {"--file-rate", "100000"});
  Browser browser(lab);
  ASSERT_EQ(browser.NextLine(), "open");
  EXPECT_EQ(StatusOf(lab.Run("install"), "alpha"), "installed");
  ASSERT_EQ(browser.NextLine(), "installed");
  ASSERT_EQ(browser.NextLine(), "entitlement fails");
  lab.Configuration()["retryWaitScale"] = 0.01;  // 13 s at the least, until the retries are spent.
  // It is refused until the browser has seen that and has switched the fault off.
  EXPECT_EQ(lab.Run("list").exitStatus, 0);
  ASSERT_EQ(browser.NextLine(), "entitlement is back");
  EXPECT_EQ(browser.End(), 0);
}
