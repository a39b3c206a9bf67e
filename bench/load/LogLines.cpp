#include "bench/load/LogLines.h"

#include <windows.h>

#include <chrono>
#include <cstdio>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "host/common/Utility.h"

namespace {

double MicrosecondsALine(int threads, int lines, const std::function<void()>& writeLine) {
  const auto begin = std::chrono::steady_clock::now();
  std::vector<std::thread> all;
  all.reserve(static_cast<std::size_t>(threads));
  for (int i = 0; i < threads; ++i) {
    all.emplace_back([&] {
      for (int line = 0; line < lines; ++line) writeLine();
    });
  }
  for (std::thread& thread : all) thread.join();
  const std::chrono::duration<double, std::micro> elapsed =
      std::chrono::steady_clock::now() - begin;
  return elapsed.count() / (threads * lines);
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
  std::printf("floor %.4f\n", MicrosecondsALine(threads, lines, [&] {
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
  std::printf("agent %.4f\n", MicrosecondsALine(threads, lines, [&] {
                log.d(
                    L"TolmarAgent: OnFileDownloadProgress: total(B)=%d Xfered(B)=%d "
                    L"Files(T)=%d FilesX=%d",
                    2000000, 400000, 3, 1);
              }));
}
