#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace refhost {

/// How much of a program's output is kept, in bytes: the end of it, where errors stand.
constexpr std::size_t KeptOutputBytes = 64 << 10;

/// What a program has written.
struct ProcessOutput {
  std::string kept;         ///< the end of it, in the program's own encoding
  std::uint64_t total = 0;  ///< bytes in all

  /// Adds what has come.
  void Append(const char* bytes, std::size_t count);
};

/// @return its last lines, of so many bytes at most.
std::wstring EndOf(const ProcessOutput& output, std::size_t maxBytes);

/// Writes one record about a program that has ended: what became of it, the time that it took, the
/// command line, and the output as indented lines.
/// @param isError in, the record's level. @param ending in, "exit code 0", say.
void LogProcessEnd(bool isError, const std::wstring& ending, std::chrono::milliseconds duration,
                   const std::wstring& commandLine, const ProcessOutput& output);

}  // namespace refhost
