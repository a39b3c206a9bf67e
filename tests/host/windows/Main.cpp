#include <gtest/gtest.h>

#include "tests/host/windows/ChildModes.h"
#include "tests/host/windows/TestMachine.h"

int main(int count, char** arguments) {
  if (const std::optional<int> child = RunAsChild(count, arguments)) return *child;
  testing::InitGoogleTest(&count, arguments);
  TestMachine::SetUp();
  const int result = RUN_ALL_TESTS();
  TestMachine::TearDown();
  return result;
}
