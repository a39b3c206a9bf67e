#include "tools/tolmarctl/ProgressDisplay.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

#include "agent/TolmarAgent.h"
#include "reference_host/download/Transfer.h"
#include "tools/common/TerminalText.h"
#include "tools/tolmarctl/Output.h"

namespace {

constexpr DWORD PollMs = 200;

/// @return what the agent knows of the title, and the host of its bytes.
Progress ProgressOf(const Json::Value& title) {
  Progress progress;
  progress.title = title["l1FruPn"].asString();
  progress.status = title["status"].asString();
  progress.percent =
      static_cast<int>(std::strtol(title["progress"].asString().c_str(), nullptr, 10));
  if (progress.status != "downloading") return progress;
  const refhost::TransferState transfer = refhost::CurrentTransfer();
  progress.bytes = transfer.bytes;
  progress.totalBytes = transfer.totalBytes;
  return progress;
}

}  // namespace

ProgressDisplay::ProgressDisplay(TolmarAgent& agent, Json::Value titles, bool asJson)
    : _agent(agent),
      _titles(std::move(titles)),
      _asJson(asJson),
      _onTerminal(!asJson && Console::Columns() > 0),
      _done(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
  _thread = std::thread([this] { Follow(); });
}

ProgressDisplay::~ProgressDisplay() {
  SetEvent(_done);
  _thread.join();
  CloseHandle(_done);
  if (!_bar.empty()) std::fputs("\n", stdout);
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
    const Progress progress = ProgressOf(title);
    _pace.Add(static_cast<double>(GetTickCount64()) / 1000, progress);
    if (!progress.status.empty()) Show(progress);
  }
}

void ProgressDisplay::Show(const Progress& progress) {
  if (_onTerminal) {
    ShowBar(progress);
  } else if (_asJson) {
    ShowObject(ObjectOf(progress, _pace));
  } else {
    ShowLine(progress);
  }
  std::fflush(stdout);
  _shown = progress;
}

void ProgressDisplay::ShowBar(const Progress& progress) {
  if (!_bar.empty() && progress.title != _shown.title) std::fputs("\n", stdout);
  const std::string bar = BarOf(progress, _pace, Console::Columns() - 1);
  if (bar == _bar) return;
  const std::size_t before = DisplayWidth(_bar), now = DisplayWidth(bar);
  const std::string wipe(before > now ? before - now : 0, ' ');
  std::printf("\r%s%s", bar.c_str(), wipe.c_str());
  _bar = bar;
}

void ProgressDisplay::ShowObject(const Json::Value& object) {
  if (object == _object) return;
  PrintJsonLine(object);
  _object = object;
}

void ProgressDisplay::ShowLine(const Progress& progress) {
  if (progress.title == _shown.title && progress.status == _shown.status &&
      progress.percent == _shown.percent) {
    return;
  }
  std::printf("%s: %s %d %%\n", Printable(progress.title).c_str(),
              Printable(progress.status).c_str(), progress.percent);
}
