#include "reference_host/files/HeldFolder.h"

#include "reference_host/files/LongPath.h"
#include "reference_host/files/ProgramData.h"
#include "reference_host/files/Trust.h"
#include "reference_host/wine/Workarounds.h"

namespace refhost {

namespace {

constexpr const wchar_t* LongPrefix = L"\\\\?\\";
constexpr std::size_t RootLength = 7;  // "\\?\C:\"

std::wstring RefusalOfKind(DWORD attributes, bool isFolder) {
  if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) return L"a link stands in its place";
  const bool found = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  if (found == isFolder) return {};
  return isFolder ? L"a file has its name" : L"a folder has its name";
}

/// One open object answers all questions, so that nobody swaps it between two of them.
std::wstring RefusalOfObject(HANDLE object, const std::wstring& name, bool isFolder) {
  BY_HANDLE_FILE_INFORMATION found{};
  if (!GetFileInformationByHandle(object, &found)) return L"it cannot be examined";
  DWORD attributes = found.dwFileAttributes;
  if (wine::IsInForce()) attributes = wine::AttributesByName(name.c_str(), attributes);
  if (std::wstring refusal = RefusalOfKind(attributes, isFolder); !refusal.empty()) return refusal;
  const std::optional<ObjectRights> rights = RightsOf(object);
  return rights ? RefusalOfRights(*rights, Trusted()) : L"its owner is not to be found out";
}

/// A link itself is opened, not what it leads to. The right to list is what makes the sharing mode
/// count: nobody else may open the folder for its deletion, which a renaming is as well.
Handle OpenFolder(const std::wstring& name) {
  return Handle(CreateFileW(name.c_str(), FILE_LIST_DIRECTORY | READ_CONTROL | FILE_READ_ATTRIBUTES,
                            FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                            FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
}

/// @return where the first name begins that is judged; 0 for a path without a drive.
std::size_t BeginOfWay(const std::wstring& name) {
  const std::wstring programData = LongPath(ProgramDataFolder());
  if (IsBelow(name, programData)) return programData.size() + 1;
  return name.starts_with(LongPrefix) && name.size() > RootLength ? RootLength : 0;
}

}  // namespace

std::wstring HeldFolder::Step(const std::wstring& name, SECURITY_ATTRIBUTES* rules) {
  _isNew = false;
  Handle folder = OpenFolder(name);
  DWORD error = folder ? ERROR_SUCCESS : GetLastError();
  if (rules != nullptr && error == ERROR_FILE_NOT_FOUND) {
    _isNew = CreateDirectoryW(name.c_str(), rules) != 0;
    error = _isNew ? ERROR_SUCCESS : GetLastError();
    // Another thread, or somebody else, may have been quicker: judged like what was there before.
    folder = OpenFolder(name);
    if (!folder) return L"it cannot be created, error " + std::to_wstring(error);
  }
  if (!folder) return L"it cannot be opened, error " + std::to_wstring(error);
  std::wstring refusal = RefusalOfObject(folder.Get(), name, true);
  if (refusal.empty()) _way.push_back(std::move(folder));
  return refusal;
}

std::wstring HeldFolder::Enter(const std::wstring& name, SECURITY_ATTRIBUTES* rules) {
  const std::size_t begin = BeginOfWay(name);
  if (begin == 0) return L"it is not below a drive's root";
  for (std::size_t end = begin; end != std::wstring::npos;) {
    end = name.find(L'\\', end + 1);
    const std::wstring step = name.substr(0, end);
    const std::wstring refusal = Step(step, rules);
    if (refusal.empty()) continue;
    Leave();
    const bool itself = end == std::wstring::npos;
    return itself ? refusal : step.substr(RootLength - 3) + L": " + refusal;
  }
  return {};
}

std::wstring RefusalOfFile(HANDLE file, const std::wstring& path) {
  const std::wstring name = LongPath(path);
  std::wstring refusal = RefusalOfObject(file, name, false);
  if (!refusal.empty()) return refusal;
  const std::wstring folder = FolderOf(name);
  // A drive's root is the system's.
  if (folder.size() < RootLength) return {};
  refusal = HeldFolder().Enter(folder, nullptr);
  return refusal.empty() ? refusal : L"its folder: " + refusal;
}

}  // namespace refhost
