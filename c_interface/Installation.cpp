#include "c_interface/Installation.h"

#include <json/value.h>

#include <chrono>
#include <cstdlib>
#include <future>
#include <string>

#include "agent/TolmarAgent.h"
#include "c_interface/Call.h"
#include "c_interface/Events.h"
#include "catalogue/JsonText.h"

namespace c_interface {

namespace {

constexpr std::uint32_t DefaultInterval = 500;  ///< milliseconds

/// Tells the host each change of the title that is being installed.
class Follower {
 public:
  Follower(TolmarAgent& agent, const Json::Value& titles, const tolmar_install_options& options)
      : _agent(agent), _options(options) {
    for (const Json::Value& title : Member(titles, "swList")) {
      _asked["swList"].append(Json::objectValue)["l1FruPn"] = Member(title, "l1FruPn");
    }
    Look(false);  // What an earlier installation has left is no news.
  }

  /// What fails here, the callback itself included, is progress that is not told.
  void Look(bool isNews = true) noexcept try {
    Json::Value answer = _asked;
    if (_agent.GetInstallEntitledSoftwareStatus(answer) != 0) return;
    for (const Json::Value& title : Member(answer, "swList")) {
      const std::string status = title["status"].asString();
      if (status.empty() || title == _told) continue;
      _told = title;
      if (isNews) Tell(title["l1FruPn"].asString(), status, title["progress"].asString());
    }
  } catch (...) {
  }

 private:
  void Tell(const std::string& title, const std::string& status, const std::string& percent) const {
    const auto number = static_cast<std::int32_t>(std::strtol(percent.c_str(), nullptr, 10));
    const tolmar_progress progress{sizeof progress, number, title.c_str(), status.c_str()};
    _options.on_progress(_options.context, &progress);
  }

  TolmarAgent& _agent;
  const tolmar_install_options& _options;
  Json::Value _asked;  ///< the titles' part numbers alone: a document may be large
  Json::Value _told;
};

}  // namespace

std::uint32_t Install(TolmarAgent& agent, Json::Value& document,
                      const tolmar_install_options& options) {
  const auto install = [&agent, &document, &options] {
    return agent.InstallEntitledSoftware(document, CancelHandle(options.cancel),
                                         options.preinstall_only != 0);
  };
  if (options.on_progress == nullptr) return static_cast<std::uint32_t>(install());
  // The installation moves to another thread, so that the host's callback need not: many languages
  // know only threads of their own.
  Follower follower(agent, document, options);
  auto installation = std::async(std::launch::async, [&] { return Guarded(install); });
  const std::chrono::milliseconds interval(options.interval_ms != 0 ? options.interval_ms
                                                                    : DefaultInterval);
  while (installation.wait_for(interval) == std::future_status::timeout) follower.Look();
  follower.Look();
  return installation.get();
}

}  // namespace c_interface
