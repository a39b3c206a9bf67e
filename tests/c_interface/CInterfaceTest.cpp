#include <gtest/gtest.h>

#include <set>
#include <stdexcept>
#include <thread>

#include "c_interface/tolmar/agent.h"
#include "tests/c_interface/Faults.h"
#include "tests/unit/AgentFixture.h"

namespace {

const std::string OneTitle = R"({"swList":[{"l1FruPn":"T","moduleList":[{"moduleFruPn":"M"}]}]})";

/// @return what a call has handed over, "-" for nothing.
std::string Taken(char* text) {
  const std::string copy = text == nullptr ? "-" : text;
  tolmar_free(text);
  return copy;
}

struct Call {
  std::string name;
  std::function<std::uint32_t(const char* text, char** out)> make;
  std::string result;  ///< what comes out when all goes well
  std::string told;    ///< a part of what the host then gets to know
  bool takesTitles = false;
};

HANDLE cancel = nullptr;

const std::string TitleInstalled =
    R"({"swList":[{"l1FruPn":"T","moduleList":[{"moduleFruPn":"M"}],"progress":"0","status":"installed"}]})";

/// Every call that asks the agent. Where it takes a document, `text` is that, else a part number.
const std::vector<Call> Calls{
    {"entitled?",
     [](const char* text, char**) {
       std::uint8_t entitled = 9;
       return tolmar_has_entitled_software(text == nullptr ? nullptr : &entitled);
     },
     "-", "/hasEntitlement?"},
    {"titles", [](const char*, char** out) { return tolmar_get_entitled_software(out); },
     "{\"code\":0,\"swList\":[{\"l1FruPn\":\"\u00fc\"}]}", "/entitlement?"},
    {"status",
     [](const char* text, char** out) {
       return tolmar_get_entitled_software_status(text, cancel, 0, out);
     },
     TitleInstalled, "true cancel\n", true},
    {"title's status",
     [](const char* text, char** out) { return tolmar_get_title_status(text, 0, nullptr, 0, out); },
     TitleInstalled, "true unknown\n", true},
    {"install",
     [](const char* text, char** out) {
       const tolmar_install_options options{sizeof options, 0, cancel, nullptr, nullptr, 0};
       return tolmar_install_entitled_software(text, &options, out);
     },
     TitleInstalled, "false cancel 1\n", true},
    {"how is it", [](const char* text, char** out) { return tolmar_get_install_status(text, out); },
     "{\"swList\":[{\"l1FruPn\":\"T\",\"moduleList\":[{\"moduleFruPn\":\"M\"}],\"progress\":"
     "\"100\","
     "\"status\":\"installed\"}]}",
     "GetInstallEntitledSoftwareStatus: code=0", true},
    {"files",
     [](const char* text, char** out) { return tolmar_get_download_files(text, "\u00e9", out); },
     R"({"code":0,"fileList":[{"downloadUrl":"u/c.ps1","name":"c.ps1"}]})",
     "\"moduleFruPn\":\"\u00e9\""},
    {"download report",
     [](const char* text, char**) {
       return tolmar_report_download_progress("P", "M", -1, "S", "F", text, -7, "T");
     },
     "-", R"("action":-1,"message":"S","fileName":"F","progress":-7,"custDeviceDate":"T")"},
    {"install report",
     [](const char* text, char**) {
       return tolmar_report_install_progress("P", "M", 2, text, "T");
     },
     "-", R"("action":2,"message":")"},
    {"configured", [](const char*, char**) { return tolmar_device_configure(5); }, "-",
     "publish 5\nd TolmarAgent: OnZLTNotification: Invoked\n"}};

std::uint32_t Describe(std::uint32_t code) {
  tolmar_cause cause{sizeof cause, "", "", "", ""};
  const std::uint32_t result = tolmar_describe(code, &cause);
  EXPECT_EQ(result == TOLMAR_OK, *cause.happened != 0 && *cause.remedy != 0) << code;
  return result;
}

std::uint32_t Start(const char* path, const char* json, std::string* complaint = nullptr) {
  const tolmar_configuration configuration{sizeof configuration, path, json};
  char* line = nullptr;
  const std::uint32_t code = tolmar_start(&configuration, &line);
  const std::string taken = Taken(line);
  if (complaint != nullptr) *complaint = taken;
  return code;
}

/// Every call gets this code, and nothing comes out. @param text in, for the call.
void ExpectFromAll(std::uint32_t code, const char* text) {
  for (const Call& call : Calls) {
    char* out = reinterpret_cast<char*>(1);  // NOLINT(performance-no-int-to-ptr): to be overwritten
    EXPECT_EQ(call.make(text, &out), code) << call.name;
    EXPECT_TRUE(out == nullptr || call.result == "-") << call.name;
  }
}

/// The agent's life is the process's: the tests share it. A fault leaves the installation's lock
/// with this thread, as the agent means it; what installs on another one comes before.
class CInterface : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    cancel = tolmar_event_create();
    ExpectFromAll(TOLMAR_NOT_STARTED, OneTitle.c_str());
    EXPECT_EQ(tolmar_stop(), TOLMAR_NOT_STARTED);
    const tolmar_configuration small{4, nullptr, nullptr};
    EXPECT_EQ(tolmar_start(&small, nullptr), TOLMAR_BAD_SIZE);
    EXPECT_EQ(Start("\xc3", nullptr), TOLMAR_BAD_UTF8);
    EXPECT_EQ(Start("a", "b"), TOLMAR_BAD_CONFIGURATION);
    std::string complaint;
    EXPECT_EQ(Start(nullptr, "bad", &complaint), TOLMAR_BAD_CONFIGURATION);
    EXPECT_EQ(complaint, "h\u00f6st.json: key \"realm\" is missing");
    FakeHost::Get().atStep = [](const std::string& line) {
      if (line.starts_with("start-suite")) throw std::runtime_error("scripted");
    };
    EXPECT_EQ(tolmar_start(nullptr, nullptr), TOLMAR_HOST_FAULT);
    FakeHost::Get().Reset();
    std::uint32_t code = TOLMAR_NO_RESOURCES;
    for (int allocation = 0; code == TOLMAR_NO_RESOURCES; ++allocation) {
      allocationsLeft = allocation;
      code = Start("C:\\host.json", nullptr);
      allocationsLeft = -1;
    }
    EXPECT_EQ(code, TOLMAR_OK);
    EXPECT_EQ(Start("C:\\host.json", nullptr), TOLMAR_ALREADY_STARTED);
    EXPECT_NE(FakeHost::Get().Transcript().find("start-suite C:\\host.json\n"), std::string::npos);
  }

  static void TearDownTestSuite() {
    FakeHost::Get().Reset();
    EXPECT_EQ(tolmar_stop(), TOLMAR_OK);
    EXPECT_EQ(FakeHost::Get().Count("unsubscribe"), 1U);
    EXPECT_EQ(tolmar_stop(), TOLMAR_STOPPED);
    EXPECT_EQ(tolmar_start(nullptr, nullptr), TOLMAR_STOPPED);
    ExpectFromAll(TOLMAR_STOPPED, OneTitle.c_str());
    tolmar_event_close(cancel);
  }

  CInterface() {
    fake.Reset();
    fake.Name(cancel, "cancel");
    fake.always["entitlement"] = Result("{\"code\":0,\"swList\":[{\"l1FruPn\":\"\u00fc\"}]}");
    fake.always["downloadRequest"] = Files("c.ps1");
  }

  FakeHost& fake = FakeHost::Get();
};

