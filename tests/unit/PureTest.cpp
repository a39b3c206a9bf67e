#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "catalogue/SoftwarePackage.h"
#include "progress/Percentage.h"

TEST(Percentage, IsTruncatedAndDefinedForEveryTotal) {
  constexpr int Indefinite = std::numeric_limits<int>::min();
  const struct {
    std::uint64_t transferred, total;
    int percent;
  } rows[] = {{1, 3, 33},         {7, 10, 69},        {3, 3, 100},
              {0, 0, Indefinite}, {5, 0, Indefinite}, {UINT64_MAX, 1, Indefinite},
              {0, UINT64_MAX, 0}, {150, 100, 150}};
  for (const auto& row : rows) EXPECT_EQ(PercentageOf(row.transferred, row.total), row.percent);
}

TEST(Catalogue, CopiesAreDeepAndMovedFromPackagesAreEmpty) {
  SoftwarePackage package;
  EXPECT_TRUE(!package.preinstallSw && package.progress == 0);
  package.l1FruPn = L"title";
  package.progress = 7;
  package.modules.emplace_back().files.emplace_back().name = L"a.cab";
  SoftwarePackage copy = package;
  copy.modules.front().files.front().name = L"b.cab";
  EXPECT_EQ(package.modules.front().files.front().name, L"a.cab");
  SoftwarePackage moved = std::move(package), again;
  EXPECT_TRUE(package.l1FruPn.empty() && package.modules.empty() && package.progress == 7);
  again = std::move(moved);
  EXPECT_EQ(again.modules.size(), 1U);
  ModuleFile &file = copy.modules.front().files.front(), same, taken;
  file.size = 4;
  same = file;
  taken = std::move(file);
  EXPECT_TRUE(same.name == L"b.cab" && taken.name == L"b.cab" && taken.size == 4);
  EXPECT_TRUE(file.name.empty());
}
