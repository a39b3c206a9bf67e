#include "tools/tolmarhost/EventLog.h"

#include <cstdio>

#include "host/common/Text.h"
#include "reference_host/base/OwnProgram.h"
#include "reference_host/log/Redaction.h"
#include "tools/common/ServiceState.h"

namespace {

std::wstring SourceKey() {
  return std::wstring(L"SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\") +
         service::ServiceName;
}

/// Longer ones the log does not take ("ReportEventW function": 31,839 characters).
constexpr std::size_t MostCharacters = 8000;

WORD TypeOf(DWORD message) {
  constexpr WORD Types[] = {EVENTLOG_SUCCESS, EVENTLOG_INFORMATION_TYPE, EVENTLOG_WARNING_TYPE,
                            EVENTLOG_ERROR_TYPE};
  return Types[message >> 30];
}

/// What the log's viewer would take for a place to put something into ("ReportEventW function"): a
/// percent sign before a digit or another one. Names come from the cloud and may hold any.
std::wstring WithoutPlaces(const std::wstring& text) {
  std::wstring plain;
  for (const wchar_t c : text) {
    const bool isPlace =
        !plain.empty() && plain.back() == L'%' && (c == L'%' || (c >= L'0' && c <= L'9'));
    if (isPlace) plain += L' ';
    plain += c;
  }
  return plain;
}

void Echo(DWORD message, const std::vector<const wchar_t*>& inserts) {
  std::vector<DWORD_PTR> arguments;
  arguments.reserve(inserts.size());
  for (const wchar_t* insert : inserts) arguments.push_back(reinterpret_cast<DWORD_PTR>(insert));
  wchar_t* text = nullptr;
  const DWORD flags =
      FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_ARGUMENT_ARRAY;
  if (FormatMessageW(flags, nullptr, message, 0, reinterpret_cast<wchar_t*>(&text), 0,
                     reinterpret_cast<va_list*>(arguments.data())) == 0) {
    return;
  }
  std::printf("%lu %s", message & 0xFFFF, ZLT::String::UTF16ToUTF8(text).c_str());
  std::fflush(stdout);
  LocalFree(text);
}

}  // namespace

EventLog::EventLog(bool echoes)
    : _source(RegisterEventSourceW(nullptr, service::ServiceName)), _echoes(echoes) {}

EventLog::~EventLog() {
  if (_source != nullptr) DeregisterEventSource(_source);
}

void EventLog::Write(DWORD message, const std::vector<std::wstring>& texts) const {
  std::vector<std::wstring> shown;
  shown.reserve(texts.size());
  for (const std::wstring& text : texts) {
    shown.push_back(WithoutPlaces(refhost::WithoutSecrets(text.substr(0, MostCharacters))));
  }
  std::vector<const wchar_t*> inserts;
  inserts.reserve(shown.size());
  for (const std::wstring& text : shown) inserts.push_back(text.c_str());
  if (_source != nullptr) {
    ReportEventW(_source, TypeOf(message), 0, message, nullptr, static_cast<WORD>(inserts.size()),
                 0, inserts.data(), nullptr);
  }
  if (_echoes) Echo(message, inserts);
}

LSTATUS EventLog::Register() {
  const std::wstring path = refhost::OwnProgram();
  constexpr DWORD Types = EVENTLOG_ERROR_TYPE | EVENTLOG_WARNING_TYPE | EVENTLOG_INFORMATION_TYPE;
  const std::wstring key = SourceKey();
  const LSTATUS status =
      RegSetKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), L"EventMessageFile", REG_SZ, path.c_str(),
                      static_cast<DWORD>((path.size() + 1) * sizeof(wchar_t)));
  if (status != ERROR_SUCCESS) return status;
  return RegSetKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), L"TypesSupported", REG_DWORD, &Types,
                         sizeof Types);
}

LSTATUS EventLog::Unregister() {
  const LSTATUS status =
      RegDeleteKeyExW(HKEY_LOCAL_MACHINE, SourceKey().c_str(), KEY_WOW64_64KEY, 0);
  return status == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : status;
}
