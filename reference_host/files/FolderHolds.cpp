#include "reference_host/files/FolderHolds.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <mutex>
#include <set>

#include "reference_host/base/ThisUser.h"
#include "reference_host/files/HeldFolder.h"
#include "reference_host/files/LongPath.h"
#include "reference_host/files/Trust.h"

namespace refhost {

namespace {

/// One of the folders: it is held, or was refused.
struct Hold {
  HeldFolder folder;
  std::wstring refusal;
  std::set<std::uint64_t> foundScripts;
};

struct RegardlessOfCase {
  bool operator()(const std::wstring& one, const std::wstring& other) const {
    return CompareStringOrdinal(one.c_str(), -1, other.c_str(), -1, TRUE) == CSTR_LESS_THAN;
  }
};

using Holds = std::map<std::wstring, Hold, RegardlessOfCase>;

std::mutex holdsMutex;
Holds holds;

bool IsSame(const std::wstring& one, const std::wstring& other) {
  return CompareStringOrdinal(one.c_str(), -1, other.c_str(), -1, TRUE) == CSTR_EQUAL;
}

Handle OpenEntry(const std::wstring& name) {
  return Handle(CreateFileW(name.c_str(), READ_CONTROL | FILE_READ_ATTRIBUTES,
                            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                            OPEN_EXISTING,
                            FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
}

/// @return what tells the file from any other of its drive, also from one that takes its name.
std::uint64_t IdentityOf(HANDLE file) {
  BY_HANDLE_FILE_INFORMATION found{};
  GetFileInformationByHandle(file, &found);
  return std::uint64_t{found.nFileIndexHigh} << 32 | found.nFileIndexLow;
}

bool IsScript(const std::wstring& name) {
  constexpr std::size_t Length = 4;
  return name.size() > Length && IsSame(name.substr(name.size() - Length), L".ps1");
}

/// @return why what was found must not stay where this process works.
std::wstring RefusalOfEntry(const std::wstring& name, Hold& hold) {
  const Handle entry = OpenEntry(name);
  if (!entry) {
    const DWORD error = GetLastError();
    // Gone by now; under Wine also a link that leads nowhere.
    if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) return {};
    return L"it cannot be opened, error " + std::to_wstring(error);
  }
  if (IsScript(name)) hold.foundScripts.insert(IdentityOf(entry.Get()));
  const std::optional<ObjectRights> rights = RightsOf(entry.Get());
  std::set<std::wstring> trusted = Trusted();
  trusted.insert(SidOfThisUser());
  return rights ? RefusalOfRights(*rights, trusted) : L"its owner is not to be found out";
}

std::wstring RefusalOfContents(const std::wstring& folder, Hold& hold) {
  WIN32_FIND_DATAW entry{};
  const HANDLE search = FindFirstFileW((folder + L"\\*").c_str(), &entry);
  if (search == INVALID_HANDLE_VALUE) return L"it cannot be listed";
  std::wstring refusal;
  do {
    const std::wstring name = entry.cFileName;
    if (name == L"." || name == L"..") continue;
    refusal = RefusalOfEntry(folder + L"\\" + name, hold);
    if (!refusal.empty()) refusal.insert(0, L"it holds " + name + L": ");
  } while (refusal.empty() && FindNextFileW(search, &entry));
  FindClose(search);
  return refusal;
}

std::wstring Take(const std::wstring& name, bool create, Hold& hold) {
  OwnRules rules;
  if (rules.Get() == nullptr) return L"its rules cannot be made";
  HeldFolder folder;
  std::wstring refusal = folder.Enter(name, create ? rules.Get() : nullptr);
  if (refusal.empty() && !folder.IsNew()) {
    refusal = RefusalOfContents(name, hold);
    const DWORD error = refusal.empty() ? rules.ApplyTo(name) : ERROR_SUCCESS;
    if (error != ERROR_SUCCESS) {
      refusal = L"its access list cannot be set, error " + std::to_wstring(error);
    }
  }
  if (refusal.empty()) hold.folder = std::move(folder);
  return refusal;
}

}  // namespace

std::wstring HoldFolder(const std::wstring& name, bool create) {
  const std::scoped_lock lock(holdsMutex);
  Hold& hold = holds[name];
  // On Windows it cannot have gone; under Wine a program of Linux may have taken it.
  const bool isThere = GetFileAttributesW(name.c_str()) != INVALID_FILE_ATTRIBUTES;
  if (hold.folder && isThere) return {};
  hold = Hold();
  hold.refusal = Take(name, create, hold);
  return hold.refusal;
}

std::wstring RefusalOfHold(const std::wstring& name) {
  const std::scoped_lock lock(holdsMutex);
  const auto found = holds.find(name);
  return found == holds.end() ? std::wstring() : found->second.refusal;
}

void ReleaseFolders(const std::wstring& name, bool itself) {
  const std::scoped_lock lock(holdsMutex);
  std::erase_if(holds, [&](const Holds::value_type& hold) {
    return IsBelow(hold.first, name) || (itself && IsSame(hold.first, name));
  });
}

bool CountsAsThere(const std::wstring& name) {
  const std::scoped_lock lock(holdsMutex);
  const auto found = holds.find(FolderOf(name));
  if (found != holds.end()) {
    const Hold& hold = found->second;
    return hold.folder && (hold.foundScripts.empty() || !IsScript(name) ||
                           hold.foundScripts.count(IdentityOf(OpenEntry(name).Get())) == 0);
  }
  return std::none_of(holds.begin(), holds.end(),
                      [&](const Holds::value_type& hold) { return IsBelow(name, hold.first); });
}

}  // namespace refhost
