#pragma once

/// Status words of a title or module, as hosts and the agent's records carry them.
namespace StatusWord {

inline constexpr const wchar_t* Downloading = L"downloading";
inline constexpr const wchar_t* Downloaded = L"downloaded";
inline constexpr const wchar_t* Installing = L"installing";
inline constexpr const wchar_t* Installed = L"installed";
inline constexpr const wchar_t* NotInstalled = L"not installed";

/// @return the word for a yes/no answer.
constexpr const wchar_t* ForInstalled(bool installed) {
  return installed ? Installed : NotInstalled;
}

}  // namespace StatusWord
