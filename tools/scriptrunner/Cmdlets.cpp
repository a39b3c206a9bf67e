#include <chrono>
#include <filesystem>

#include "tools/scriptrunner/Cmdlet.h"
#include "tools/scriptrunner/Errors.h"
#include "tools/scriptrunner/FileCmdlets.h"
#include "tools/scriptrunner/System.h"

namespace scriptrunner {

namespace {

constexpr CmdletParameter Path{"Path", 0};
constexpr CmdletParameter LiteralPath{"LiteralPath"};
constexpr CmdletParameter Force{"Force", CmdletParameter::Named, true};
constexpr CmdletParameter Recurse{"Recurse", CmdletParameter::Named, true};
constexpr CmdletParameter NoNewline{"NoNewline", CmdletParameter::Named, true};
constexpr CmdletParameter ErrorAction{"ErrorAction"};

Value JoinPath(const Arguments& arguments, System&) {
  std::string path = arguments.Text("Path");
  std::string child = ToText(arguments.Get("ChildPath"));
  while (path.ends_with('\\')) path.pop_back();
  while (child.starts_with('\\')) child.erase(0, 1);
  return path + "\\" + child;
}

Value StartSleep(const Arguments& arguments, System& system) {
  long long milliseconds = 0;
  for (const auto& [name, unit] : {std::pair{"Seconds", 1000}, std::pair{"Milliseconds", 1}}) {
    if (!arguments.Has(name)) continue;
    const std::optional<long long> count = ToInteger(arguments.Get(name));
    if (!count || *count < 0) {
      throw CommandFailure(std::string("-") + name + " is no whole number from 0 on");
    }
    milliseconds += *count * unit;
  }
  system.Sleep(std::chrono::milliseconds(milliseconds));
  return {};
}

Value WriteOutput(const Arguments& arguments, System&) { return arguments.Get("InputObject"); }

Value WriteError(const Arguments& arguments, System&) {
  throw CommandFailure(ToText(arguments.Get("Message")));
}

const std::vector<Cmdlet> Table{
    {"Add-Content", {Path, LiteralPath, {"Value", 1}, NoNewline, Force, ErrorAction}, AddContent},
    {"Copy-Item", {Path, LiteralPath, {"Destination", 1}, Recurse, Force, ErrorAction}, CopyItem},
    {"Get-Content",
     {Path, LiteralPath, {"Raw", CmdletParameter::Named, true}, ErrorAction},
     GetContent},
    {"Join-Path", {Path, {"ChildPath", 1}, ErrorAction}, JoinPath},
    {"New-Item", {Path, {"ItemType"}, Force, ErrorAction}, NewItem},
    {"Remove-Item", {Path, LiteralPath, Recurse, Force, ErrorAction}, RemoveItem},
    {"Set-Content", {Path, LiteralPath, {"Value", 1}, NoNewline, Force, ErrorAction}, SetContent},
    {"Start-Sleep", {{"Seconds", 0}, {"Milliseconds"}, ErrorAction}, StartSleep},
    {"Test-Path", {Path, LiteralPath, {"PathType"}, ErrorAction}, TestPath},
    {"Write-Error", {{"Message", 0}, ErrorAction}, WriteError},
    {"Write-Output", {{"InputObject", 0}, ErrorAction}, WriteOutput}};

}  // namespace

Value Arguments::Get(const std::string& name) const {
  const auto found = _values.find(name);
  return found == _values.end() ? Value() : found->second;
}

std::string Arguments::Text(const std::string& name) const {
  std::string text = ToText(Get(name));
  if (text.empty()) throw CommandFailure("-" + name + " is missing or empty");
  return text;
}

const Cmdlet* FindCmdlet(std::string_view name) {
  for (const Cmdlet& cmdlet : Table) {
    if (Lower(cmdlet.name) == Lower(name)) return &cmdlet;
  }
  return nullptr;
}

}  // namespace scriptrunner
