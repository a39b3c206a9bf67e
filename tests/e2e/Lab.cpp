#include "tests/e2e/Lab.h"

#include <gtest/gtest.h>
#include <httplib.h>
#include <json/reader.h>
#include <json/writer.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <thread>

namespace fs = std::filesystem;

namespace {

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  if (value == nullptr) throw std::runtime_error(std::string(name) + " is not set: use ./dev test");
  return value;
}

std::string ReadFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void WriteFile(const fs::path& path, const std::string& text) {
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << text;
}

Json::Value ParseText(const std::string& text) {
  Json::Value root;
  const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
  return reader->parse(text.data(), text.data() + text.size(), &root, nullptr) ? root
                                                                               : Json::Value();
}

std::string LastLine(const std::string& text) {
  const std::size_t end = text.find_last_not_of("\r\n") + 1;
  return text.substr(0, end).substr(text.substr(0, end).rfind('\n') + 1);
}

/// Runs a command of the shell. @return its exit status.
int Shell(const std::string& command, std::string& output) {
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) throw std::runtime_error("popen failed");
  char buffer[4096];
  for (std::size_t n = 0; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
    output.append(buffer, n);
  const int status = pclose(pipe);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// Begins a command of the shell. @return its process.
pid_t Begin(const std::string& command) {
  const std::string words = "exec " + command;
  const pid_t child = fork();
  if (child == 0) {
    execl("/bin/sh", "sh", "-c", words.c_str(), nullptr);
    _exit(127);
  }
  return child;
}

/// @return true once it is so, false when it does not come in half a minute.
bool Reaches(const std::function<bool()>& isSo) {
  for (int tries = 0; tries < 3000; ++tries) {
    if (isSo()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return false;
}

/// Adds a line to the file that an environment variable names; without it, nothing.
void Append(const char* variable, const Json::Value& value) {
  const char* file = std::getenv(variable);
  if (file == nullptr || *file == '\0') return;
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  std::ofstream(file, std::ios::app) << Json::writeString(builder, value) << "\n";
}

Json::Value CatalogueOf(const std::vector<Title>& titles) {
  Json::Value catalogue;
  catalogue["sessionToken"] = "session-of-the-lab";
  catalogue["titles"] = Json::arrayValue;
  for (const Title& title : titles) {
    Json::Value entry;
    entry["l1FruPn"] = "T-" + title.name;
    entry["name"] = title.name;
    if (title.preinstall) entry["preinstallSw"] = true;
    const std::vector<std::string> own{title.name};
    for (const std::string& module : title.modules.empty() ? own : title.modules) {
      Json::Value& added = entry["modules"].append(Json::objectValue);
      added["moduleFruPn"] = "M-" + module;
      added["files"].append(module + ".cab");
      added["files"].append("check-" + module + ".ps1");
    }
    catalogue["titles"].append(entry);
  }
  return catalogue;
}

}  // namespace

Lab::Lab(const std::vector<Title>& titles, const std::vector<std::string>& options)
    : _fixtures(Environment("E2E_FOLDER")),
      _driveC(fs::path(Environment("WINEPREFIX")) / "drive_c"),
      _folder(_fixtures / "run") {
  fs::remove_all(_folder);
  fs::remove_all(_driveC / "lab");
  fs::create_directories(_folder);
  fs::create_directories(_driveC / "lab");
  ClearMachine();
  StartCloud(CatalogueOf(titles), options);
  const std::string base = "https://localhost:" + std::to_string(_port);
  _configuration["baseUrl"] = base;
  _configuration["realm"] = "lab";
  _configuration["deviceId"] = "PC-0001";
  _configuration["sessionToken"] = "session-of-the-lab";
  _configuration["tokenUrl"] = base + "/token";
  _configuration["downloadFolder"] = "C:\\lab\\download";
  _configuration["logFolder"] = "C:\\lab\\log";
  _configuration["retryWaitScale"] = 0.001;
  _configuration["downloadStallSeconds"] = 20;
  _configuration["fileInUseSeconds"] = 1;
}

Lab::~Lab() {
  if (_hasPolicy) ClearMachine();
  if (_cloud <= 0) return;
  KeepExchanges();
  kill(_cloud, SIGTERM);
  waitpid(_cloud, nullptr, 0);
}

/// What an earlier test may have left on the machine itself.
void Lab::ClearMachine() const {
  for (const char* name : {"session.token", "service.json"}) {
    fs::remove(_driveC / "ProgramData" / "Tolmar" / name);
  }
  Wine("reg delete 'HKLM\\Software\\Policies\\Tolmar' /f");
}

void Lab::StartCloud(const Json::Value& catalogue, const std::vector<std::string>& options) {
  const fs::path portFile = _folder / "port";
  WriteFile(_fixtures / "catalogue.json",
            Json::writeString(Json::StreamWriterBuilder(), catalogue));
  const std::string pki = (_fixtures.parent_path() / "lab" / "pki").string();
  std::vector<std::string> words{CLOUDSIM_PROGRAM,
                                 "--catalogue",
                                 (_fixtures / "catalogue.json").string(),
                                 "--port",
                                 "0",
                                 "--port-file",
                                 portFile.string(),
                                 "--tls-cert",
                                 pki + "/tls.crt",
                                 "--tls-key",
                                 pki + "/tls.key"};
  words.insert(words.end(), options.begin(), options.end());
  std::fflush(stdout);  // else the child prints it a second time
  _cloud = fork();
  if (_cloud == 0) {
    std::vector<char*> argv;
    for (const std::string& word : words) argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);
    std::freopen((_folder / "cloudsim.log").c_str(), "w", stdout);
    execv(argv[0], argv.data());
    _exit(127);
  }
  for (int tries = 0; tries < 500 && _port == 0; ++tries) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    std::ifstream(portFile) >> _port;
  }
  if (_port == 0) throw std::runtime_error("the simulator did not start");
}

