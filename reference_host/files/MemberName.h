#pragma once

#include <set>
#include <string>
#include <string_view>

namespace refhost {

/// Judges a relative path that was not chosen on this machine (a package's member, a file of the
/// cloud's list) before a file of that name is made. Sub folders are allowed; the backslash and the
/// slash both separate. Pure.
/// @return why the name is refused (a phrase for a log line); empty when it stays below its folder
/// and means on Windows what it says.
std::string RefusalOfMemberName(std::wstring_view name);

/// The names of one package, none of which may hide another: Windows tells names apart regardless
/// of case.
class MemberNames {
 public:
  /// Takes one more name.
  /// @return why the name is refused, empty when it is taken.
  std::string Add(std::wstring_view name);

 private:
  std::set<std::wstring> _files;
  std::set<std::wstring> _folders;
};

}  // namespace refhost
