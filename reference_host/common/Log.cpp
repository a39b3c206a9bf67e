#include "host/common/Log.h"

#include <windows.h>

#include <atomic>
#include <chrono>
#include <cstdarg>
#include <mutex>
#include <new>
#include <utility>

#include "host/common/FileSystem.h"
#include "host/common/Utility.h"
#include "reference_host/common/Configuration.h"
#include "reference_host/common/FolderCreation.h"
#include "reference_host/common/Folders.h"
#include "reference_host/common/LogFile.h"
#include "reference_host/common/LogRecord.h"
#include "reference_host/common/Redaction.h"
#include "reference_host/common/SlimLock.h"
#include "reference_host/common/WideFormat.h"

namespace {

constexpr int ErrorLevel = 1;
constexpr int DebugLevel = 4;

refhost::LogRecordHead HeadOfNow(char level) {
  using namespace std::chrono;
  const auto now = duration_cast<milliseconds>(system_clock::now().time_since_epoch());
  return {now.count(), GetCurrentProcessId(), GetCurrentThreadId(), level};
}

/// The suite's own log has no owner who would open it.
void OpenIfSuiteLog(const ZLT::Log& log) {
  static std::once_flag opened;
  if (&log != &ZLT::g_log) return;
  std::call_once(opened, [] { ZLT::utility::InitLog(ZLT::g_log, L"ZLT.log", DebugLevel); });
}

}  // namespace

namespace ZLT {

/// Threads that log at the same time share the way to the file, whose lock costs more than a
/// record's writing: one of them writes what all have queued, the others wait for that.
struct Log::State {
  refhost::SlimLock mutex;
  CONDITION_VARIABLE writerChanged = CONDITION_VARIABLE_INIT;
  refhost::LogFile file;
  std::atomic<int> level = 0;
  std::string queue;
  std::uint64_t queued = 0, written = 0;  ///< records so far
  bool isWriting = false;                 ///< a thread is at the file, without the lock

  /// `mark`: what the record shows, `at`: from which level of the log on it is written.
  void Write(char mark, int at, const wchar_t* format, va_list arguments) {
    if (level < at) return;
    const std::wstring message = refhost::WithoutSecrets(refhost::FormatWide(format, arguments));
    std::unique_lock lock(mutex);
    queue += refhost::ComposeLogRecord(HeadOfNow(mark), message);
    const std::uint64_t own = ++queued;
    while (written < own) {
      if (isWriting) {
        mutex.Wait(writerChanged);
      } else {
        WriteQueue(lock);
      }
    }
  }

  void WriteQueue(std::unique_lock<refhost::SlimLock>& lock) {
    const std::string records = std::exchange(queue, {});
    const std::uint64_t last = queued;
    isWriting = true;
    lock.unlock();
    try {
      file.Append(records);
    } catch (const std::bad_alloc&) {
      // What cannot be written is lost.
    }
    lock.lock();
    isWriting = false;
    written = last;
    WakeAllConditionVariable(&writerChanged);
  }

  bool Open(const std::wstring& path, int newLevel) {
    const std::scoped_lock lock(mutex);
    while (isWriting) mutex.Wait(writerChanged);
    if (!file.Open(path, refhost::Settings().logMaxBytes)) return false;
    level = newLevel;
    return true;
  }
};

Log g_log;

Log::Log() : m_pState(new State) {}

Log::~Log() { delete m_pState; }

void Log::d(const wchar_t* format, ...) {
  OpenIfSuiteLog(*this);
  va_list arguments;
  va_start(arguments, format);
  m_pState->Write('D', DebugLevel, format, arguments);
  va_end(arguments);
}

void Log::e(const wchar_t* format, ...) {
  OpenIfSuiteLog(*this);
  va_list arguments;
  va_start(arguments, format);
  m_pState->Write('E', ErrorLevel, format, arguments);
  va_end(arguments);
}

bool Log::Open(const wchar_t* fileName, int level) {
  const std::wstring folder = refhost::LogFolder();
  const std::wstring name = fileName;
  if (name.empty() || name != FileSystem::getFileName(name)) return false;
  // Not through the log's own host, which would log what is wrong with it.
  if (!refhost::CreateFolder(folder, true).empty()) return false;
  return m_pState->Open(folder + L"\\" + name, level);
}

}  // namespace ZLT
