#include "reference_host/log/Event.h"

#include <gtest/gtest.h>
#include <json/reader.h>

#include <map>
#include <memory>
#include <sstream>
#include <thread>

#include "tests/host/windows/TestMachine.h"

namespace {

using refhost::Event;
using refhost::EventTitle;

/// @return the events of one kind, the older half of the file too.
std::vector<Json::Value> Events(const std::string& kind) {
  std::istringstream lines(TestMachine::ReadLog(L"events.jsonl.1") +
                           TestMachine::ReadLog(L"events.jsonl"));
  const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
  std::vector<Json::Value> events;
  for (std::string line; std::getline(lines, line);) {
    Json::Value event;
    EXPECT_TRUE(reader->parse(line.data(), line.data() + line.size(), &event, nullptr)) << line;
    if (event["event"] == kind) events.push_back(event);
  }
  return events;
}

}  // namespace

TEST(Event, HasItsRunAndTheTitleOfItsThread) {
  const EventTitle outer("T-outer");
  std::thread([] { Event("test.titles").With("who", "stranger").Write(); }).join();
  std::thread([title = EventTitle::Current()] {
    const EventTitle taken(title);
    Event("test.titles").With("who", "helper").Write();
  }).join();
  {
    const EventTitle inner("T-inner");
    Event("test.titles").With("who", "inner").Write();
  }
  Event("test.titles").With("who", "outer").Write();
  std::map<std::string, std::string> titles;
  for (const Json::Value& event : Events("test.titles")) {
    EXPECT_EQ(event["run"].asString(), Event::Run());
    titles[event["who"].asString()] = event["title"].asString();
  }
  EXPECT_EQ(
      titles,
      (std::map<std::string, std::string>{
          {"stranger", ""}, {"helper", "T-outer"}, {"inner", "T-inner"}, {"outer", "T-outer"}}));
}

TEST(Event, KeepsSecretsBackAndTypesAsTheyAre) {
  Event("test.details")
      .With("text", L"GET https://h/f?signature=secret \u00E4\n")
      .With("token", "eyJhbGciOiJIUzI1NiJ9.eyJzdWIiOiJ4In0.c2VjcmV0")
      .With("code", 0xFFFFFFFFul)
      .With("done", true)
      .With("none", "")
      .Write();
  const std::vector<Json::Value> events = Events("test.details");
  ASSERT_EQ(events.size(), 1U);
  EXPECT_EQ(events[0]["text"].asString(), "GET https://h/f?[left out] \xC3\xA4\n");
  EXPECT_EQ(events[0]["token"].asString(), "[left out]");
  EXPECT_EQ(events[0]["code"].asInt64(), 4294967295);
  EXPECT_TRUE(events[0]["done"].isBool());
  EXPECT_FALSE(events[0].isMember("none"));
}

TEST(Event, NoneIsLostWhenProcessesShareTheFileAndRotateIt) {
  // 720 of about 115 bytes each: more than one file may have, and with the other tests' events less
  // than both.
  const auto run = [] {
    std::string output;
    const std::wstring configuration = TestMachine::Folder() + L"\\host.json";
    EXPECT_EQ(TestMachine::RunAgain(L"--events 240", configuration, output), 0U);
  };
  std::thread other(run);
  for (int i = 0; i < 240; ++i) Event("test.crowd").With("number", i).Write();
  other.join();
  run();
  std::map<std::string, int> counts;
  for (const Json::Value& event : Events("test.crowd")) {
    EXPECT_EQ(event["number"].asInt(), counts[event["run"].asString()]++);
  }
  EXPECT_EQ(counts.size(), 3U);
  for (const auto& [id, count] : counts) EXPECT_EQ(count, 240) << id;
  EXPECT_FALSE(TestMachine::ReadLog(L"events.jsonl.1").empty());
}
