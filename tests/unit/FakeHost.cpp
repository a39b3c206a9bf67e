#include "tests/unit/FakeHost.h"

#include <algorithm>
#include <cstdarg>
#include <cwchar>

#include "host/common/ApiUtility.h"
#include "host/common/DateTime.h"
#include "host/common/Utility.h"

namespace {

/// What stands behind the code 0 in the result of a request.
const std::map<std::string, std::string> HappyResults{
    {"hasEntitlement", R"(,"hasEntitlement":true)"},
    {"entitlement", R"(,"swList":[])"},
    {"downloadRequest", R"(,"fileList":[{"name":"a.cab","downloadUrl":"u/a.cab"},)"
                        R"({"name":"c.ps1","downloadUrl":"u/c.ps1"}])"},
    {"downloadProgress", ""},
    {"installProgress", ""}};

/// "%s" takes a wide string on Windows; elsewhere it has to be told so.
std::string Formatted(const wchar_t* format, va_list arguments) {
  std::wstring own = format;
  for (std::size_t at = 0; (at = own.find(L"%s", at)) != std::wstring::npos;) {
    own.replace(at, 2, L"%ls");
  }
  wchar_t text[8192];
  std::vswprintf(text, std::size(text), own.c_str(), arguments);
  return ZLT::String::UTF16ToUTF8(text);
}

}  // namespace

FakeHost& FakeHost::Get() {
  static FakeHost& fake = *new FakeHost;  // never destroyed: the agent's static objects use it
  return fake;
}

void FakeHost::Reset() {
  static_cast<Script&>(*this) = Script();
  Forget();
  _names.clear();
}

void FakeHost::Forget() {
  const UnseenLock lock(_mutex);
  _lines.clear();
}

bool FakeHost::Record(const std::string& line) {
  const bool isLog = line.starts_with("d ") || line.starts_with("e ") || line.starts_with("g ");
  if (atStep && !isLog) atStep(line);
  std::string whole = Holds(stateLock) ? "!! under the state lock: " : "";
  for (const char c : line) whole += c == '\r' ? "\\r" : c == '\n' ? "\\n" : std::string(1, c);
  const UnseenLock lock(_mutex);
  _lines.push_back(whole);
  return true;
}

std::string FakeHost::Transcript(const std::vector<std::string>& beginnings) const {
  const UnseenLock lock(_mutex);
  std::string text;
  for (const std::string& line : _lines) {
    const auto begins = [&](const std::string& beginning) { return line.starts_with(beginning); };
    if (std::any_of(beginnings.begin(), beginnings.end(), begins)) text += line + "\n";
  }
  return text;
}

std::size_t FakeHost::Count(const std::string& beginning) const {
  const std::string text = Transcript({beginning});
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

HANDLE FakeHost::Name(HANDLE handle, const std::string& name) {
  const UnseenLock lock(_mutex);
  _names[handle] = name;
  return handle;
}

std::string FakeHost::Text(HANDLE handle) const {
  const UnseenLock lock(_mutex);
  return _names.contains(handle) ? _names.at(handle) : handle == nullptr ? "null" : "unknown";
}

Reply FakeHost::ReplyTo(const std::string& type) {
  const UnseenLock lock(_mutex);
  const Reply happy{R"({"result":{"code":0)" + HappyResults.at(type) + "}}"};
  return Next(next[type], always.contains(type) ? always[type] : happy);
}

namespace ZLT {

Log g_log;

Log::Log() : m_pState(nullptr) {}
Log::~Log() = default;
void Log::d(const wchar_t* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  Fake().Note(this == &g_log ? "g" : "d", Formatted(format, arguments));
  va_end(arguments);
}

void Log::e(const wchar_t* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  Fake().Note("e", Formatted(format, arguments));
  va_end(arguments);
}

bool utility::InitLog(Log&, const wchar_t* fileName, int level) {
  return Fake().Note("open-log", fileName, level) && Fake().logOpens;
}

unsigned int ApiUtility::GetSleepDurationInMillis(const int& retryCount, const int& minSeconds,
                                                  const int& maxSeconds) {
  Fake().Note("retry-wait", retryCount, "of", minSeconds, "to", maxSeconds);
  return static_cast<unsigned int>(100 * (retryCount + 1));
}

std::wstring System::GetTime() { return L"10:00:00"; }

}  // namespace ZLT

std::int64_t DateTimeUtility::GetCurrentDatetime() { return Fake().now; }

double DateTimeUtility::CompareDateTime(std::int64_t later, std::int64_t earlier) {
  return static_cast<double>(later - earlier);
}
