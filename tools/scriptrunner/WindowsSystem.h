#pragma once

#include "tools/scriptrunner/System.h"

namespace scriptrunner {

/// The machine that the runner runs on. Errors go to standard error and, because scripts mostly run
/// with no window, to %windir%\temp\scriptrunner.log too.
class WindowsSystem : public System {
 public:
  std::optional<std::string> Environment(const std::string& name) override;
  void Sleep(std::chrono::milliseconds duration) override;
  int RunProgram(const std::string& program, const std::vector<std::string>& arguments,
                 bool discardOutput) override;
  void Write(const std::string& line) override;
  void WriteError(const std::string& line) override;
};

std::string ToUtf8(const wchar_t* text);
std::wstring ToWide(const std::string& text);

}  // namespace scriptrunner
