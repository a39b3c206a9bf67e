#include <thread>

#include "tests/unit/AgentFixture.h"

using LifecycleTest = AgentFixture;

TEST_F(LifecycleTest, StartUpAsksAndThenSubscribes) {
  fake.logOpens = false;
  Start();
  EXPECT_EQ(fake.Transcript(
                {"identity", "open", "device", "base", "realm", "POST", "d TolmarAgent.", "sub"}),
            R"(identity
open-log TolmarAgent.log 4
device-id text
device-id bytes 32
base-url
realm
POST https://cloud/mp/zlt/v2/hasEntitlement?deviceId=D-1 )" +
                Queries[0].Body() + R"(
d TolmarAgent.Init: HasEntitledSoftware returned 1 preIsntallSw=0
subscribe false
)");
  fake.Forget();
  EXPECT_EQ(Agent().Initialize(), 0xFFFFFFFFU);
  EXPECT_EQ(fake.Transcript(), "identity\nopen-log TolmarAgent.log 4\nsubscribe false\n");
  fake.logOpens = true;
  EXPECT_EQ(Agent().Initialize(), 0U);
}

TEST_F(LifecycleTest, TheWorkerStartsWithAChangedEndpointOfARegisteredDevice) {
  fake.always["hasEntitlement"] = Preinstall;
  const struct {
    int registered;
    bool broker;
    std::wstring base, realm;
    std::size_t asked, worker;
  } rows[] = {{1, true, L"https://cloud", L"realm", 1, 0},
              {2, true, L"https://other", L"realm", 1, 1},
              {1, true, L"https://cloud", L"Realm", 1, 1},
              {0, true, L"https://other", L"realm", 0, 0},
              {1, false, L"https://other", L"realm", 0, 0}};
  for (const auto& row : rows) {
    fake.registered = row.registered;
    fake.hasBroker = row.broker;
    TolmarAgent::SetBaseUri(row.base);
    TolmarAgent::SetRealm(row.realm);
    Start();
    JoinWorker();
    EXPECT_EQ(fake.Count("d TolmarAgent.Init"), row.asked);
    EXPECT_EQ(fake.Count("d PreinstallSoftwareThrdRtn: Entry"), row.worker);
    EXPECT_EQ(fake.Count("subscribe"), 1U);
    EXPECT_EQ(ServerUrl(), L"https://cloud/mp/zlt/v2");
    if (row.asked == 1) continue;
    fake.Forget();
    unsigned char entitled = 9;
    EXPECT_EQ(Agent().HasEntitledSoftware(entitled), 62U);
    EXPECT_EQ(fake.Count("d TolmarAgent: RequestHas"),
              row.broker ? 2U : 1U);  // without broker no token
    EXPECT_TRUE(entitled == 9 && fake.Count("key") == 0);
  }
}

TEST_F(LifecycleTest, AWorkerThatCannotBeStartedStopsNothingElse) {
  fake.always["hasEntitlement"] = Preinstall;
  fake.threadStarts = {false, false};
  TolmarAgent::SetBaseUri(L"https://other");
  Start();
  EXPECT_EQ(fake.Count("subscribe"), 1U);
  fake.baseUrl = L"https://third";
  Notify(false, 4, 15);
  EXPECT_EQ(fake.Count("d TolmarAgent: OnZLTNotification: Exit"), 1U);
  EXPECT_EQ(fake.Count("d PreinstallSoftwareThrdRtn"), 0U);
  EXPECT_TRUE(fake.threadStarts.empty());
  Agent().CleanUp();  // There is none to be joined.
}

TEST_F(LifecycleTest, CleanUpUnsubscribesStopsAndThenCleansTheDownloadsUp) {
  const auto stopped = [&] { return WaitForSingleObject(StopEvent(), 0) == WAIT_OBJECT_0; };
  std::vector<bool> steps;
  Install("T:");
  fake.Forget();
  fake.atStep = [&](auto&) { steps.push_back(stopped()); };
  Agent().CleanUp();
  EXPECT_EQ(fake.Transcript(), "unsubscribe subscription\ndownloads-clean-up\n");
  EXPECT_EQ(steps, (std::vector{false, true}));
}

TEST_F(LifecycleTest, ConcurrentFirstCallersGetTheOneAgent) {
  fake.Forget();
  TolmarAgent* other = nullptr;
  std::thread caller([&] { other = TolmarAgent::GetInstance(); });
  TolmarAgent* agent = TolmarAgent::GetInstance();
  caller.join();
  EXPECT_TRUE(agent != nullptr && agent == other && fake.Count("subscribe") == 1);
  fake.Forget();
  agent->CleanUp();
  EXPECT_EQ(fake.Transcript(), "unsubscribe subscription\n");  // no download was ever started
}

