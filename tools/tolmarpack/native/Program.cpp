#include "tools/tolmarpack/Program.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstring>
#include <stdexcept>

namespace tolmarpack {

struct Program::Process {
  pid_t id = -1;
  int output = -1;
};

Program::Program(const std::vector<std::string>& words) : _process(new Process) {
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe is to be had");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
  const int fault =
      posix_spawnp(&_process->id, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  _process->output = ends[0];
  if (fault == 0) return;
  close(ends[0]);
  throw std::runtime_error("cannot start " + words[0] + ": " + std::strerror(fault));
}

Program::~Program() {
  close(_process->output);
  if (_process->id < 0) return;
  kill(_process->id, SIGTERM);
  waitpid(_process->id, nullptr, 0);
}

bool Program::IsRunning() const {
  siginfo_t info{};
  return waitid(P_PID, static_cast<id_t>(_process->id), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
         info.si_pid == 0;
}

Ending Program::Wait() {
  Ending ending;
  std::array<char, 4096> buffer{};
  for (ssize_t count = 0; (count = read(_process->output, buffer.data(), buffer.size())) > 0 ||
                          (count < 0 && errno == EINTR);) {
    if (count > 0) ending.output.append(buffer.data(), static_cast<std::size_t>(count));
  }
  int status = 0;
  waitpid(_process->id, &status, 0);
  _process->id = -1;
  if (WIFEXITED(status)) ending.exitStatus = WEXITSTATUS(status);
  return ending;
}

std::vector<std::string> OwnArguments(int count, char** words) {
  return {words + 1, words + count};
}

std::filesystem::path OwnProgram() { return std::filesystem::read_symlink("/proc/self/exe"); }

}  // namespace tolmarpack