Json::Value Lab::Ask(const std::string& path) {
  httplib::SSLClient client("localhost", _port);
  client.enable_server_certificate_verification(false);
  const auto reply = client.Get(path.c_str());
  return reply ? ParseText(reply->body) : Json::Value();
}

void Lab::Fault(const std::string& json) {
  _faults.append(ParseText(json));
  httplib::SSLClient client("localhost", _port);
  client.enable_server_certificate_verification(false);
  const auto reply = client.Put("/faults", Json::writeString(Json::StreamWriterBuilder(), _faults),
                                "application/json");
  if (!reply || reply->status != 200) throw std::runtime_error("the fault was not taken");
}

void Lab::WriteConfiguration() const {
  // Where nobody else may write, wherever the checkout lies: the host reads no other.
  WriteFile(_driveC / "lab" / "host.json",
            Json::writeString(Json::StreamWriterBuilder(), _configuration));
}

std::string Lab::Command(const std::string& arguments, const std::string& program) const {
  return "wine '" + Environment("E2E_BIN") + "/" + program +
         ".exe' --config 'C:\\lab\\host.json' " + arguments + " 2>'" +
         (_folder / "stderr").string() + "'";
}

RunResult Lab::Run(const std::string& arguments, int seconds) {
  RunResult result = RunForPeople("--json " + arguments, seconds);
  result.json = ParseText(LastLine(result.output));
  Keep(arguments, result);
  return result;
}

void Lab::Keep(const std::string& arguments, const RunResult& result) const {
  Json::Value run;
  run["arguments"] = arguments;
  run["exitStatus"] = result.exitStatus;
  run["output"] = result.output;
  run["errors"] = result.errors;
  run["configuration"] = _configuration;
  Append("E2E_RUNS", run);
}

void Lab::KeepExchanges() {
  for (const Json::Value& exchange : Ask("/received")) Append("E2E_EXCHANGES", exchange);
}

RunResult Lab::RunWithInput(const std::string& line, const std::string& arguments) {
  WriteConfiguration();
  RunResult result;
  result.exitStatus =
      Shell("echo '" + line + "' | timeout 60 " + Command("--json " + arguments), result.output);
  result.errors = ReadFile(_folder / "stderr");
  result.json = ParseText(LastLine(result.output));
  Keep(arguments, result);
  return result;
}

