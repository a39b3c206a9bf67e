#include "tools/tolmarctl/Plan.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cwctype>
#include <map>
#include <string>
#include <string_view>

#include "agent/ResultCodes.h"
#include "agent/TolmarAgent.h"
#include "host/common/FileSystem.h"
#include "host/common/Text.h"
#include "host/common/Utility.h"
#include "reference_host/download/DownloadAgentOrder.h"
#include "reference_host/files/FolderInspection.h"
#include "tools/common/Console.h"
#include "tools/common/TerminalText.h"
#include "tools/tolmarctl/HolderText.h"
#include "tools/tolmarctl/Table.h"

namespace {

using ZLT::String;

std::wstring LocalPath(const Json::Value& file) {
  return ZLT::utility::GetZltKivDownloadPath() + L"\\" +
         String::UTF8ToUTF16(file["name"].asString());
}

std::wstring AddressOf(const Json::Value& file) {
  return String::UTF8ToUTF16(file["downloadUrl"].asString());
}

/// @return true when an installation will find the file in the download folder and take it. Scripts
/// it fetches anew.
bool IsLeftOver(const Json::Value& file) {
  const std::wstring path = LocalPath(file);
  const auto isSame = [](wchar_t a, wchar_t b) { return std::towlower(a) == std::towlower(b); };
  constexpr std::wstring_view Script = L".ps1";
  const auto script = std::search(path.begin(), path.end(), Script.begin(), Script.end(), isSame);
  return script == path.end() && FileSystem::fileExists(path);
}

std::map<std::wstring, std::wstring> RefusalsOf(const Json::Value& files) {
  DownloadAgent::FileMap order;
  for (const Json::Value& file : files) order[AddressOf(file)] = LocalPath(file);
  return refhost::RefusalsOfFiles(order, ZLT::utility::GetZltKivDownloadPath());
}

/// Asks for the files of one title after the other, and adds up what they come to.
class Planner {
 public:
  Planner(TolmarAgent& agent, HANDLE cancel) : _agent(agent), _cancel(cancel) {}

  /// @throws Json::Exception when the service's list has another shape than agreed.
  void Add(const Json::Value& title) {
    Json::Value planned;
    planned["l1FruPn"] = title["l1FruPn"].asString();
    planned["name"] = title["name"].asString();
    planned["preinstallSw"] = title["preinstallSw"].asBool();
    planned["status"] = title.get("status", "not asked").asString();
    planned["modules"] = Json::arrayValue;
    _titleBytes = 0;
    bool isWhole = true;
    for (const Json::Value& module : title["moduleList"]) {
      if (IsCancelled()) break;
      const Json::Value& added =
          planned["modules"].append(PlanModule(planned["l1FruPn"].asString(), module));
      isWhole = isWhole && added["code"].asUInt() == 0;
    }
    if (!isWhole) _titleBytes = 0;  // An installation leaves such a title out.
    planned["bytesToFetch"] = Json::Int64{_titleBytes};
    _bytes += _titleBytes;
    _largestTitle = std::max(_largestTitle, _titleBytes);
    _isFirst = _isFirst && !isWhole;
    _titles.append(std::move(planned));
  }

  unsigned long Code() const { return _code; }

  bool IsCancelled() const { return WaitForSingleObject(_cancel, 0) != WAIT_TIMEOUT; }

  Json::Value Document() const {
    Json::Value plan;
    plan["titles"] = _titles;
    plan["bytesToFetch"] = Json::Int64{_bytes};
    plan["bytesNeeded"] = Json::Int64{2 * _largestTitle};
    plan["refusals"] = _refusals;
    const auto bytes = refhost::FreeBytesFor(ZLT::utility::GetZltKivDownloadPath()).value_or(0);
    plan["bytesFree"] = Json::UInt64{bytes};
    plan["isEnough"] = bytes >= static_cast<std::uint64_t>(2 * _largestTitle);
    if (const std::string holder = HolderText(); !holder.empty()) plan["lease"] = holder;
    return plan;
  }

 private:
  Json::Value PlanModule(const std::string& title, const Json::Value& module) {
    Json::Value planned;
    planned["moduleFruPn"] = module["moduleFruPn"].asString();
    planned["files"] = Json::arrayValue;
    Json::Value reply;
    const unsigned long code = _agent.GetDownloadFiles(
        reply, String::UTF8ToUTF16(title), String::UTF8ToUTF16(module["moduleFruPn"].asString()));
    planned["code"] = Json::UInt{code};
    if (code != 0) {
      _code = code;
      return planned;
    }
    const auto refusals = RefusalsOf(reply["fileList"]);
    for (const Json::Value& file : reply["fileList"]) {
      planned["files"].append(PlanFile(file, refusals));
    }
    return planned;
  }

