#include "host/common/Log.h"

#include <windows.h>

#include <chrono>
#include <cstdarg>
#include <mutex>

#include "host/common/FileSystem.h"
#include "host/common/Utility.h"
#include "reference_host/common/Configuration.h"
#include "reference_host/common/FolderCreation.h"
#include "reference_host/common/Folders.h"
#include "reference_host/common/LogFile.h"
#include "reference_host/common/LogRecord.h"
#include "reference_host/common/Redaction.h"
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

struct Log::State {
  std::mutex mutex;
  refhost::LogFile file;
  int level = 0;

  /// `mark`: what the record shows, `at`: from which level of the log on it is written.
  void Write(char mark, int at, const wchar_t* format, va_list arguments) {
    const std::scoped_lock lock(mutex);
    if (level < at || !file.IsOpen()) return;
    const std::wstring message = refhost::FormatWide(format, arguments);
    file.Append(refhost::ComposeLogRecord(HeadOfNow(mark), refhost::WithoutSecrets(message)));
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
  const std::scoped_lock lock(m_pState->mutex);
  if (!m_pState->file.Open(folder + L"\\" + name, refhost::Settings().logMaxBytes)) return false;
  m_pState->level = level;
  return true;
}

}  // namespace ZLT
