#include "reference_host/files/InstallationLease.h"

#include <json/reader.h>
#include <json/writer.h>
#include <windows.h>

#include <cstdio>
#include <memory>
#include <mutex>

#include "host/common/Text.h"
#include "reference_host/base/Handle.h"
#include "reference_host/base/OwnProgram.h"
#include "reference_host/files/FolderCreation.h"
#include "reference_host/files/LongPath.h"
#include "reference_host/files/ProgramData.h"

namespace refhost::InstallationLease {

namespace {

/// More than a record ever needs: paths have 32,767 characters at most.
constexpr DWORD MaxRecordBytes = 256 << 10;

std::wstring FileName() { return SuiteFolder() + L"\\installation.lease"; }

/// The lease, while this process has it.
struct Held {
  std::mutex mutex;
  Handle file;
  std::wstring folder;
};

/// Never destroyed: threads may use it to the last moment of the process.
Held& TheHeld() {
  static auto* const held = new Held;
  return *held;
}

/// Others may read who has it. They can neither open it so themselves nor put another file into its
/// place.
Handle OpenToHold() {
  return Handle(CreateFileW(FileName().c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ,
                            nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
}

std::string Now() {
  SYSTEMTIME now{};
  GetSystemTime(&now);
  char text[32];
  std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02dZ", now.wYear, now.wMonth,
                now.wDay, now.wHour, now.wMinute, now.wSecond);
  return text;
}

bool Write(HANDLE file, const std::wstring& folder) {
  Json::Value record;
  record["processId"] = Json::UInt{GetCurrentProcessId()};
  record["program"] = ZLT::String::UTF16ToUTF8(OwnProgram());
  record["since"] = Now();
  record["folder"] = ZLT::String::UTF16ToUTF8(folder);
  const std::string text = Json::writeString(Json::StreamWriterBuilder(), record);
  DWORD written = 0;
  return SetFilePointer(file, 0, nullptr, FILE_BEGIN) == 0 && SetEndOfFile(file) &&
         WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) &&
         written == text.size();
}

/// A record that cannot be read still tells that there is a holder.
LeaseHolder Parse(const std::string& text) try {
  const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
  Json::Value record;
  LeaseHolder holder;
  if (!reader->parse(text.data(), text.data() + text.size(), &record, nullptr)) return holder;
  holder.processId = record["processId"].asUInt();
  holder.program = record["program"].asString();
  holder.since = record["since"].asString();
  holder.folder = record["folder"].asString();
  return holder;
} catch (const Json::Exception&) {
  return {};
}

LeaseHolder Read() {
  constexpr DWORD Sharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const Handle file(CreateFileW(FileName().c_str(), GENERIC_READ, Sharing, nullptr, OPEN_EXISTING,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
  std::string text(MaxRecordBytes, '\0');
  DWORD count = 0;
  if (!file || !ReadFile(file.Get(), text.data(), MaxRecordBytes, &count, nullptr)) return {};
  text.resize(count);
  return Parse(text);
}

/// @return true when somebody, this process perhaps, has the file open as a holder does.
bool IsHeld() {
  constexpr DWORD Sharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const Handle file(CreateFileW(FileName().c_str(), GENERIC_WRITE, Sharing, nullptr, OPEN_EXISTING,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
  return !file && GetLastError() == ERROR_SHARING_VIOLATION;
}

}  // namespace

Answer Take(const std::wstring& folder, std::wstring& why) {
  Held& held = TheHeld();
  const std::scoped_lock lock(held.mutex);
  if (held.file) return Answer::Taken;
  if (const std::wstring refusal = CreateFolder(SuiteFolder(), true); !refusal.empty()) {
    why = SuiteFolder() + L" is refused: " + refusal;
    return Answer::Refused;
  }
  Handle file = OpenToHold();
  const DWORD error = GetLastError();
  if (!file && error == ERROR_SHARING_VIOLATION) {
    why = Description(Read()) + L" has it";
    return Answer::Held;
  }
  if (!file || !Write(file.Get(), folder)) {
    why =
        FileName() + L" cannot be written, error " + std::to_wstring(file ? GetLastError() : error);
    return Answer::Refused;
  }
  held.file = std::move(file);
  held.folder = folder;
  return Answer::Taken;
}

void ReleaseWith(const std::wstring& folder) {
  Held& held = TheHeld();
  const std::scoped_lock lock(held.mutex);
  if (held.folder == folder) held.file = Handle();
}

std::optional<LeaseHolder> Holder() {
  if (!IsHeld()) return std::nullopt;
  return Read();
}

std::optional<LeaseHolder> OtherHolderOf(const std::wstring& path) {
  {
    Held& held = TheHeld();
    const std::scoped_lock lock(held.mutex);
    if (held.file) return std::nullopt;
  }
  std::optional<LeaseHolder> holder = Holder();
  if (holder && !IsBelow(path + L"\\", ZLT::String::UTF8ToUTF16(holder->folder))) holder.reset();
  return holder;
}

std::wstring Description(const LeaseHolder& holder) {
  if (holder.processId == 0) return L"another process";
  return ZLT::String::UTF8ToUTF16("process " + std::to_string(holder.processId) + " (" +
                                  holder.program + ") since " + holder.since);
}

}  // namespace refhost::InstallationLease
