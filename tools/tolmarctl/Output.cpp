#include "tools/tolmarctl/Output.h"

#include <json/writer.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "reference_host/process/Restart.h"
#include "tools/common/Console.h"
#include "tools/common/TerminalText.h"
#include "tools/common/Titles.h"
#include "tools/tolmarctl/ExitStatus.h"
#include "tools/tolmarctl/Explain.h"
#include "tools/tolmarctl/Plan.h"
#include "tools/tolmarctl/Table.h"

namespace {

/// Beyond ASCII everything is escaped: a reader need not know what a console or a pipe makes of it.
std::string OnOneLine(const Json::Value& value) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  builder["commentStyle"] = "None";
  return Json::writeString(builder, value);
}

bool IsFile(const Json::Value& file) {
  return file.isObject() && file["name"].isString() && file["size"].isInt() &&
         file["crc"].isConvertibleTo(Json::stringValue);
}

/// @return the list of that name, null when there is none.
const Json::Value& ListOf(const Json::Value& result, const char* name) {
  static const Json::Value none;
  return result.isObject() ? result[name] : none;
}

bool AreAll(const Json::Value& list, bool (*isSo)(const Json::Value&)) {
  return (list.isNull() || list.isArray()) && std::all_of(list.begin(), list.end(), isSo);
}

/// @return what installers have said, for the commands whose business it is.
std::string WantedRestart(const Options& options) {
  if (options.command != "install" && options.command != "status") return {};
  const refhost::Restart restart = refhost::RecordedRestart();
  if (restart == refhost::Restart::None) return {};
  return restart == refhost::Restart::Required ? "required" : "initiated";
}

void PrintJson(const Options& options, const Outcome& outcome) {
  Json::Value root;
  root["command"] = options.command;
  root["code"] = static_cast<Json::UInt>(outcome.code);
  if (options.command == "entitled") {
    root["hasEntitlement"] = outcome.hasEntitlement;
  } else {
    root["result"] = outcome.result.isNull() ? Json::Value(Json::objectValue) : outcome.result;
  }
  if (outcome.code != 0) root["cause"] = CauseIdOf(outcome.code);
  if (const std::string restart = WantedRestart(options); !restart.empty())
    root["restart"] = restart;
  PrintJsonLine(root);
}

Cell StatusCell(const std::string& status) {
  const bool isGood = status == "installed";
  const bool isBad = status == "not installed";
  return {status, isGood ? Cell::Look::Good : isBad ? Cell::Look::Bad : Cell::Look::Plain};
}

/// Entries of another shape than agreed have no row: they are shown as they are.
Table TitlesIn(const Json::Value& list) {
  Table table({"TITLE", "NAME", "STATUS", "FOR"});
  for (const Json::Value& title : list) {
    if (!IsTitle(title)) continue;
    table.Add({{title["l1FruPn"].asString()},
               {title["name"].asString()},
               StatusCell(title["status"].asString()),
               {title["preinstallSw"].asBool() ? "pre-install" : ""}});
  }
  return table;
}

Table FilesIn(const Json::Value& list) {
  Table table({"FILE", "BYTES", "CRC"});
  for (const Json::Value& file : list) {
    if (!IsFile(file)) continue;
    table.Add({{file["name"].asString()},
               {file["size"].asString(), Cell::Look::Plain, true},
               {file["crc"].asString()}});
  }
  return table;
}

void PrintList(const Json::Value& list, bool (*isSo)(const Json::Value&), const Table& table) {
  const Console console;
  if (!table.IsEmpty()) std::fputs(table.Text(console.HasColour()).c_str(), stdout);
  for (const Json::Value& entry : list) {
    if (!isSo(entry)) std::printf("(not as agreed: %s)\n", OnOneLine(entry).c_str());
  }
}

void PrintText(const Options& options, const Outcome& outcome) {
  if (options.command == "entitled" && outcome.code == 0) {
    std::puts(outcome.hasEntitlement ? "entitled" : "not entitled");
  }
  const Json::Value& titles = ListOf(outcome.result, "swList");
  const Json::Value& files = ListOf(outcome.result, "fileList");
  PrintList(titles, IsTitle, TitlesIn(titles));
  PrintList(files, IsFile, FilesIn(files));
  if (options.command == "plan") PrintPlan(outcome.result);
  if (const std::string restart = WantedRestart(options); !restart.empty()) {
    std::printf("restart: %s\n", restart.c_str());
  }
  std::fflush(stdout);
  for (const Json::Value& title : titles) std::fputs(ExplanationOf(title).c_str(), stderr);
  if (!outcome.isDone) {
    std::fprintf(stderr, "tolmarctl: %s: gave up before all was done\n", options.command.c_str());
  }
  if (outcome.code == 0) return;
  std::fprintf(stderr, "tolmarctl: %s: code %lu\n%s", options.command.c_str(), outcome.code,
               ExplanationOf(outcome.code).c_str());
}

}  // namespace

void PrintJsonLine(const Json::Value& document) {
  std::puts(OnOneLine(document).c_str());
  std::fflush(stdout);
}

void PrintLines(const std::string& lines) {
  const Console console;
  std::fputs(lines.c_str(), stdout);
}

int Complain(const Options& options, const std::string& what) {
  std::fprintf(stderr, "tolmarctl: %s: %s\n", options.command.c_str(), Printable(what).c_str());
  return ExitStatus::Usage;
}

bool PrintOutcome(const Options& options, const Outcome& outcome) {
  options.json ? PrintJson(options, outcome) : PrintText(options, outcome);
  const bool isAsAgreed = AreAll(ListOf(outcome.result, "swList"), IsTitle) &&
                          AreAll(ListOf(outcome.result, "fileList"), IsFile);
  if (!isAsAgreed) std::fputs("tolmarctl: the service's reply is not as agreed\n", stderr);
  return isAsAgreed;
}
