#pragma once

#include <memory>
#include <string>

#include "reference_host/base/Handle.h"
#include "reference_host/process/ProcessOutput.h"

namespace refhost {

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

}  // namespace refhost
