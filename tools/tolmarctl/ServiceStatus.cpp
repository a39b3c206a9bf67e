#include "tools/tolmarctl/ServiceStatus.h"

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <string>

#include "host/common/Text.h"
#include "reference_host/files/InstallationLease.h"
#include "reference_host/files/ProgramData.h"
#include "reference_host/files/SuiteFile.h"
#include "tools/common/ServiceState.h"
#include "tools/common/TerminalText.h"
#include "tools/tolmarctl/ExitStatus.h"
#include "tools/tolmarctl/Explain.h"
#include "tools/tolmarctl/Output.h"
#include "tools/tolmarctl/Report.h"
#include "tools/tolmarctl/Table.h"

namespace {

using service::Time;

constexpr std::size_t MaxStateBytes = 16 << 20;

const char* WordOf(DWORD state) {
  constexpr const char* Words[] = {"unknown", "stopped",          "start pending", "stop pending",
                                   "running", "continue pending", "pause pending", "paused"};
  return state < std::size(Words) ? Words[state] : Words[0];
}

/// Does something with the service. @return Windows' error.
DWORD WithService(DWORD access, const std::function<BOOL(SC_HANDLE)>& act) {
  SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT);
  if (manager == nullptr) return GetLastError();
  SC_HANDLE service = OpenServiceW(manager, L"TolmarHost", access);
  const bool isDone = service != nullptr && act(service);
  const DWORD error = isDone ? ERROR_SUCCESS : GetLastError();
  if (service != nullptr) CloseServiceHandle(service);
  CloseServiceHandle(manager);
  return error;
}

/// @return the word for what the service manager says of it.
std::string ServiceWord() {
  SERVICE_STATUS status{};
  const auto query = [&](SC_HANDLE service) { return QueryServiceStatus(service, &status); };
  const DWORD error = WithService(SERVICE_QUERY_STATUS, query);
  if (error == ERROR_SERVICE_DOES_NOT_EXIST) return "not installed";
  return WordOf(error == ERROR_SUCCESS ? status.dwCurrentState : 0);
}

/// @return what is wrong, empty when the state was read or there is none.
std::wstring ReadState(service::State& state) {
  const std::wstring path = refhost::SuiteFolder() + L"\\" + service::StateFileName;
  std::string text;
  unsigned long error = 0;
  const std::wstring failure = refhost::ReadJudgedFile(path, MaxStateBytes, text, &error);
  if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) return {};
  if (!failure.empty()) return path + failure;
  state = service::StateIn(text);
  return {};
}

/// The sooner of the next run and the next look at what is missing.
Time NextWork(const service::State& state) {
  return state.resume == 0 ? state.nextRun : std::min(state.nextRun, state.resume);
}

/// For programs times are Unix milliseconds, as in the report.
void SetTime(Json::Value& object, const char* name, Time time) {
  if (time != 0) object[name] = Json::Int64{1000 * time};
}

std::string TextOf(Time time) { return time == 0 ? "" : timeline::DateOf(1000 * time); }

Json::Value TitlesOf(const service::State& state) {
  Json::Value titles(Json::arrayValue);
  for (const auto& [partNumber, known] : state.titles) {
    Json::Value& title = titles.append(Json::objectValue);
    title["l1FruPn"] = partNumber;
    title["name"] = known.name;
    title["status"] = known.status;
    title["failures"] = known.failures;
    SetTime(title, "tried", known.tried);
    SetTime(title, "again", known.again);
    if (known.code == 0) continue;
    title["code"] = known.code;
    title["cause"] = known.cause.empty() ? CauseIdOf(known.code) : known.cause;
    title["why"] = known.why;
  }
  return titles;
}

void PrintJson(const Options& options, const service::State& state) {
  Json::Value root;
  root["command"] = options.command;
  root["service"] = ServiceWord();
  root["waitsFor"] = state.waitsFor;
  SetTime(root, "nextRun", NextWork(state));
  if (state.lastRun.began != 0) {
    Json::Value& run = root["lastRun"];
    SetTime(run, "began", state.lastRun.began);
    SetTime(run, "ended", state.lastRun.ended);
    run["code"] = state.lastRun.code;
    if (state.lastRun.code != 0) run["cause"] = CauseIdOf(state.lastRun.code);
  }
  root["titles"] = TitlesOf(state);
  if (const auto holder = refhost::InstallationLease::Holder()) {
    root["lease"] = ZLT::String::UTF16ToUTF8(refhost::InstallationLease::Description(*holder));
  }
  PrintJsonLine(root);
}

std::string LastRunText(const service::RunState& run) {
  if (run.began == 0) return "never";
  std::string text = TextOf(run.began);
  if (run.ended == 0) text += ", not ended";
  if (run.code != 0)
    text += ", code " + std::to_string(run.code) + " (" + CauseIdOf(run.code) + ")";
  return text;
}

void PrintText(const service::State& state) {
  std::string lines = "service:  " + ServiceWord() + "\nlast run: " + LastRunText(state.lastRun) +
                      "\nnext run: " + TextOf(NextWork(state)) + "\n";
  if (!state.waitsFor.empty()) lines += "waits for " + Printable(state.waitsFor) + "\n";
  if (const auto holder = refhost::InstallationLease::Holder()) {
    lines += "installs now: " +
             ZLT::String::UTF16ToUTF8(refhost::InstallationLease::Description(*holder)) + "\n";
  }
  Table table({"TITLE", "NAME", "STATUS", "TRIED", "FAILURES", "CAUSE"});
  for (const Json::Value& title : TitlesOf(state)) {
    const std::string failures =
        title["failures"].asUInt() == 0 ? "" : title["failures"].asString();
    table.Add({{title["l1FruPn"].asString()},
               {title["name"].asString()},
               {title["status"].asString()},
               {TextOf(title["tried"].asInt64() / 1000)},
               {failures, Cell::Look::Plain, true},
               {title["cause"].asString()}});
  }
  PrintLines(table.IsEmpty() ? lines : lines + table.Text(false));
}

}  // namespace

int ServiceStatus(const Options& options) {
  service::State state;
  if (const std::wstring failure = ReadState(state); !failure.empty()) {
    std::fprintf(stderr, "tolmarctl: %s: %s\n", options.command.c_str(),
                 ZLT::String::UTF16ToUTF8(failure).c_str());
    return ExitStatus::Usage;
  }
  options.json ? PrintJson(options, state) : PrintText(state);
  return ExitStatus::Success;
}

int ServiceRun(const Options& options) {
  SERVICE_STATUS status{};
  const DWORD error = WithService(SERVICE_USER_DEFINED_CONTROL, [&](SC_HANDLE handle) {
    return ControlService(handle, service::RunControl, &status);
  });
  if (error != ERROR_SUCCESS) {
    const bool runs = error != ERROR_SERVICE_DOES_NOT_EXIST && error != ERROR_SERVICE_NOT_ACTIVE;
    std::fprintf(stderr, "tolmarctl: %s: the service %s, error %lu\n", options.command.c_str(),
                 runs ? "cannot be asked" : "does not run", error);
    return ExitStatus::Usage;
  }
  Json::Value root;
  root["command"] = options.command;
  if (options.json) {
    PrintJsonLine(root);
  } else {
    PrintLines("asked; tolmarctl service status tells what comes of it\n");
  }
  return ExitStatus::Success;
}
