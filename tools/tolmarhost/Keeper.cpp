#include "tools/tolmarhost/Keeper.h"

#include <algorithm>
#include <utility>

#include "agent/ResultCodes.h"
#include "tools/common/Titles.h"
#include "tools/tolmarhost/Passing.h"

namespace service {

namespace {

/// What was missing so long ago is asked for anew before it is installed.
constexpr Time MaxListAge = 900;
/// Whoever works at the machine may ask for a run, as often as they like.
constexpr Time LeastInterval = 60;

std::string PartNumberOf(const Json::Value& title) { return TextIn(title, "l1FruPn"); }

std::string NameOf(const Json::Value& title) {
  const std::string name = TextIn(title, "name");
  return PartNumberOf(title) + (name.empty() ? "" : " (" + name + ")");
}

std::string TextOf(const WallTime& time) { return refhost::TextOfTime(time.day, time.minute); }

bool IsInstalled(const Json::Value& title) { return TextIn(title, "status") == "installed"; }

TitleState Installed(const TitleState& before) {
  TitleState installed;
  installed.name = before.name;
  installed.status = "installed";
  installed.tried = before.tried;
  return installed;
}

/// What the service's list has another shape than agreed, or is none: nothing is installed by it.
bool IsListOfTitles(const Json::Value& document) {
  return document.isObject() && (document["swList"].empty() || HasTitles(document));
}

}  // namespace

Keeper::Keeper(Device& device, State state) : _device(device), _state(std::move(state)) {}

Pace Keeper::ThePace() const { return {_settings->pollSeconds, _settings->pollSpreadSeconds}; }

WallClock Keeper::Wall() {
  return [this](Time time) { return _device.Wall(time); };
}

void Keeper::WakeAt(Time time) {
  if (_state.resume == 0 || time < _state.resume) _state.resume = time;
}

void Keeper::Keep() { _device.Keep(_state); }

/// What was being waited for when the service ended comes at its time, not at the next run.
void Keeper::Begin(const refhost::Configuration& settings) {
  _settings = &settings;
  const Time now = _device.Now();
  _state.nextRun = FirstRun(_state.nextRun, now, ThePace(), _device.Random());
  const Time resume = std::exchange(_state.resume, 0);
  if (resume != 0) {
    const Time soon = FirstRun(resume, now, ThePace(), _device.Random());
    _state.nextRun = std::min(_state.nextRun, soon);
  }
  Keep();
}

void Keeper::RunSoon(const refhost::Configuration& settings) {
  _settings = &settings;
  const Time soon = FirstRun(0, _device.Now(), ThePace(), _device.Random());
  _state.nextRun = std::min(_state.nextRun, soon);
  Keep();
}

void Keeper::RunNow() {
  const Time soonest = std::max(_device.Now(), _state.lastRun.began + LeastInterval);
  _state.nextRun = std::min(_state.nextRun, soonest);
  Keep();
}

Time Keeper::Work(const refhost::Configuration& settings) {
  _settings = &settings;
  const Time now = _device.Now();
  // The clock was set back, or it is to be asked more often than it was.
  if (_state.nextRun > now + ThePace().interval + ThePace().spread) RunSoon(settings);
  const bool isDue = now >= _state.nextRun;
  const bool isWoken = _state.resume != 0 && now >= _state.resume;
  if (isDue || (isWoken && now - _asked > MaxListAge && !LearnObstacle())) Ask();
  if (isDue || isWoken) InstallMissing();
  return NextWork(_state);
}

void Keeper::Ask() {
  _asked = _device.Now();
  _state.lastRun = {_asked, 0, 0};
  _state.nextRun = RunAfter(_asked, ThePace(), _device.Random());
  Keep();
  Json::Value document;
  const bool asksForTitles = _settings->serviceInstalls != refhost::ServiceInstalls::None;
  std::uint32_t code = _device.Ask(_settings->serviceInstalls, document);
  if (_device.IsStopping()) return;
  if (code == 0 && asksForTitles && !IsListOfTitles(document)) code = ResultCode::BadDocument;
  _state.lastRun.code = code;
  if (!asksForTitles) _missing.clear();
  if (code == 0) return asksForTitles ? Sort(document["swList"]) : void();
  _device.Tell({Notice::Kind::AskingFailed, "", code, "", ""});
}

/// Those for device set-up first. What the device is not entitled to any more is forgotten.
void Keeper::Sort(const Json::Value& titles) {
  _missing.clear();
  _versions.clear();
  _fetched.clear();
  std::map<std::string, TitleState> known;
  for (const Json::Value& title : titles) {
    TitleState& state = known[PartNumberOf(title)] = _state.titles[PartNumberOf(title)];
    state.name = TextIn(title, "name");
    const bool isLeftOut = _settings->serviceInstalls == refhost::ServiceInstalls::Preinstall &&
                           !title["preinstallSw"].asBool();
    if (IsInstalled(title)) {
      state = Installed(state);
    } else if (!isLeftOut) {
      _missing.push_back(title);
      if (state.failures == 0) state.status = "not installed";
    }
  }
  _state.titles = std::move(known);
  std::stable_partition(_missing.begin(), _missing.end(),
                        [](const Json::Value& title) { return title["preinstallSw"].asBool(); });
}

void Keeper::InstallMissing() {
  _state.resume = 0;
  _state.waitsFor.clear();
  for (auto title = _missing.begin(); title != _missing.end() && !_device.IsStopping();) {
    if (!IsTurn(*title)) {
      ++title;
    } else if (const auto obstacle = LearnObstacle()) {
      const bool isOutside = obstacle->kind == Notice::Kind::OutsideWindow;
      if (isOutside && _settings->downloadOutsideWindows) FetchMissing();
      break;
    } else {
      title = Install(*title) ? _missing.erase(title) : title + 1;
    }
  }
  if (_device.IsStopping()) {
    _state.nextRun = _state.lastRun.began;  // What was cut off goes on after the next start.
  } else {
    _state.lastRun.ended = _device.Now();
  }
  Keep();
}

/// Only when it was asked for is anything known to be missing, so that is not long ago.
void Keeper::FetchMissing() {
  for (const Json::Value& title : _missing) {
    if (_device.IsStopping()) return;
    if (IsTurn(title) && _fetched.insert(PartNumberOf(title)).second) _device.Fetch(title);
  }
}

bool Keeper::MayInstall(const refhost::Configuration& settings) {
  _settings = &settings;
  return !FindObstacle();
}

void Keeper::LookAgain() {
  if (_state.resume != 0) _state.resume = _device.Now();
}

std::optional<Keeper::Obstacle> Keeper::FindObstacle() {
  const Time now = _device.Now();
  const Windows& windows = _settings->maintenanceWindows;
  const std::optional<Time> opening = Opening(windows, now, Wall());
  if (!opening) return Obstacle{Notice::Kind::OutsideWindow, _state.nextRun, ""};
  if (*opening > now) {
    const Time begin = BeginIn(windows, *opening, ThePace(), Wall(), _device.Random());
    return Obstacle{Notice::Kind::OutsideWindow, begin, TextOf(_device.Wall(*opening))};
  }
  const std::string program = _device.Running(_settings->deferWhileRunning);
  if (program.empty()) return std::nullopt;
  return Obstacle{Notice::Kind::Deferred, now + _settings->deferSeconds, program};
}

/// What stands in the way is told once.
std::optional<Keeper::Obstacle> Keeper::LearnObstacle() {
  std::optional<Obstacle> obstacle = FindObstacle();
  if (!obstacle) {
    _told.clear();
    return obstacle;
  }
  WakeAt(obstacle->again);
  const bool isProgram = obstacle->kind == Notice::Kind::Deferred;
  _state.waitsFor = isProgram ? "the end of " + obstacle->why : "a maintenance window";
  const bool isNew = _told != _state.waitsFor;
  _told = _state.waitsFor;
  if (isNew) _device.Tell({obstacle->kind, "", 0, "", obstacle->why});
  return obstacle;
}

const std::string& Keeper::VersionOf(const Json::Value& title) {
  const auto [place, isNew] = _versions.try_emplace(PartNumberOf(title));
  if (isNew) place->second = _device.VersionOf(title);
  return place->second;
}

bool Keeper::IsTurn(const Json::Value& title) {
  TitleState& state = _state.titles[PartNumberOf(title)];
  if (state.failures == 0) return true;
  const std::string& version = VersionOf(title);
  if (state.version.empty()) state.version = version;
  if (!version.empty() && version != state.version) {
    state.failures = 0;
    state.again = 0;
    return true;
  }
  if (state.failures >= _settings->titleAttempts) return false;
  if (state.again <= _device.Now()) return true;
  WakeAt(state.again);
  return false;
}

/// @return true when it is installed.
bool Keeper::Install(Json::Value& title) {
  TitleState& state = _state.titles[PartNumberOf(title)];
  state.tried = _device.Now();
  state.status = "being installed";
  Keep();
  title.removeMember("status");
  for (const char* old : {"code", "cause", "why", "installerOutput"}) title.removeMember(old);
  _device.Install(title, Closing(_settings->maintenanceWindows, _device.Now(), Wall()));
  _fetched.erase(PartNumberOf(title));
  if (IsInstalled(title)) {
    state = Installed(state);
    _device.Tell({Notice::Kind::Installed, NameOf(title), 0, "", ""});
    return true;
  }
  state.status = "not installed";
  if (!_device.IsStopping()) LearnFailure(title, state);
  return false;
}

void Keeper::LearnFailure(const Json::Value& title, TitleState& state) {
  state.code = title["code"].asUInt();
  state.cause = TextIn(title, "cause");
  state.why = TextIn(title, "why");
  const bool isRefused = state.cause == "package.unsigned" || state.cause == "package.signature" ||
                         state.cause == "package.publisher";
  _device.Tell({isRefused ? Notice::Kind::Refused : Notice::Kind::Failed, NameOf(title), state.code,
                state.cause, state.why});
  // Somebody else installs on this machine, and will have done soon.
  if (state.cause == "device.lease") WakeAt(_device.Now() + _settings->deferSeconds);
  if (!title.isMember("status") || IsPassing(state.cause)) return;
  state.version = VersionOf(title);
  if (++state.failures < _settings->titleAttempts) {
    state.again = _device.Now() + PauseAfter(state.failures, _settings->titlePauseSeconds);
    WakeAt(state.again);
    return;
  }
  state.status = "given up";
  _device.Tell({Notice::Kind::GivenUp, NameOf(title), state.code, state.cause,
                std::to_string(state.failures)});
}

}  // namespace service