/// What a host's callback gets to know, and on which thread.
struct Told {
  std::string lines;
  HANDLE seen = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  std::thread::id thread = std::this_thread::get_id();
  bool throws = false;

  ~Told() { CloseHandle(seen); }

  static void Take(void* context, const tolmar_progress* progress) {
    Told& self = *static_cast<Told*>(context);
    EXPECT_EQ(std::this_thread::get_id(), self.thread);
    self.lines += std::string(progress->l1_fru_pn) + " " + progress->status + " " +
                  std::to_string(progress->percent) + ";";
    SetEvent(self.seen);
    if (self.throws) throw std::runtime_error("a host's");
  }

  std::uint32_t Install(char** out) {
    const tolmar_install_options options{sizeof options, 0, nullptr, &Take, this, 1};
    return tolmar_install_entitled_software(OneTitle.c_str(), &options, out);
  }
};

}  // namespace

TEST_F(CInterface, PassesEveryOperationOn) {
  for (const Call& call : Calls) {
    fake.Forget();
    char* out = nullptr;
    EXPECT_EQ(call.make(OneTitle.c_str(), &out), TOLMAR_OK) << call.name;
    EXPECT_EQ(Taken(out), call.result) << call.name;
    EXPECT_NE(fake.Transcript().find(call.told), std::string::npos)
        << call.name << fake.Transcript();
  }
  std::uint8_t entitled = 9;
  EXPECT_EQ(tolmar_has_entitled_software(&entitled), TOLMAR_OK);
  EXPECT_EQ(entitled, 1);
  fake.delivers = false;
  EXPECT_EQ(tolmar_device_configure(5), TOLMAR_TIMED_OUT);
  EXPECT_EQ(tolmar_set_base_uri("https://other") + tolmar_set_realm("r\u00e9alm"), 0U);
  // The agent's own codes, with what it has made of the document.
  fake.checks = {0};
  char* out = nullptr;
  EXPECT_EQ(tolmar_install_entitled_software(OneTitle.c_str(), nullptr, &out), 47U);
  EXPECT_NE(Taken(out).find("\"not installed\""), std::string::npos);
  fake.next["installProgress"] = {{"[]"}};
  EXPECT_EQ(tolmar_report_install_progress("P", "M", 2, "", ""), 39U);
  fake.next["entitlement"] = {{"", 404}};
  EXPECT_EQ(tolmar_get_entitled_software(&out), 404U);
  EXPECT_EQ(out, nullptr);
}

