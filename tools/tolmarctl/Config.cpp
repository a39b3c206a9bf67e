#include "tools/tolmarctl/Config.h"

#include <json/writer.h>
#include <windows.h>

#include <cstdio>
#include <iostream>
#include <string>

#include "host/common/Text.h"
#include "reference_host/configuration/ConfigurationFile.h"
#include "reference_host/configuration/TokenStore.h"
#include "reference_host/files/Trust.h"
#include "tools/common/Console.h"
#include "tools/tolmarctl/ExitStatus.h"
#include "tools/tolmarctl/Output.h"
#include "tools/tolmarctl/Table.h"

namespace {

std::string TextOf(const Json::Value& value) {
  if (value.isNull()) return "";
  if (value.isString()) return value.asString();
  std::string text;
  for (const Json::Value& element : value) text += (text.empty() ? "" : ", ") + TextOf(element);
  return value.isArray() ? text : Json::writeString(Json::StreamWriterBuilder(), value);
}

int Show(const Options& options) {
  const Json::Value settings = refhost::ShareableSettings();
  if (settings.isNull()) {
    return Complain(options, ZLT::String::UTF16ToUTF8(refhost::ConfigurationError()));
  }
  if (options.json) {
    Json::Value root;
    root["command"] = options.command;
    root["settings"] = settings;
    PrintJsonLine(root);
    return ExitStatus::Success;
  }
  Table table({"KEY", "VALUE", "FROM", "MEANING"});
  for (const Json::Value& setting : settings) {
    table.Add({{setting["key"].asString()},
               {TextOf(setting["value"])},
               {setting["source"].asString()},
               {setting["meaning"].asString()}});
  }
  const Console console;
  std::fputs(table.Text(console.HasColour()).c_str(), stdout);
  return ExitStatus::Success;
}

int Validate(const Options& options) {
  const std::vector<std::string> complaints = refhost::ConfigurationComplaints();
  if (options.json) {
    Json::Value root;
    root["command"] = options.command;
    root["isUsable"] = refhost::ConfigurationError().empty();
    root["complaints"] = Json::arrayValue;
    for (const std::string& complaint : complaints) root["complaints"].append(complaint);
    PrintJsonLine(root);
  } else if (complaints.empty()) {
    PrintLines("no mistake\n");
  }
  for (const std::string& complaint : complaints) Complain(options, complaint);
  return complaints.empty() ? ExitStatus::Success : ExitStatus::Usage;
}

/// A line of standard input; what is typed is not shown.
std::string AskForToken() {
  const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
  DWORD mode = 0;
  const bool isConsole = GetConsoleMode(input, &mode) != 0;
  if (isConsole) {
    std::fputs("session token: ", stderr);
    std::fflush(stderr);
    SetConsoleMode(input, mode & ~DWORD{ENABLE_ECHO_INPUT});
  }
  std::string line;
  std::getline(std::cin, line);
  if (isConsole) {
    SetConsoleMode(input, mode);
    std::fputs("\n", stderr);
  }
  if (line.ends_with('\r')) line.pop_back();
  return line;
}

int SetToken(const Options& options) {
  if (!refhost::HasHighRights()) return Complain(options, "it takes an administrator's rights");
  const std::string token = options.removes ? "" : AskForToken();
  if (!options.removes && token.empty()) return Complain(options, "there is no token to be kept");
  const std::wstring failure = options.removes ? refhost::ForgetToken() : refhost::KeepToken(token);
  if (!failure.empty()) return Complain(options, ZLT::String::UTF16ToUTF8(failure));
  if (options.json) {
    Json::Value root;
    root["command"] = options.command;
    root["isKept"] = !options.removes;
    PrintJsonLine(root);
  }
  return ExitStatus::Success;
}

}  // namespace

int Config(const Options& options) {
  if (options.command == "config show") return Show(options);
  return options.command == "config validate" ? Validate(options) : SetToken(options);
}