TEST_F(LifecycleTest, OnlyAConfiguredDeviceAtANewOrUnaskedEndpointIsAskedAgain) {
  const std::string on = "d TolmarAgent: OnZLTNotification: ";
  const std::string configured = on + "DEVICE_CONFIGURE rcvd\n";
  const std::string asked =
      configured +
      "d TolmarAgent.OnZLTNotification: HasEntitledSoftware returned 1 preinstallSw=0\n";
  const struct {
    bool vrx;
    unsigned topic, state;
    int registered;
    bool known;
    std::wstring base, realm;
    std::string lines;
  } rows[] = {{true, 4, 15, 1, true, L"new", L"new", ""},
              {false, 4, 14, 1, true, L"new", L"new", ""},
              {false, 3, 15, 1, true, L"new", L"new", ""},
              {false, 4, 15, 1, true, L"old", L"old", configured},
              {false, 4, 15, 1, false, L"old", L"old", asked},
              {false, 4, 15, 1, true, L"old", L"new", asked},
              {false, 4, 15, 1, true, L"new", L"old", asked},
              {false, 4, 15, 0, true, L"new", L"old", configured}};
  for (const auto& row : rows) {
    fake.baseUrl = fake.realm = L"old";
    fake.registered = row.known ? 1 : 0;
    Start();
    fake.registered = row.registered;
    fake.baseUrl = row.base;
    fake.realm = row.realm;
    Notify(row.vrx, row.topic, row.state);
    JoinWorker();
    const std::string received =
        "g TolmarAgent::OnZLTNotification: ZLT Notification received; topicID: " +
        std::to_string(row.topic) + ", eventState: " + std::to_string(row.state) + "\n";
    EXPECT_EQ(fake.Transcript({on, "d TolmarAgent.", "g ", "d Pre"}),
              on + "Invoked\n" + (row.vrx ? "" : received) + row.lines + on + "Exit\n");
    EXPECT_EQ(ServerUrl(), (row.lines.empty() ? L"old" : row.base) + L"/mp/zlt/v2");
  }
}

TEST_F(LifecycleTest, TheWorkerInstallsTheWholeListForEveryPreinstallTitleThatIsMissing) {
  fake.always["hasEntitlement"] = Preinstall;
  const std::string worker = "d PreinstallSoftwareThrdRtn: ";
  const std::string install = worker + "Invoking InstallEntitledSoftware\n";
  const std::string already = worker + "Software is already installed\n";
  const std::string list = Titles("A!:M B:M C!:M")["swList"].toStyledString();
  const std::string titles = R"({"code":0,"swList":)" + list + "}";
  // A title that cannot be read keeps what the service says of it.
  const std::string own = R"({"code":0,"swList":[
      {"preinstallSw":true,"status":"Not Installed","moduleList":[5]},
      {"preinstallSw":true,"status":"not installed yet","moduleList":[5]},
      {"preinstallSw":true,"status":"not installer","moduleList":[5]}]})";
  const struct {
    std::string result;
    std::deque<int> checks;  // two for the states, then two for each installation of the list
    std::string lines;
    std::size_t installed;
    std::deque<bool> threadStarts = {};
  } rows[] = {{titles, {0, 0, 1, 1}, install + already, 2},
              {titles, {0, 0, 0, 0, 0, 1}, install + install, 4},
              {titles, {1, 1}, already + already, 0},
              {R"({"code":0,"swList":[5]})", {}, "", 0},
              {own, {}, install + already + already, 0},
              {titles, {}, "", 0, {true, false}},
              {R"({"code":5,"swList":)" + list + "}", {}, "", 0}};
  for (const auto& row : rows) {
    StartQuietly();
    fake.always["entitlement"] = Result(row.result);
    fake.checks = row.checks;
    fake.threadStarts = row.threadStarts;
    Notify(false, 4, 15);
    JoinWorker();
    EXPECT_EQ(fake.Transcript({worker}), worker + "Entry\n" + row.lines + worker + "Exit\n");
    EXPECT_EQ(fake.Count("DOWNLOAD ZLTKIVJob false stop 1"), row.installed);
    EXPECT_EQ(fake.Count("run"), row.checks.size());
    EXPECT_EQ(fake.Transcript({"run"}).find("true null"), std::string::npos);
  }
}
