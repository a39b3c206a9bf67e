#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace tolmarpack {

/// What a program that has ended left.
struct Ending {
  int exitStatus = -1;
  std::string output;  ///< standard output and standard error, in the order of their coming
};

/// Another program, started with nothing on its standard input. No shell sees its words.
class Program {
 public:
  /// @param words in, UTF-8; the first is the program, sought on the PATH when it has no folder.
  /// @throws std::runtime_error when it cannot be started.
  explicit Program(const std::vector<std::string>& words);
  /// Ends it when it has not ended, and waits for that.
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  bool IsRunning() const;

  /// Blocks until it has ended; once.
  Ending Wait();

 private:
  struct Process;
  std::unique_ptr<Process> _process;
};

/// Runs a program to its end. @throws std::runtime_error when it cannot be started.
inline Ending Run(const std::vector<std::string>& words) { return Program(words).Wait(); }

/// @return the words behind the program's name, UTF-8, from what main was given.
std::vector<std::string> OwnArguments(int count, char** words);

/// @return the path of this program.
std::filesystem::path OwnProgram();

}  // namespace tolmarpack