std::string Lab::Wine(const std::string& command) const {
  std::string output;
  if (Shell("timeout 60 wine " + command + " 2>&1 </dev/null", output) == 124) output += "no end";
  return output;
}

void Lab::Policy(const std::string& key, const std::string& type, const std::string& data) {
  _hasPolicy = true;
  Wine("reg add 'HKLM\\Software\\Policies\\Tolmar' /v " + key + " /t " + type + " /d '" + data +
       "' /f");
}

RunResult Lab::RunForPeople(const std::string& arguments, int seconds) {
  WriteConfiguration();
  RunResult result;
  result.exitStatus =
      Shell("timeout " + std::to_string(seconds) + " " + Command(arguments) + " </dev/null",
            result.output);
  result.errors = ReadFile(_folder / "stderr");
  return result;
}

void Lab::Reboot() const {
  // What starts the system's services must not give them this program's output.
  std::string output;
  Shell(
      "(wineserver -k; wineserver -w; wineserver -p; timeout 120 wine wineboot) "
      ">/dev/null 2>&1 </dev/null",
      output);
}

std::string Lab::RunOnTerminal(const std::string& environment, const std::string& arguments) {
  WriteConfiguration();
  std::string output;
  Shell("timeout 60 env " + environment + " script -qec \"" + Command(arguments) + "\" /dev/null",
        output);
  return output;
}

bool Lab::RunAndKill(const std::string& arguments, const std::function<bool()>& reached) {
  WriteConfiguration();
  const pid_t child = Begin(Command("--json " + arguments) + " >/dev/null </dev/null");
  const bool isReached = Reaches(reached);
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  return isReached;
}

RunResult Lab::RunToCtrlC(const std::string& program, const std::string& arguments,
                          const std::function<bool()>& reached) {
  WriteConfiguration();
  const fs::path output = _folder / "stdout";
  const pid_t child = Begin(Command(arguments, program) + " >'" + output.string() + "' </dev/null");
  Reaches(reached);
  kill(child, SIGINT);
  int status = 0;
  const bool ends = Reaches([&] { return waitpid(child, &status, WNOHANG) == child; });
  if (!ends) {
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
  }
  RunResult result;
  result.exitStatus = ends && WIFEXITED(status) ? WEXITSTATUS(status) : 124;
  result.output = ReadFile(output);
  result.errors = ReadFile(_folder / "stderr");
  return result;
}

std::vector<std::string> Lab::ReceivedTypes() {
  std::vector<std::string> types;
  for (const Json::Value& record : Ask("/received")) {
    const std::string type = record["type"].asString();
    const std::string path = record["path"].asString();
    if (record["method"].asString() == "HEAD" || type == "token") continue;
    types.push_back(path.starts_with("/files/") ? "file " + fs::path(path).filename().string()
                                                : type);
  }
  return types;
}

std::vector<Json::Value> Lab::Received(const std::string& type) {
  std::vector<Json::Value> found;
  for (const Json::Value& record : Ask("/received")) {
    if (record["type"].asString() == type) found.push_back(record);
  }
  return found;
}

std::string Lab::LogText(const std::string& name) const {
  return ReadFile(_driveC / "lab" / "log" / name);
}

bool Lab::IsInstalled(const std::string& title) const {
  return fs::exists(_driveC / "lab" / "e2e" / title / "payload.bin");
}

std::string Lab::EntitledValue() const {
  std::string output;
  Shell(
      "timeout 30 wine reg query 'HKLM\\Software\\Corvan\\ZLT\\Entitlement' /v Entitled "
      "2>/dev/null </dev/null",
      output);
  const std::size_t at = output.find("0x");
  return at == std::string::npos ? "" : output.substr(at, 3);
}

const Json::Value& TitleOf(const RunResult& run, const std::string& title) {
  for (const Json::Value& entry : run.json["result"]["swList"]) {
    if (entry["l1FruPn"].asString() == "T-" + title) return entry;
  }
  return Json::Value::nullSingleton();
}

std::string StatusOf(const RunResult& run, const std::string& title) {
  return TitleOf(run, title)["status"].asString();
}

std::string CauseOf(const RunResult& run, const std::string& title) {
  return TitleOf(run, title)["cause"].asString();
}
