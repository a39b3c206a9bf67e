#include "host/common/Log.h"

#include <windows.h>

#include <atomic>
#include <chrono>
#include <cstdarg>
#include <mutex>
#include <new>
#include <type_traits>
#include <utility>

#include "host/common/FileSystem.h"
#include "host/common/Utility.h"
#include "reference_host/configuration/ConfigurationFile.h"
#include "reference_host/configuration/Folders.h"
#include "reference_host/files/FolderCreation.h"
#include "reference_host/log/LogFile.h"
#include "reference_host/log/LogRecord.h"
#include "reference_host/log/Redaction.h"
#include "reference_host/log/SlimLock.h"
#include "reference_host/log/SuiteLog.h"
#include "reference_host/log/WaiterQueue.h"
#include "reference_host/log/WideFormat.h"

namespace {

constexpr int ErrorLevel = 1;
constexpr int DebugLevel = 4;
/// So often a thread writes what the others have queued meanwhile, which is quicker than waking one
/// of them for it; then it goes on with its own work.
constexpr int MaxBatches = 16;

refhost::LogRecordHead HeadOfNow(char level) {
  using namespace std::chrono;
  const auto now = duration_cast<milliseconds>(system_clock::now().time_since_epoch());
  return {now.count(), GetCurrentProcessId(), GetCurrentThreadId(), level};
}

std::once_flag suiteLogDecided;
std::atomic<bool> suiteLogKeptClosed = false;

/// The suite's own log has no owner who would open it.
void OpenIfSuiteLog(const ZLT::Log& log) {
  if (&log != &ZLT::g_log) return;
  std::call_once(suiteLogDecided,
                 [] { ZLT::utility::InitLog(ZLT::g_log, L"ZLT.log", DebugLevel); });
}

}  // namespace

void refhost::KeepSuiteLogClosed() {
  std::call_once(suiteLogDecided, [] { suiteLogKeptClosed = true; });
}

bool refhost::IsSuiteLogKeptClosed() { return suiteLogKeptClosed; }

namespace ZLT {

/// Threads that log at the same time share the way to the file, whose lock costs more than a
/// record's writing: one of them writes what all have queued, the others wait for that.
struct Log::State {
  refhost::SlimLock mutex;
  refhost::LogFile file;  ///< the writer's
  std::atomic<int> level = 0;
  std::string queue;
  refhost::WaiterQueue waiting;  ///< whose records are in the queue
  bool isWriting = false;        ///< some thread is the writer

  /// `mark`: what the record shows, `at`: from which level of the log on it is written.
  void Write(char mark, int at, const wchar_t* format, va_list arguments) try {
    if (level < at) return;
    const std::wstring message = refhost::WithoutSecrets(refhost::FormatWide(format, arguments));
    std::unique_lock lock(mutex);
    queue += refhost::ComposeLogRecord(HeadOfNow(mark), message);
    if (BecomeWriter(lock)) WriteQueue(lock);
  } catch (const std::bad_alloc&) {
    // What there is no memory for is lost.
  }

  /// @return true: the calling thread is the writer, until `WriteQueue`, and has the lock; false:
  /// all that was queued before has been written, and it has not.
  bool BecomeWriter(std::unique_lock<refhost::SlimLock>& lock) {
    if (!isWriting) return isWriting = true;
    refhost::Waiter self;
    waiting.Add(self);
    lock.unlock();
    if (self.Wait() == refhost::Waiter::Word::Done) return false;
    lock.lock();
    return true;
  }

  /// Ends the calling thread's turn, and its hold of the lock.
  void WriteQueue(std::unique_lock<refhost::SlimLock>& lock) {
    for (int batch = 0; batch < MaxBatches && !queue.empty(); ++batch) WriteBatch(lock);
    refhost::Waiter* const next = waiting.Take();
    isWriting = next != nullptr;
    lock.unlock();
    if (next != nullptr) next->Tell(refhost::Waiter::Word::Turn);
  }

  void WriteBatch(std::unique_lock<refhost::SlimLock>& lock) {
    const std::string records = std::exchange(queue, {});
    refhost::WaiterQueue served = std::exchange(waiting, {});
    lock.unlock();
    try {
      file.Append(records);
    } catch (const std::bad_alloc&) {
      // Lost as well; the others still want to be told.
    }
    while (refhost::Waiter* thread = served.Take()) {
      thread->Tell(refhost::Waiter::Word::Done);
    }
    lock.lock();
  }

  bool Open(const std::wstring& path, int newLevel) {
    refhost::LogFile opened;
    if (!opened.Open(path, refhost::Settings().logMaxBytes)) return false;
    std::unique_lock lock(mutex);
    while (!BecomeWriter(lock)) lock.lock();
    // A writer that an exception took away would have all others wait for ever.
    static_assert(std::is_nothrow_move_assignable_v<refhost::LogFile>);
    file = std::move(opened);
    level = newLevel;
    WriteQueue(lock);
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

bool Log::Open(const wchar_t* fileName, int level) try {
  const std::wstring folder = refhost::LogFolder();
  const std::wstring name = fileName;
  if (name.empty() || name != FileSystem::getFileName(name)) return false;
  // Not through the log's own host, which would log what is wrong with it.
  if (!refhost::CreateFolder(folder, true).empty()) return false;
  return m_pState->Open(folder + L"\\" + name, level);
} catch (const std::bad_alloc&) {
  return false;
}

}  // namespace ZLT
