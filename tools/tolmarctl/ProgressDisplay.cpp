#include "tools/tolmarctl/ProgressDisplay.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "agent/TolmarAgent.h"

namespace {

constexpr DWORD PollMs = 200;
constexpr int BarWidth = 30;

bool IsTerminal() {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode) != 0;
}

}  // namespace

ProgressDisplay::ProgressDisplay(TolmarAgent& agent, Json::Value titles)
    : _agent(agent),
      _titles(std::move(titles)),
      _onTerminal(IsTerminal()),
      _done(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
  _thread = std::thread([this] { Follow(); });
}

ProgressDisplay::~ProgressDisplay() {
  SetEvent(_done);
  _thread.join();
  CloseHandle(_done);
  if (_onTerminal && !_shown.empty()) std::fputs("\n", stdout);
}

void ProgressDisplay::Follow() {
  while (WaitForSingleObject(_done, PollMs) == WAIT_TIMEOUT) Poll();
  Poll();
}

void ProgressDisplay::Poll() {
  Json::Value copy = _titles;
  if (_agent.GetInstallEntitledSoftwareStatus(copy) != 0) return;
  for (const Json::Value& title : copy["swList"]) {
    if (!title.isMember("status")) continue;
    Show(title["l1FruPn"].asString(), title["status"].asString(), title["progress"].asString());
  }
}

void ProgressDisplay::Show(const std::string& title, const std::string& status,
                           const std::string& progress) {
  const std::string line = title + ": " + status + " " + progress + " %";
  if (line == _shown || status.empty()) return;
  if (_onTerminal) {
    if (!_shownTitle.empty() && title != _shownTitle) std::fputs("\n", stdout);
    ShowBar(title, status, static_cast<int>(std::strtol(progress.c_str(), nullptr, 10)));
  } else {
    std::printf("%s\n", line.c_str());
  }
  std::fflush(stdout);
  _shown = line;
  _shownTitle = title;
}

void ProgressDisplay::ShowBar(const std::string& title, const std::string& status, int percent) {
  const int filled = std::clamp(percent, 0, 100) * BarWidth / 100;
  const std::string bar = std::string(static_cast<std::size_t>(filled), '#') +
                          std::string(static_cast<std::size_t>(BarWidth - filled), '-');
  std::printf("\r%s [%s] %3d %% %-13s", title.c_str(), bar.c_str(), std::clamp(percent, 0, 100),
              status.c_str());
}
