#include "tests/powershell/Answer.h"

#include <windows.h>

#include <algorithm>
#include <atomic>

#include "host/common/Text.h"
#include "install/ScriptCommand.h"
#include "reference_host/process/ProcessOutput.h"
#include "reference_host/process/ProcessStart.h"
#include "tests/host/windows/TestMachine.h"
#include "tests/scriptrunner/ScriptFolder.h"

namespace {

std::wstring OwnFolder() {
  wchar_t program[MAX_PATH];
  const std::wstring path(program, GetModuleFileNameW(nullptr, program, MAX_PATH));
  return path.substr(0, path.rfind(L'\\'));
}

void Replace(std::wstring& text, const std::wstring& part, const std::wstring& by) {
  text.replace(text.find(part), part.size(), by);
}

std::wstring LineOf(const Question& question, const std::wstring& script, Program program) {
  std::wstring line = ScriptCommand::Check(script);
  Replace(line, L"bypass", question.policy);
  if (program == Program::ScriptRunner) {
    line.replace(0, line.find(L' '), L"\"" + OwnFolder() + L"\\scriptrunner.exe\"");
  }
  for (const std::string& argument : question.arguments) {
    line += L" \"" + ZLT::String::UTF8ToUTF16(argument) + L"\"";
  }
  return line;
}

refhost::Handle NewFile(const std::wstring& path) {
  SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  return refhost::Handle(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inheritable,
                                     CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
}

std::string TextOf(const std::string& bytes) {
  refhost::ProcessOutput output;
  output.Append(bytes.data(), bytes.size());
  std::string text = ZLT::String::UTF16ToUTF8(refhost::EndOf(output, bytes.size()));
  std::erase(text, '\r');
  return text;
}

}  // namespace

Answer Ask(const Question& question, Program program) {
  static std::atomic<int> count{0};
  const std::wstring path = TestMachine::Folder() + L"\\script-" + std::to_wstring(++count);
  ScriptFolder folder(path);
  for (const auto& [name, bytes] : question.files) folder.Put(name, bytes);
  if (question.isThere) folder.Put("test.ps1", question.text);
  const std::wstring outputPath = path + L".output";
  Answer answer;
  {
    const refhost::Handle output = NewFile(outputPath);
    const refhost::Handle process = refhost::StartProcess(
        {LineOf(question, folder.Script(), program), path, true, nullptr, nullptr, output.Get()});
    WaitForSingleObject(process.Get(), INFINITE);
    GetExitCodeProcess(process.Get(), &answer.code);
  }
  answer.output = TextOf(TestMachine::ReadFile(outputPath));
  answer.files = folder.Found();
  return answer;
}
