#include "tests/host/windows/TestMachine.h"

#include <json/writer.h>
#include <windows.h>
// Behind windows.h, whose types they need.
#include <aclapi.h>
#include <sddl.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

#include "host/common/FileSystem.h"
#include "host/common/Text.h"
#include "host/common/Utility.h"

namespace TestMachine {

namespace {

std::unique_ptr<LoopbackServer> cloud;
std::wstring folder;

/// Not in the folder for temporary files, which an elevated host does not trust: its user's other
/// programs write there.
std::wstring MakeFolder() {
  std::wstring path = L"C:\\ProgramData\\tolmar-test-" + std::to_wstring(GetCurrentProcessId());
  FileSystem::deleteDirectoryOrFile(path, true);
  // Missing parents get the suite's own rules.
  FileSystem::createDirectory(path + L"\\logs", true);
  return path;
}

std::wstring ConfigurationPath() { return folder + L"\\host.json"; }

Json::Value Configuration() {
  const std::string base = ZLT::String::UTF16ToUTF8(cloud->Url(L""));
  Json::Value root;
  root["baseUrl"] = base;
  root["realm"] = "test";
  root["deviceId"] = "PC-T\xC3\xA4st";
  root["sessionToken"] = "session\"\\token";
  root["tokenUrl"] = base + "/token";
  root["logFolder"] = ZLT::String::UTF16ToUTF8(folder + L"\\logs");
  root["downloadFolder"] = ZLT::String::UTF16ToUTF8(folder + L"\\downloads");
  root["processTimeoutSeconds"] = 20;
  root["maxCheckScripts"] = 2;
  root["logMaxBytes"] = 65536;
  root["downloadStallSeconds"] = 3;
  root["leaseWaitSeconds"] = 2;
  root["maxFileBytes"] = 1 << 18;
  root["downloadPatienceSeconds"] = 20;
  root["fileInUseSeconds"] = 1;
  root["retryWaitScale"] = 0.1;
  return root;
}

void WriteConfiguration(const std::wstring& path, const Json::Value& root) {
  WriteFile(path, Json::writeString(Json::StreamWriterBuilder(), root));
}

std::string ReadToEnd(HANDLE pipe) {
  std::string text;
  char buffer[4096];
  DWORD count = 0;
  while (::ReadFile(pipe, buffer, sizeof buffer, &count, nullptr) && count != 0) {
    text.append(buffer, count);
  }
  return text;
}

bool Start(std::wstring commandLine, HANDLE output, PROCESS_INFORMATION& process) {
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdOutput = startup.hStdError = output;
  return CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                        &startup, &process) != 0;
}

}  // namespace

void SetUp() {
  cloud = std::make_unique<LoopbackServer>();
  folder = MakeFolder();
  std::wstring path(32768, L'\0');
  path.resize(GetEnvironmentVariableW(L"TOLMAR_TEST_CONFIG", path.data(), 32768));
  WriteConfiguration(ConfigurationPath(), Configuration());
  SetEnvironmentVariableW(L"TOLMAR_HOST_CONFIG",
                          path.empty() ? ConfigurationPath().c_str() : path.c_str());
}

void TearDown() {
  cloud.reset();
  FileSystem::deleteDirectoryOrFile(folder, true);
}

const std::wstring& Folder() { return folder; }

LoopbackServer& Cloud() { return *cloud; }

std::wstring ConfigurationWith(const Json::Value& changes) {
  Json::Value root = Configuration();
  for (const std::string& key : changes.getMemberNames()) root[key] = changes[key];
  const std::wstring path = folder + L"\\changed.json";
  WriteConfiguration(path, root);
  return path;
}

unsigned long RunAgain(const std::wstring& arguments, const std::wstring& configuration,
                       std::string& output) {
  // With its folder, this process gives the machine's lease back.
  FileSystem::deleteDirectoryOrFile(ZLT::utility::GetZltKivDownloadPath(), true);
  SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  HANDLE readEnd = nullptr, writeEnd = nullptr;
  CreatePipe(&readEnd, &writeEnd, &inheritable, 0);
  SetHandleInformation(readEnd, HANDLE_FLAG_INHERIT, 0);
  SetEnvironmentVariableW(L"TOLMAR_TEST_CONFIG", configuration.c_str());
  SetEnvironmentVariableW(L"TOLMAR_HOST_CONFIG", configuration.c_str());
  wchar_t program[MAX_PATH];
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  PROCESS_INFORMATION process{};
  const bool started = Start(L"\"" + std::wstring(program) + L"\" " + arguments, writeEnd, process);
  SetEnvironmentVariableW(L"TOLMAR_TEST_CONFIG", nullptr);
  SetEnvironmentVariableW(L"TOLMAR_HOST_CONFIG", ConfigurationPath().c_str());
  CloseHandle(writeEnd);
  output = ReadToEnd(readEnd);
  CloseHandle(readEnd);
  DWORD exitCode = 0xFFFFFFFF;
  if (!started) return exitCode;
  WaitForSingleObject(process.hProcess, INFINITE);
  GetExitCodeProcess(process.hProcess, &exitCode);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return exitCode;
}

std::string ReadFile(const std::wstring& path) {
  std::ifstream file(std::filesystem::path(path), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void WriteFile(const std::wstring& path, const std::string& bytes) {
  std::ofstream(std::filesystem::path(path), std::ios::binary) << bytes;
}

void* Hold(const std::wstring& path) {
  return CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                     FILE_ATTRIBUTE_NORMAL, nullptr);
}

void LetEverybodyWrite(const std::wstring& path, bool allowed) {
  PSECURITY_DESCRIPTOR rules = nullptr;
  ConvertStringSecurityDescriptorToSecurityDescriptorW(
      allowed ? L"D:P(A;OICI;FA;;;WD)" : L"D:P(A;OICI;FA;;;BA)(A;OICI;FA;;;SY)", SDDL_REVISION_1,
      &rules, nullptr);
  SetFileSecurityW(path.c_str(), DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION,
                   rules);
  LocalFree(rules);
}

std::string ReadLog(const std::wstring& name) { return ReadFile(folder + L"\\logs\\" + name); }

std::string LastError() {
  const std::string log = ReadLog(L"ZLT.log");
  const std::size_t at = log.rfind(" E ");
  return at == std::string::npos ? "" : log.substr(at + 3, log.find('\n', at) - at - 3);
}

}  // namespace TestMachine
