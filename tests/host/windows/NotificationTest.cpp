#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <future>
#include <stdexcept>
#include <thread>
#include <vector>

#include "host/common/CriticalSection.h"
#include "host/core/ZLTPublisherSubscriber.h"
#include "tests/host/windows/TestMachine.h"

namespace {

constexpr unsigned int Long = 20000;

ZLTPublisherSubscriber& Bus() { return *ZLTPublisherSubscriber::GetInstance(); }

bool Publish(std::uint32_t state, unsigned int timeout = Long) {
  return Bus().Publish(ZLTNotificationData(false, 4, state), timeout);
}

TEST(Bus, DeliversInOrderOnOneThreadOfItsOwn) {
  std::vector<std::uint32_t> seen;
  std::vector<std::thread::id> threads;
  const std::wstring id = Bus().Subscribe(
      [&](ZLTNotificationData& data) {
        seen.push_back(data.getEventState());
        threads.push_back(std::this_thread::get_id());
      },
      false);
  for (std::uint32_t state = 0; state < 100; ++state) EXPECT_TRUE(Publish(state, 0));
  EXPECT_TRUE(Publish(100));
  ASSERT_EQ(seen.size(), 101U);
  for (std::uint32_t state = 0; state <= 100; ++state) EXPECT_EQ(seen[state], state);
  EXPECT_EQ(std::count(threads.begin(), threads.end(), threads.front()), 101);
  EXPECT_NE(threads.front(), std::this_thread::get_id());
  Bus().Unsubscribe(id);
  EXPECT_TRUE(Publish(101));
  EXPECT_EQ(seen.size(), 101U);
  Bus().Unsubscribe(id);
  Bus().Unsubscribe(L"unknown");
}

TEST(Bus, ASubscribersExceptionOrChangeReachesNobodyElse) {
  std::uint32_t seen = 0;
  const std::wstring first = Bus().Subscribe(
      [](ZLTNotificationData& data) {
        data = ZLTNotificationData(true, 0, 0);
        throw std::runtime_error("dropped");
      },
      false);
  const std::wstring second = Bus().Subscribe([](ZLTNotificationData&) { throw 7; }, false);
  const std::wstring third =
      Bus().Subscribe([&](ZLTNotificationData& data) { seen = data.getEventState(); }, false);
  EXPECT_TRUE(Publish(15));
  EXPECT_EQ(seen, 15U);
  for (const auto& id : {first, second, third}) Bus().Unsubscribe(id);
}

TEST(Bus, ReplaysTheNewestOnceToWhoAsksForIt) {
  EXPECT_TRUE(Publish(21));
  std::vector<std::uint32_t> asked, silent;
  const std::wstring first = Bus().Subscribe(
      [&](ZLTNotificationData& data) { asked.push_back(data.getEventState()); }, true);
  const std::wstring second = Bus().Subscribe(
      [&](ZLTNotificationData& data) { silent.push_back(data.getEventState()); }, false);
  EXPECT_TRUE(Publish(22));
  EXPECT_EQ(asked, (std::vector<std::uint32_t>{21, 22}));
  EXPECT_EQ(silent, std::vector<std::uint32_t>{22});
  for (const auto& id : {first, second}) Bus().Unsubscribe(id);
}

TEST(Bus, ANotificationThatIsStillQueuedIsNotReplayedAsWell) {
  std::promise<void> entered, release;
  const std::wstring slow = Bus().Subscribe(
      [&](ZLTNotificationData& data) {
        if (data.getEventState() != 31) return;
        entered.set_value();
        release.get_future().wait();
      },
      false);
  Publish(31, 0);
  entered.get_future().wait();
  Publish(32, 0);
  std::vector<std::uint32_t> seen;
  const std::wstring late = Bus().Subscribe(
      [&](ZLTNotificationData& data) { seen.push_back(data.getEventState()); }, true);
  EXPECT_FALSE(Publish(33, 1));  // the slow one is not through
  Bus().Unsubscribe(slow);       // does not wait for it
  release.set_value();
  EXPECT_TRUE(Publish(34));
  EXPECT_EQ(seen, (std::vector<std::uint32_t>{32, 33, 34}));
  Bus().Unsubscribe(late);
}

TEST(Bus, ACallbackMayUseTheBus) {
  std::wstring own;
  std::atomic<int> calls{0}, nested{0};
  std::wstring inner;
  own = Bus().Subscribe(
      [&](ZLTNotificationData&) {
        ++calls;
        EXPECT_FALSE(Publish(42));  // could only be delivered behind this call
        inner = Bus().Subscribe([&](ZLTNotificationData&) { ++nested; }, false);
        Bus().Unsubscribe(own);
      },
      false);
  EXPECT_TRUE(Publish(41));
  EXPECT_TRUE(Publish(43));
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(nested, 2);
  Bus().Unsubscribe(inner);
}

TEST(Bus, AComponentMayBeUnloadedAndLoadedAgain) {
  LoopbackServer server([](const HttpSeen&) { return HttpAnswer{.body = "whole"}; });
  std::string output;
  EXPECT_EQ(TestMachine::RunAgain(L"--reload " + server.Url(L"/guest.bin"),
                                  TestMachine::ConfigurationWith({}), output),
            0U)
      << output;
}

TEST(CriticalSection, KeepsOthersOutUntilItsLastExit) {
  CriticalSection section;
  section.EnterLock();
  section.EnterLock();
  std::atomic<bool> entered{false};
  std::thread other([&] {
    section.EnterLock();
    entered = true;
    section.ExitLock();
  });
  section.ExitLock();
  EXPECT_FALSE(entered);
  section.ExitLock();
  other.join();
  EXPECT_TRUE(entered);
}

}  // namespace
