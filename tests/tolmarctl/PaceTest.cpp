#include "tools/tolmarctl/Pace.h"

#include <gtest/gtest.h>

#include "tools/tolmarctl/Table.h"

namespace {

Progress At(int percent, std::uint64_t bytes, std::uint64_t total) {
  return {"T-1", "downloading", percent, bytes, total};
}

}  // namespace

TEST(Pace, TellsRateAndTimeLeftAsFarAsTheyAreKnown) {
  Pace pace;
  pace.Add(0, At(0, 0, 1000));
  EXPECT_FALSE(pace.SecondsLeft());  // Nothing has moved yet.
  pace.Add(2, At(20, 200, 1000));
  EXPECT_EQ(pace.BytesPerSecond(), 100);
  EXPECT_EQ(pace.SecondsLeft(), 8);
  pace.Add(20, At(20, 200, 1000));  // What is long ago does not count.
  EXPECT_FALSE(pace.SecondsLeft());
  pace.Add(21, At(10, 100, 1000));  // From the beginning: another module.
  EXPECT_FALSE(pace.BytesPerSecond());
  pace.Add(30, At(10, 0, 0));  // No bytes: by the percent.
  pace.Add(34, At(30, 0, 0));
  EXPECT_FALSE(pace.BytesPerSecond());
  EXPECT_EQ(pace.SecondsLeft(), 14);
  pace.Add(35, {"T-1", "installing", 50});
  pace.Add(39, {"T-1", "installing", 95});
  EXPECT_FALSE(pace.SecondsLeft());  // Nobody knows.
}

TEST(Pace, ALineHoldsWhatIsKnownAndNoMoreThanTheTerminal) {
  Pace pace;
  pace.Add(0, At(0, 0, 40'000'000));
  EXPECT_EQ(BarOf(At(0, 0, 40'000'000), pace, 100),
            "T-1 [------------------------------]   0 % downloading  0 B of 40.0 MB");
  pace.Add(4, At(50, 20'000'000, 40'000'000));
  const Progress half = At(50, 20'000'000, 40'000'000);
  EXPECT_EQ(BarOf(half, pace, 100),
            "T-1 [###############---------------]  50 % downloading"
            "  20.0 MB of 40.0 MB  5.0 MB/s  4 s left");
  EXPECT_EQ(BarOf(half, pace, 60), "T-1 [###############---------------]  50 % downloading");
  EXPECT_EQ(BarOf(half, pace, 20), " 50 %");
  EXPECT_EQ(ObjectOf(half, pace)["secondsLeft"].asInt(), 4);
  EXPECT_FALSE(ObjectOf({"T-1", "installing", 50}, Pace()).isMember("bytes"));
}

TEST(Pace, NumbersAreInTheUnitThatSuits) {
  EXPECT_EQ(SizeText(999), "999 B");
  EXPECT_EQ(SizeText(1000), "1.0 kB");
  EXPECT_EQ(SizeText(999'999), "1.0 MB");
  EXPECT_EQ(SizeText(5e12), "5000.0 GB");
  EXPECT_EQ(TimeText(0.2), "1 s");
  EXPECT_EQ(TimeText(59.5), "1 min 00 s");
  EXPECT_EQ(TimeText(3599.5), "1 h 00 min");
  EXPECT_EQ(TimeText(3661), "1 h 02 min");
}