TEST_F(CInterface, RefusesWhatItCannotRead) {
  const struct {
    std::string json;
    std::uint32_t code;
  } rows[] = {{"\xff", TOLMAR_BAD_UTF8},
              {"", TOLMAR_BAD_JSON},
              {"[]", TOLMAR_BAD_JSON},
              {"{} {}", TOLMAR_BAD_JSON},
              {"{\"a\":" + std::string(5000, '[') + std::string(5000, ']') + "}", TOLMAR_BAD_JSON},
              {R"({"swList":{}})", TOLMAR_BAD_TITLES},
              {R"({"swList":[5]})", TOLMAR_BAD_TITLES},
              {R"({"swList":[{"l1FruPn":[]}]})", TOLMAR_BAD_TITLES},
              {R"({"swList":[{"preinstallSw":"x"}]})", TOLMAR_BAD_TITLES},
              {R"({"swList":[{"moduleList":5}]})", TOLMAR_BAD_TITLES},
              {R"({"swList":[{"moduleList":[{"moduleFruPn":{}}]}]})", TOLMAR_BAD_TITLES}};
  fake.Forget();
  for (const Call& call : Calls) {
    if (!call.takesTitles) continue;
    for (const auto& row : rows) {
      char* out = nullptr;
      EXPECT_EQ(call.make(row.json.c_str(), &out), row.code) << call.name << row.json;
      EXPECT_EQ(out, nullptr);
    }
    EXPECT_EQ(call.make(OneTitle.c_str(), nullptr), TOLMAR_NULL_ARGUMENT);
    EXPECT_EQ(call.make(nullptr, nullptr), TOLMAR_NULL_ARGUMENT);
  }
  char* out = nullptr;
  EXPECT_EQ(tolmar_get_title_status(OneTitle.c_str(), 1, nullptr, 0, &out), TOLMAR_BAD_TITLES);
  const tolmar_install_options small{8, 0, nullptr, nullptr, nullptr, 0};
  EXPECT_EQ(tolmar_install_entitled_software(OneTitle.c_str(), &small, &out), TOLMAR_BAD_SIZE);
  EXPECT_EQ(tolmar_has_entitled_software(nullptr), TOLMAR_NULL_ARGUMENT);
  EXPECT_EQ(tolmar_get_entitled_software(nullptr), TOLMAR_NULL_ARGUMENT);
  EXPECT_EQ(tolmar_get_download_files("T", "\xed\xa0\x80", &out), TOLMAR_BAD_UTF8);
  EXPECT_EQ(tolmar_report_install_progress("P", "M", 2, nullptr, "T"), TOLMAR_NULL_ARGUMENT);
  EXPECT_EQ(tolmar_set_realm(nullptr), TOLMAR_NULL_ARGUMENT);
  EXPECT_EQ(fake.Transcript(), "");
}

