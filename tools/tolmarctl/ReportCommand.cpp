#include "tools/tolmarctl/ReportCommand.h"

#include <windows.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "host/common/Text.h"
#include "reference_host/configuration/Folders.h"
#include "reference_host/log/Event.h"
#include "tools/tolmarctl/ExitStatus.h"
#include "tools/tolmarctl/Output.h"
#include "tools/tolmarctl/Report.h"

std::string ReadWholeFile(const std::wstring& path) {
  std::ifstream file(std::filesystem::path(path), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

bool WriteNewFile(const std::string& path, const std::string& bytes) {
  const std::wstring name = ZLT::String::UTF8ToUTF16(path);
  const HANDLE file = CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
  DWORD written = 0;
  const bool done =
      file != INVALID_HANDLE_VALUE &&
      WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
  const DWORD error = GetLastError();
  if (file != INVALID_HANDLE_VALUE) CloseHandle(file);
  if (done) return true;
  if (error == ERROR_FILE_EXISTS) {
    std::fprintf(stderr, "tolmarctl: %s is there already and is left as it is\n", path.c_str());
  } else {
    std::fprintf(stderr, "tolmarctl: %s cannot be written, error %lu\n", path.c_str(), error);
  }
  return false;
}

std::vector<timeline::Run> ReadRuns() {
  const std::wstring path =
      refhost::LogFolder() + L"\\" + ZLT::String::UTF8ToUTF16(refhost::EventFileName);
  return timeline::Read(ReadWholeFile(path + L".1") + ReadWholeFile(path));
}

int Report(const Options& options) {
  const std::vector<timeline::Run> runs = ReadRuns();
  if (!options.file.empty() && !WriteNewFile(options.file, timeline::AsPage(runs))) {
    return ExitStatus::Usage;
  }
  if (options.json) {
    Json::Value root;
    root["command"] = options.command;
    root["runs"] = timeline::AsJson(runs);
    PrintJsonLine(root);
  } else if (options.file.empty()) {
    PrintLines(timeline::AsText(runs));
  }
  return ExitStatus::Success;
}
