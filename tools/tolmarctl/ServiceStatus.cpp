#include "tools/tolmarctl/ServiceStatus.h"

#include <windows.h>

#include <functional>
#include <iterator>
#include <string>

#include "host/common/Text.h"
#include "reference_host/files/SuiteFile.h"
#include "tools/common/ServiceHandle.h"
#include "tools/common/ServiceState.h"
#include "tools/common/TerminalText.h"
#include "tools/tolmarctl/ExitStatus.h"
#include "tools/tolmarctl/Explain.h"
#include "tools/tolmarctl/HolderText.h"
#include "tools/tolmarctl/Output.h"
#include "tools/tolmarctl/Report.h"
#include "tools/tolmarctl/Table.h"

namespace {

using service::Time;

const char* WordOf(DWORD state) {
  constexpr const char* Words[] = {"unknown", "stopped",          "start pending", "stop pending",
                                   "running", "continue pending", "pause pending", "paused"};
  return state < std::size(Words) ? Words[state] : Words[0];
}

/// Does something with the service. @return Windows' error.
DWORD WithService(DWORD access, const std::function<BOOL(SC_HANDLE)>& act) {
  const ServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
  if (!manager) return GetLastError();
  const ServiceHandle service(OpenServiceW(manager.Get(), service::ServiceName, access));
  return service && act(service.Get()) ? ERROR_SUCCESS : GetLastError();
}

/// @return the word for what the service manager says of it.
std::string ServiceWord() {
  SERVICE_STATUS status{};
  const auto query = [&](SC_HANDLE service) { return QueryServiceStatus(service, &status); };
  const DWORD error = WithService(SERVICE_QUERY_STATUS, query);
  if (error == ERROR_SERVICE_DOES_NOT_EXIST) return "not installed";
  return WordOf(error == ERROR_SUCCESS ? status.dwCurrentState : 0);
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
  SetTime(root, "nextRun", service::NextWork(state));
  if (state.lastRun.began != 0) {
    Json::Value& run = root["lastRun"];
    SetTime(run, "began", state.lastRun.began);
    SetTime(run, "ended", state.lastRun.ended);
    run["code"] = state.lastRun.code;
    if (state.lastRun.code != 0) run["cause"] = CauseIdOf(state.lastRun.code);
  }
  root["titles"] = TitlesOf(state);
  if (const std::string holder = HolderText(); !holder.empty()) root["lease"] = holder;
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
                      "\nnext run: " + TextOf(service::NextWork(state)) + "\n";
  if (!state.waitsFor.empty()) lines += "waits for " + Printable(state.waitsFor) + "\n";
  if (const std::string holder = HolderText(); !holder.empty()) {
    lines += "installs now: " + Printable(holder) + "\n";
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
  std::string text;
  const std::wstring failure =
      refhost::ReadSuiteFile(service::StateFileName, service::MaxStateBytes, text);
  if (!failure.empty()) return Complain(options, ZLT::String::UTF16ToUTF8(failure));
  const service::State state = service::StateIn(text);
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
    const std::string what = runs ? "cannot be asked" : "does not run";
    return Complain(options, "the service " + what + ", error " + std::to_string(error));
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