TEST_F(CInterface, TellsProgressOnTheCallersThread) {
  Told told;
  char* out = nullptr;
  fake.download = [&] { return FakeHost::ReallyWait(told.seen); };
  EXPECT_EQ(told.Install(&out), TOLMAR_OK);
  EXPECT_EQ(Taken(out), TitleInstalled);
  EXPECT_TRUE(told.lines.starts_with("T downloading 0;")) << told.lines;
  EXPECT_TRUE(told.lines.ends_with("T installed 100;")) << told.lines;
  // A callback that throws, or memory that runs out on the host's thread, costs progress at most.
  told.throws = true;
  fake.download = nullptr;
  EXPECT_EQ(told.Install(&out), TOLMAR_OK);
  EXPECT_EQ(Taken(out), TitleInstalled);
  std::set<std::uint32_t> codes;
  for (int allocation = 0; allocation < 150; ++allocation) {
    allocationsLeft = allocation;
    const std::uint32_t code = told.Install(&out);
    allocationsLeft = -1;
    EXPECT_EQ(Taken(out), code == TOLMAR_OK ? TitleInstalled : "-");
    codes.insert(code);
  }
  EXPECT_EQ(codes, (std::set<std::uint32_t>{TOLMAR_OK, TOLMAR_NO_RESOURCES}));
  fake.threadStarts = {false};
  EXPECT_EQ(told.Install(&out), TOLMAR_NO_RESOURCES);
  EXPECT_EQ(out, nullptr);
}

TEST_F(CInterface, LetsNoFaultOutAndWorksOnBehindIt) {
  for (const Call& call : Calls) {
    for (int fault = 0, faults = 1; faults != 0; ++fault) {
      char* out = nullptr;
      faults = 0;
      fake.atStep = [&, left = fault](const std::string&) mutable {
        if (left-- != 0) return;
        ++faults;
        throw std::runtime_error("scripted");
      };
      call.make(OneTitle.c_str(), &out);
      Taken(out);
    }
    fake.atStep = nullptr;
    for (int allocation = 0;; ++allocation) {
      char* out = nullptr;
      allocationsLeft = allocation;
      const std::uint32_t code = call.make(OneTitle.c_str(), &out);
      const bool hasFailed = allocationsLeft < 0;
      allocationsLeft = -1;
      // A document comes out with every code but this layer's.
      const bool isOwnCode = (code & 0xF0000000) == 0x20000000;
      const std::string taken = Taken(out);
      EXPECT_TRUE((taken == "-") == isOwnCode || !call.takesTitles) << call.name << allocation;
      EXPECT_TRUE(taken == "-" || taken.ends_with('}')) << call.name << allocation << taken;
      if (!hasFailed) break;
    }
    char* out = nullptr;
    EXPECT_EQ(call.make(OneTitle.c_str(), &out), TOLMAR_OK) << call.name;
    EXPECT_EQ(Taken(out), call.result) << call.name;
  }
}

TEST_F(CInterface, KeepsTheEventsThatTheAgentMayStillLookAt) {
  void* const first = tolmar_event_create();
  EXPECT_EQ(tolmar_event_set(first), TOLMAR_OK);
  char* out = nullptr;
  EXPECT_EQ(tolmar_get_entitled_software_status(OneTitle.c_str(), first, 0, &out), TOLMAR_OK);
  Taken(out);
  tolmar_event_close(first);
  EXPECT_EQ(WaitForSingleObject(first, 0), DWORD{WAIT_TIMEOUT});  // open, and not signalled
  EXPECT_EQ(tolmar_event_create(), first);
  tolmar_event_close(first);
  tolmar_event_close(nullptr);
  EXPECT_EQ(tolmar_event_set(nullptr), TOLMAR_NULL_ARGUMENT);
}

TEST_F(CInterface, HasWordsForEveryCode) {
  for (std::uint32_t code = TOLMAR_NULL_ARGUMENT; code < TOLMAR_UNKNOWN_CODE; ++code) {
    EXPECT_EQ(Describe(code), TOLMAR_OK);
  }
  for (const std::uint32_t code : {0U, 11U, 47U, 404U, 12007U, 0xFFFFFFFFU}) {
    EXPECT_EQ(Describe(code), TOLMAR_OK);
  }
  EXPECT_EQ(Describe(7), TOLMAR_UNKNOWN_CODE);
  EXPECT_EQ(tolmar_describe(0, nullptr), TOLMAR_NULL_ARGUMENT);
  EXPECT_EQ(tolmar_api_version(), TOLMAR_API_VERSION);
}
