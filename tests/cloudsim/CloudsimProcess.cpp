#include "tests/cloudsim/CloudsimProcess.h"

#include <json/reader.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <iostream>
#include <memory>
#include <stdexcept>

namespace {

/// Text without a period that a wrong offset could hide behind.
std::string Noise(std::size_t size) {
  std::string text(size, '\0');
  std::uint32_t state = 1;
  for (char& c : text) {
    state = state * 1664525u + 1013904223u;
    c = static_cast<char>(state >> 24);
  }
  return text;
}

std::string ReadLine(int descriptor) {
  std::string line;
  for (char c = 0; read(descriptor, &c, 1) == 1 && c != '\n';) line += c;
  return line;
}

}  // namespace

TempFolder::TempFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "cloudsim-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make a folder");
  _path = name;
}

TempFolder::~TempFolder() { std::filesystem::remove_all(_path); }

std::string TempFolder::Write(const std::string& name, const std::string& text) const {
  std::filesystem::create_directories((_path / name).parent_path());
  std::ofstream(_path / name, std::ios::binary) << text;
  return Path(name);
}

CloudsimProcess::CloudsimProcess(const std::vector<std::string>& arguments) {
  int ends[2];
  if (pipe(ends) != 0) throw std::runtime_error("cannot make a pipe");
  std::vector<std::string> texts{CLOUDSIM_PROGRAM};
  texts.insert(texts.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  argv.reserve(texts.size() + 1);
  for (std::string& text : texts) argv.push_back(text.data());
  argv.push_back(nullptr);
  _process = fork();
  if (_process == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);  // Does not outlive a test program that crashes.
    dup2(ends[1], STDOUT_FILENO);
    dup2(ends[1], STDERR_FILENO);
    close(ends[0]);
    execv(argv[0], argv.data());
    _exit(127);
  }
  close(ends[1]);
  _output = ends[0];
  if (_process < 0) throw std::runtime_error("cannot start cloudsim");
  _firstLine = ReadLine(_output);
}

CloudsimProcess::~CloudsimProcess() {
  if (_process > 0) {
    EXPECT_EQ(End(SIGTERM), 0) << "cloudsim ended badly";  // Also after a sanitizer's report.
  }
  close(_output);
}

int CloudsimProcess::Port() const {
  return std::stoi(_firstLine.substr(_firstLine.rfind(':') + 1));
}

int CloudsimProcess::End(int signal) {
  if (signal != 0) kill(_process, signal);
  char rest[4096];  // A sanitizer's report, say.
  for (ssize_t count = 0; (count = read(_output, rest, sizeof rest)) > 0;) {
    std::cerr.write(rest, count);
  }
  int status = 0;
  waitpid(_process, &status, 0);
  _process = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

Json::Value Parsed(const std::string& text) {
  Json::Value value;
  const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
  EXPECT_TRUE(reader->parse(text.data(), text.data() + text.size(), &value, nullptr)) << text;
  return value;
}

void CloudsimTest::Start(const std::string& faults, const std::vector<std::string>& options,
                         const std::string& devices) {
  _cab = Noise(300'000);
  _folder.Write("archiver/archiver.cab", _cab);
  _folder.Write("archiver/check.ps1", "exit 0\n");
  std::vector<std::string> arguments{
      "--catalogue",
      _folder.Write("catalogue.json", R"({"sessionToken":"s3cret-session","devices":)" + devices +
                                          R"(,"titles":[{"l1FruPn":"T-1","name":"Archiver",
          "preinstallSw":true,"modules":[{"moduleFruPn":"M-1",
          "files":["archiver/archiver.cab","archiver/check.ps1"]}]},
          {"l1FruPn":"T-2","name":"Empty","modules":[]}],"faults":)" +
                                          faults + "}")};
  arguments.insert(arguments.end(), options.begin(), options.end());
  _client.reset();
  _cloud = std::make_unique<CloudsimProcess>(arguments);
  ASSERT_TRUE(_cloud->FirstLine().starts_with("cloudsim: listening on http://localhost:"))
      << _cloud->FirstLine();
  _client = NewClient();
}

std::unique_ptr<httplib::Client> CloudsimTest::NewClient() const {
  auto client = std::make_unique<httplib::Client>("127.0.0.1", _cloud->Port());
  client->set_keep_alive(true);
  client->set_tcp_nodelay(true);
  return client;
}

std::string CloudsimTest::Jwt() {
  const auto reply =
      _client->Post("/token", R"({"sessionToken":"s3cret-session"})", "application/json");
  return reply && reply->status == 200 ? Parsed(reply->body)["jwt"].asString() : "";
}

httplib::Result CloudsimTest::Ask(const std::string& type, const std::string& members) {
  const std::string body =
      R"({"type":")" + type + R"(","parameters": { "deviceId":"D")" + members + "}}";
  return AskRaw(type, body, Jwt());
}

httplib::Result CloudsimTest::AskRaw(const std::string& type, const std::string& body,
                                     const std::string& token) {
  return _client->Post("/mp/zlt/v2/" + type + "?deviceId=D", {{"token", token}}, body,
                       "application/json");
}

std::string CloudsimTest::UrlOf(const std::string& name) {
  const auto reply = Ask("downloadRequest", R"(,"l1FruPn":"T-1","moduleFruPn":"M-1")");
  if (!reply) return "";
  const std::string base = "http://localhost:" + std::to_string(_cloud->Port());
  const Json::Value body = Parsed(reply->body);
  for (const Json::Value& file : body["result"]["fileList"]) {
    const std::string url = file["downloadUrl"].asString();
    if (file["name"] == name && url.starts_with(base)) return url.substr(base.size());
  }
  return "";
}

Json::Value CloudsimTest::Received() { return Parsed(NewClient()->Get("/received")->body); }

void CloudsimTest::PutFaults(const std::string& faults) {
  const auto reply = _client->Put("/faults", faults, "application/json");
  ASSERT_TRUE(reply && reply->status == 200) << faults;
}