  /// The download folder is deleted after each title: what lies in it spares the first one's
  /// fetching only.
  Json::Value PlanFile(const Json::Value& file,
                       const std::map<std::wstring, std::wstring>& refusals) {
    Json::Value planned;
    planned["name"] = file["name"].asString();
    planned["size"] = std::max(file["size"].asInt(), 0);  // The agent takes no larger one.
    planned["isThere"] = _isFirst && IsLeftOver(file);
    if (!planned["isThere"].asBool()) _titleBytes += planned["size"].asInt();
    const auto refusal = refusals.find(AddressOf(file));
    if (refusal == refusals.end()) return planned;
    planned["refusal"] = String::UTF16ToUTF8(refusal->second);
    ++_refusals;
    return planned;
  }

  TolmarAgent& _agent;
  HANDLE _cancel;
  unsigned long _code = 0;
  Json::Value _titles{Json::arrayValue};
  bool _isFirst = true;
  std::int64_t _titleBytes = 0;
  std::int64_t _bytes = 0;
  std::int64_t _largestTitle = 0;
  int _refusals = 0;
};

Cell NoteOf(const Json::Value& file) {
  if (file.isMember("refusal")) return {file["refusal"].asString(), Cell::Look::Bad};
  return {file["isThere"].asBool() ? "there already" : ""};
}

void AddModule(Table& table, const Json::Value& title, const Json::Value& module) {
  const std::string name = title["l1FruPn"].asString(), status = title["status"].asString();
  const std::string part = module["moduleFruPn"].asString();
  for (const Json::Value& file : module["files"]) {
    table.Add({{name},
               {status},
               {part},
               {file["name"].asString()},
               {file["size"].asString(), Cell::Look::Plain, true},
               NoteOf(file)});
  }
  if (module["code"].asUInt() == 0) return;
  const std::string note = "its files are not to be had, code " + module["code"].asString();
  table.Add({{name}, {status}, {part}, {}, {}, {note, Cell::Look::Bad}});
}

Table FilesOf(const Json::Value& titles) {
  Table table({"TITLE", "STATUS", "MODULE", "FILE", "BYTES", "NOTE"});
  for (const Json::Value& title : titles) {
    for (const Json::Value& module : title["modules"]) AddModule(table, title, module);
  }
  return table;
}

}  // namespace

Outcome Plan(TolmarAgent& agent, const Options& options, HANDLE cancel) {
  Outcome outcome;
  Json::Value list;
  outcome.code = agent.GetEntitledSoftware(list);
  if (outcome.code == 0 && options.asksChecks) {
    outcome.code = agent.GetEntitledSoftwareStatus(list, cancel, false);
  }
  if (outcome.code != 0) return outcome;
  Planner planner(agent, cancel);
  try {
    for (const Json::Value& title : list["swList"]) planner.Add(title);
    outcome.code = planner.Code();
  } catch (const Json::Exception&) {
    outcome.code = ResultCode::BadDocument;
  }
  outcome.isDone = !planner.IsCancelled();
  outcome.result = planner.Document();
  return outcome;
}

void PrintPlan(const Json::Value& plan) {
  if (plan.isNull()) return;
  const Console console;
  const Table files = FilesOf(plan["titles"]);
  if (!files.IsEmpty()) std::fputs(files.Text(console.HasColour()).c_str(), stdout);
  const auto bytes = [&plan](const char* key) {
    return static_cast<unsigned long long>(plan[key].asUInt64());
  };
  std::printf("to fetch: %llu bytes\n", bytes("bytesToFetch"));
  std::printf("room: %llu bytes needed at the least, %llu free: %s\n", bytes("bytesNeeded"),
              bytes("bytesFree"), plan["isEnough"].asBool() ? "enough" : "NOT ENOUGH");
  if (plan["refusals"].asInt() != 0) {
    std::printf("files that will be refused: %d\n", plan["refusals"].asInt());
  }
  if (plan.isMember("lease")) {
    std::printf("installs now: %s\n", Printable(plan["lease"].asString()).c_str());
  }
}
