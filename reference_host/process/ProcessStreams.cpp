#include "reference_host/process/ProcessStreams.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>

#include "reference_host/base/ModulePin.h"

namespace refhost {

namespace {

/// How long the output of a program that has ended may be on its way.
constexpr auto LastOutputWait = std::chrono::milliseconds(250);

/// Threads and processes may start programs at the same time.
std::wstring NewFileName(const std::wstring& folder) {
  static std::atomic<unsigned int> number{0};
  return folder + L"\\output." + std::to_wstring(GetCurrentProcessId()) + L"-" +
         std::to_wstring(++number) + L".tmp";
}

}  // namespace

struct OutputPipe::State {
  Handle readEnd;
  std::mutex mutex;
  std::condition_variable ended;
  ProcessOutput output;
  bool atEnd = false;

  void ReadToEnd() {
    char buffer[4096];
    DWORD count = 0;
    while (ReadFile(readEnd.Get(), buffer, sizeof buffer, &count, nullptr)) {
      const std::lock_guard lock(mutex);
      output.Append(buffer, count);
    }
    const std::lock_guard lock(mutex);
    atEnd = true;
    ended.notify_all();
  }
};

OutputPipe::OutputPipe() : _state(std::make_shared<State>()) {
  HANDLE readEnd = nullptr, writeEnd = nullptr;
  if (!CreatePipe(&readEnd, &writeEnd, nullptr, 0)) return;
  _state->readEnd = Handle(readEnd);
  _writeEnd = Handle(writeEnd);
  SetHandleInformation(writeEnd, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
}

void OutputPipe::Read() {
  if (!_writeEnd) return;
  _writeEnd = Handle();
  PinModule();
  try {
    std::thread([state = _state] { state->ReadToEnd(); }).detach();
  } catch (const std::system_error&) {
    _state->readEnd = Handle();  // The program's writes fail then, which is better than a wait.
  }
}

ProcessOutput OutputPipe::Collect() const {
  std::unique_lock lock(_state->mutex);
  _state->ended.wait_for(lock, LastOutputWait, [this] { return _state->atEnd; });
  return _state->output;
}

OutputFile::OutputFile(const std::wstring& folder) {
  const std::wstring name = NewFileName(folder);
  constexpr DWORD Sharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  _file = Handle(CreateFileW(name.c_str(), GENERIC_READ | DELETE, Sharing, nullptr, CREATE_NEW,
                             FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
  if (!_file) return;
  SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  _writeEnd = Handle(CreateFileW(name.c_str(), FILE_APPEND_DATA | SYNCHRONIZE, Sharing,
                                 &inheritable, OPEN_EXISTING, 0, nullptr));
}

ProcessOutput OutputFile::Collect() const {
  ProcessOutput output;
  LARGE_INTEGER size{};
  if (!_file || !GetFileSizeEx(_file.Get(), &size)) return output;
  output.total = static_cast<std::uint64_t>(size.QuadPart);
  LARGE_INTEGER start{};
  start.QuadPart = std::max<LONGLONG>(0, size.QuadPart - LONGLONG{KeptOutputBytes});
  SetFilePointerEx(_file.Get(), start, nullptr, FILE_BEGIN);
  output.kept.resize(KeptOutputBytes);
  DWORD count = 0;
  ReadFile(_file.Get(), output.kept.data(), KeptOutputBytes, &count, nullptr);
  output.kept.resize(count);
  return output;
}

}  // namespace refhost
