#pragma once

#include <windows.h>

#include <chrono>
#include <memory>
#include <string>

#include "reference_host/common/Handle.h"

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

/// Takes the output of a program that is watched to its end. A thread of its own reads it until the
/// last process that has it is gone, so that no program ever waits for its reader, and nobody waits
/// for the reader.
class OutputPipe {
 public:
  /// Makes the pipe; without one there is no output.
  OutputPipe();

  /// @return the end to be inherited by the program; null without a pipe.
  HANDLE WriteEnd() const { return _writeEnd.Get(); }

  /// Begins to read. After the program's start, when it has its own handle.
  void Read();

  /// @return the output of a program that has ended. What it has left behind may hold the pipe open
  /// for ever: the end is waited for a moment only.
  ProcessOutput Collect() const;

 private:
  struct State;
  Handle _writeEnd;
  std::shared_ptr<State> _state;
};

/// Takes the output of a program that goes on should this process end, which would break a pipe and
/// with it, perhaps, the program: a file that is gone when the last who has it is gone.
class OutputFile {
 public:
  /// @param folder in, where the file is made; without one there is no output.
  explicit OutputFile(const std::wstring& folder);

  /// @return the handle to be inherited by the program; null without a file.
  HANDLE WriteEnd() const { return _writeEnd.Get(); }

  /// @return what is in the file.
  ProcessOutput Collect() const;

 private:
  Handle _file;
  Handle _writeEnd;
};

/// Writes one record about a program that has ended: what became of it, the time that it took, the
/// command line, and the output as indented lines.
/// @param isError in, the record's level. @param ending in, "exit code 0", say.
void LogProcessEnd(bool isError, const std::wstring& ending, std::chrono::milliseconds duration,
                   const std::wstring& commandLine, const ProcessOutput& output);

}  // namespace refhost
