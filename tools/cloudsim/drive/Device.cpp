#include "tools/cloudsim/drive/Device.h"

#include <algorithm>
#include <exception>
#include <random>
#include <utility>

#include "reference_host/base/RetryWait.h"
#include "tools/cloudsim/JsonNode.h"

namespace cloudsim {
namespace {

constexpr int MaxRetries = 3;
constexpr time_t TimeoutSeconds = 30;  ///< the reference host's
constexpr const char* NotAsDescribed = "refused or not as described";

/// Splits an absolute URL behind its host and port.
std::pair<std::string, std::string> Split(const std::string& url) {
  const std::size_t host = url.find("://");
  const std::size_t path = host == std::string::npos ? host : url.find('/', host + 3);
  if (path == std::string::npos) return {url, "/"};
  return {url.substr(0, path), url.substr(path)};
}

bool IsQuery(Kind kind) {
  return kind == Kind::HasEntitlement || kind == Kind::Entitlement || kind == Kind::DownloadRequest;
}

std::string ErrorOf(const httplib::Result& reply) {
  return reply ? "status " + std::to_string(reply->status) : httplib::to_string(reply.error());
}

bool IsTransient(const httplib::Result& reply) {
  if (!reply) return reply.error() == httplib::Error::Connection;
  return reply->status == 500 || reply->status == 503 || reply->status == 504;
}

double Random() {
  thread_local std::minstd_rand engine{std::random_device{}()};
  return std::uniform_real_distribution<double>(0, 1)(engine);
}

Json::Value With(Json::Value parameters,
                 std::initializer_list<std::pair<const char*, Json::Value>> more) {
  for (const auto& [name, value] : more) parameters[name] = value;
  return parameters;
}

}  // namespace

Device::Device(const Target& target, std::string id) : _target(target), _id(std::move(id)) {
  Json::Value own;
  own["deviceId"] = _id;
  if (!target.listOnly) _steps.push_back({Kind::HasEntitlement, own});
  _steps.push_back({Kind::Entitlement, own});
}

std::optional<Device::Clock::duration> Device::Play(Figures& figures) {
  while (!_steps.empty()) {
    const Step step = _steps.front();
    if (step.isTitle) {
      _steps.pop_front();
      ExpandTitle(step);
      continue;
    }
    const Outcome outcome = Perform(step, figures);
    const bool isAgain = outcome == Outcome::Transient || outcome == Outcome::Refused;
    if (isAgain && IsQuery(step.kind) && _retries < MaxRetries) {
      _clients.clear();  // Nobody keeps a connection for minutes.
      return Wait(outcome);
    }
    _retries = 0;
    const bool isReport = step.kind == Kind::DownloadProgress || step.kind == Kind::InstallProgress;
    if (outcome != Outcome::Answered && !isReport) _hasAll = false;
    // A query's answer has put what follows from it behind it.
    _steps.pop_front();
  }
  _clients.clear();
  return std::nullopt;
}

Device::Clock::duration Device::Wait(Outcome outcome) {
  const bool isRefused = outcome == Outcome::Refused;  // The windows are the agent's.
  const std::chrono::milliseconds wait(refhost::RetryWaitMilliseconds(
      _retries++, isRefused ? 2 : 60, isRefused ? 900 : 1800, Random()));
  return std::chrono::duration_cast<Clock::duration>(_target.waitScale * wait);
}

httplib::Client& Device::ClientFor(const std::string& origin) {
  std::unique_ptr<httplib::Client>& client = _clients[origin];
  if (client) return *client;
  client = std::make_unique<httplib::Client>(origin);
  client->set_keep_alive(true);
  client->set_tcp_nodelay(true);
  client->set_connection_timeout(TimeoutSeconds);
  client->set_read_timeout(TimeoutSeconds);
  // Each client reads it: the library adds to a store that it is given, so that none can be shared.
  if (!_target.authority.empty()) client->set_ca_cert_path(_target.authority);
  return *client;
}

Device::Outcome Device::Perform(const Step& step, Figures& figures) {
  const bool isFile = step.kind == Kind::File || step.kind == Kind::AskForFile;
  if (!isFile && !HasToken(figures)) return Outcome::Lost;
  Sample sample{step.kind, Clock::now(), {}, ""};
  Outcome outcome = Outcome::Refused;
  try {
    outcome = isFile ? Fetch(step, sample) : Ask(step, sample);
  } catch (const std::exception&) {  // A member of another kind, or an address that is none.
    sample.error = NotAsDescribed;
  }
  if (sample.end == Clock::time_point()) sample.end = Clock::now();
  figures.Add(sample);
  return outcome;
}

/// The host keeps a token for all requests; one that was not to be had is asked for again.
bool Device::HasToken(Figures& figures) {
  if (!_token.empty()) return true;
  Json::Value body;
  body["sessionToken"] = _target.sessionToken;
  const auto [origin, path] = Split(_target.tokenUrl);
  Sample sample{Kind::Token, Clock::now(), {}, ""};
  const httplib::Result reply = ClientFor(origin).Post(path, CompactText(body), JsonMediaType);
  sample.end = Clock::now();
  Json::Value grant;
  const bool isGiven = reply && reply->status == 200 && ParseStrict(reply->body, grant).empty() &&
                       grant.isObject() && grant["jwt"].isString();
  if (isGiven) _token = grant["jwt"].asString();
  if (!isGiven) sample.error = ErrorOf(reply);
  figures.Add(sample);
  return isGiven;
}

Device::Outcome Device::Ask(const Step& step, Sample& sample) {
  const std::string type = KindNames[static_cast<std::size_t>(step.kind)];
  Json::Value body;
  body["type"] = type;
  body["parameters"] = step.parameters;
  const auto [origin, path] = Split(_target.base + "/mp/zlt/v2/" + type + "?deviceId=" + _id);
  const httplib::Result reply =
      ClientFor(origin).Post(path, {{"token", _token}}, CompactText(body), JsonMediaType);
  sample.end = Clock::now();
  if (!reply || (reply->status != 200 && reply->status != 201)) {
    sample.error = ErrorOf(reply);
    return IsTransient(reply) ? Outcome::Transient : Outcome::Lost;
  }
  sample.bytes = reply->body.size();
  Json::Value answer;
  const bool isAnswer = ParseStrict(reply->body, answer).empty() && answer.isObject() &&
                        answer["result"].isObject() && answer["result"]["code"] == 0;
  if (isAnswer) Follow(step, answer["result"]);
  if (!isAnswer) sample.error = NotAsDescribed;
  return isAnswer ? Outcome::Answered : Outcome::Refused;
}

Device::Outcome Device::Fetch(const Step& step, Sample& sample) {
  const auto [origin, path] = Split(step.url);
  const auto count = [&sample](const char*, std::size_t length) {
    sample.bytes += length;
    return true;
  };
  httplib::Client& client = ClientFor(origin);
  const httplib::Result reply =
      step.kind == Kind::AskForFile ? client.Head(path) : client.Get(path, count);
  const bool isWhole =
      reply && reply->status == 200 && (step.kind == Kind::AskForFile || sample.bytes == step.size);
  if (!isWhole) sample.error = reply && reply->status == 200 ? "not whole" : ErrorOf(reply);
  return isWhole ? Outcome::Answered : Outcome::Lost;
}

/// Puts what an answer leads to behind the step that is under way.
void Device::Follow(const Step& step, const Json::Value& result) {
  if (step.kind == Kind::DownloadRequest) ExpandModule(step, result["fileList"]);
  if (step.kind != Kind::Entitlement || _target.listOnly || !result["swList"].isArray()) return;
  for (const Json::Value& title : result["swList"]) {
    _steps.push_back({.kind = Kind::DownloadRequest, .parameters = title, .isTitle = true});
  }
}

/// A title's modules are asked for one after the other before the first is fetched.
void Device::ExpandTitle(const Step& title) {
  auto place = _steps.begin();
  if (!title.parameters.isObject() || !title.parameters["moduleList"].isArray()) return;
  for (const Json::Value& module : title.parameters["moduleList"]) {
    if (!module.isObject()) {
      _hasAll = false;
      continue;
    }
    Json::Value parameters = With({}, {{"deviceId", _id},
                                       {"l1FruPn", title.parameters["l1FruPn"]},
                                       {"moduleFruPn", module["moduleFruPn"]}});
    place = std::next(_steps.insert(place, {Kind::DownloadRequest, std::move(parameters)}));
  }
}

void Device::ExpandModule(const Step& question, const Json::Value& files) {
  if (!files.isArray() || files.empty()) return;
  std::vector<Step> steps;
  const Json::Value module = With({}, {{"l1FruPn", question.parameters["l1FruPn"]},
                                       {"moduleFruPn", question.parameters["moduleFruPn"]},
                                       {"message", ""},
                                       {"custDeviceDate", "2031-05-01 12:30:00"}});
  const auto download = [&](int share) {
    return Step{Kind::DownloadProgress,
                With(module, {{"action", 0}, {"fileName", files[0]["name"]}, {"progress", share}})};
  };
  // One a minute is sent: of a quick installation the start and each module's end.
  if (!std::exchange(_hasReported, true)) steps.push_back(download(0));
  for (const Kind kind : {Kind::AskForFile, Kind::File}) {
    for (const Json::Value& file : files) {
      steps.push_back({kind, {}, file["downloadUrl"].asString(), file["size"].asUInt64()});
    }
  }
  steps.push_back(download(100));
  for (const int action : {0, 2}) {
    steps.push_back({Kind::InstallProgress, With(module, {{"action", action}})});
  }
  // Behind what the title's earlier modules have put there: before the next title, if there is one.
  const auto place =
      std::find_if(_steps.begin(), _steps.end(), [](const Step& step) { return step.isTitle; });
  _steps.insert(place, steps.begin(), steps.end());
}

}  // namespace cloudsim
