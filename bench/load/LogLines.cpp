#include "bench/load/LogLines.h"

#include <windows.h>

#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "bench/common/Samples.h"
#include "bench/common/Time.h"
#include "host/common/Utility.h"

namespace {

double MicrosecondsALine(int threads, int lines, const std::function<void()>& writeLine) {
  const Stopwatch watch;
  std::vector<std::thread> all;
  all.reserve(static_cast<std::size_t>(threads));
  for (int i = 0; i < threads; ++i) {
    all.emplace_back([&] {
      for (int line = 0; line < lines; ++line) writeLine();
    });
  }
  for (std::thread& thread : all) thread.join();
  return 1000 * watch.Milliseconds() / (threads * lines);
}

void WriteBareLines(int threads, int lines) {
  wchar_t folder[MAX_PATH];
  GetTempPathW(MAX_PATH, folder);
  const HANDLE file =
      CreateFileW((std::wstring(folder) + L"load_bench.log").c_str(), FILE_APPEND_DATA,
                  FILE_SHARE_READ, nullptr, CREATE_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE, nullptr);
  if (file == INVALID_HANDLE_VALUE) throw std::runtime_error("no file to append to");
  const std::string record(150, 'x');
  std::mutex mutex;
  PrintSample("floor", MicrosecondsALine(threads, lines, [&] {
                const std::scoped_lock lock(mutex);
                DWORD written = 0;
                WriteFile(file, record.data(), static_cast<DWORD>(record.size()), &written,
                          nullptr);
              }));
  CloseHandle(file);
}

}  // namespace

void WriteLogLines(int threads, int lines) {
  ZLT::Log log;
  if (!ZLT::utility::InitLog(log, L"load.log", 4)) throw std::runtime_error("no log");
  WriteBareLines(threads, lines);
  PrintSample("agent", MicrosecondsALine(threads, lines, [&] {
                log.d(
                    L"TolmarAgent: OnFileDownloadProgress: total(B)=%d Xfered(B)=%d "
                    L"Files(T)=%d FilesX=%d",
                    2000000, 400000, 3, 1);
              }));
}
