#include "tools/tolmarctl/LogFollower.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "reference_host/configuration/Folders.h"
#include "tools/tolmarctl/LogFilter.h"

namespace {

constexpr DWORD PollMs = 200;

/// A log file, open for a moment: one that stays open would be in a rotation's way.
class OpenLog {
 public:
  explicit OpenLog(const std::wstring& path)
      : _file(CreateFileW(path.c_str(), GENERIC_READ,
                          FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                          OPEN_EXISTING, 0, nullptr)) {
    BY_HANDLE_FILE_INFORMATION about{};
    if (_file == INVALID_HANDLE_VALUE || !GetFileInformationByHandle(_file, &about)) return;
    _id = std::uint64_t{about.nFileIndexHigh} << 32 | about.nFileIndexLow;
    _size = std::uint64_t{about.nFileSizeHigh} << 32 | about.nFileSizeLow;
  }
  ~OpenLog() {
    if (_file != INVALID_HANDLE_VALUE) CloseHandle(_file);
  }
  OpenLog(const OpenLog&) = delete;
  OpenLog& operator=(const OpenLog&) = delete;

  std::uint64_t Id() const { return _id; }  ///< 0: there is no such file
  std::uint64_t Size() const { return _size; }

  /// @return what stands behind the position, which moves to the end.
  std::string ReadFrom(std::uint64_t& position) const {
    LARGE_INTEGER at;
    at.QuadPart = static_cast<LONGLONG>(position);
    std::string text;
    if (!SetFilePointerEx(_file, at, nullptr, FILE_BEGIN)) return text;
    char buffer[4096];
    for (DWORD count = 0; ReadFile(_file, buffer, sizeof buffer, &count, nullptr) && count > 0;) {
      text.append(buffer, count);
    }
    position += text.size();
    return text;
  }

 private:
  HANDLE _file;
  std::uint64_t _id = 0;
  std::uint64_t _size = 0;
};

/// One log, from where it ends now.
class LogTail {
 public:
  explicit LogTail(std::wstring path) : _path(std::move(path)), _filter(GetCurrentProcessId()) {
    const OpenLog log(_path);
    _id = log.Id();
    _position = log.Size();
  }

  /// Adds what the process has written since.
  void Take(std::vector<std::string>& records) {
    const OpenLog log(_path);
    if (log.Id() != _id) {
      if (const OpenLog rotated(_path + L".1"); _id != 0 && rotated.Id() == _id) {
        Take(rotated, records);
      }
      _id = log.Id();
      _position = 0;
    }
    if (_id != 0) Take(log, records);
  }

 private:
  void Take(const OpenLog& log, std::vector<std::string>& records) {
    for (std::string& record : _filter.Take(log.ReadFrom(_position))) {
      records.push_back(std::move(record));
    }
  }

  std::wstring _path;
  LogFilter _filter;
  std::uint64_t _id;
  std::uint64_t _position;
};

/// Both logs, in the order of their records' times.
void Copy(LogTail& agent, LogTail& host) {
  std::vector<std::string> records;
  agent.Take(records);
  host.Take(records);
  std::ranges::stable_sort(
      records, {}, [](const std::string& record) { return record.substr(0, record.find(' ')); });
  for (const std::string& record : records) std::fputs(record.c_str(), stderr);
  std::fflush(stderr);
}

}  // namespace

LogFollower::LogFollower() : _done(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
  const std::wstring folder = refhost::LogFolder() + L"\\";
  _thread = std::thread([this, agent = LogTail(folder + L"TolmarAgent.log"),
                         host = LogTail(folder + L"ZLT.log")]() mutable {
    while (WaitForSingleObject(_done, PollMs) == WAIT_TIMEOUT) Copy(agent, host);
    Copy(agent, host);
  });
}

LogFollower::~LogFollower() {
  SetEvent(_done);
  _thread.join();
  CloseHandle(_done);
}
