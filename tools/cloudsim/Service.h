#pragma once

#include <httplib.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>

#include "tools/cloudsim/Catalogue.h"
#include "tools/cloudsim/Contents.h"
#include "tools/cloudsim/Control.h"
#include "tools/cloudsim/Downloads.h"
#include "tools/cloudsim/Faults.h"
#include "tools/cloudsim/Received.h"
#include "tools/cloudsim/SignedUrls.h"
#include "tools/cloudsim/Tokens.h"

namespace cloudsim {

/// How long what the service hands out stays in force.
struct Lifetimes {
  std::chrono::seconds jwt;
  std::chrono::seconds url;
};

/// The cloud service behind the sockets: which request gets which answer. Handlers run on the
/// servers' threads, many at once; a request is on record before its answer leaves.
class Service {
 public:
  /// @param base in, what file addresses start with, as in "https://localhost:8443".
  /// @param fileRate in, bytes a second that each file leaves with; 0: as quick as it goes.
  Service(Catalogue catalogue, FaultList faults, const std::string& realm, const std::string& base,
          Lifetimes lifetimes, std::uint64_t fileRate);

  /// Adds the routes to a server, which must end before this object does.
  void Register(httplib::Server& server);

  /// The same, but only what is not a device's.
  void RegisterControl(httplib::Server& server);

  /// Ends the delays under way, so that the servers can end at once.
  void Stop();

 private:
  struct Answer;

  void OnToken(const httplib::Request& request, httplib::Response& response);
  void OnServiceRequest(const httplib::Request& request, httplib::Response& response);
  void OnFile(const httplib::Request& request, httplib::Response& response);
  void OnUnknown(const httplib::Request& request, httplib::Response& response);

  Answer AnswerToService(const Exchange& exchange, const std::string& deviceId,
                         const std::optional<Fault>& fault);
  Answer AnswerWithFile(const httplib::Request& request, const CatalogueFile* file, bool authorised,
                        bool garbage);
  Contents Sent(const httplib::Request& request, const CatalogueFile& file, const Slice& slice,
                bool garbage);
  static void Play(const Fault& fault, bool isFile, Answer& answer);
  static void KeepReply(Answer& answer, Exchange& exchange);
  void Deliver(const httplib::Request& request, httplib::Response& response, Exchange exchange,
               Answer answer, const std::optional<Fault>& fault);
  void WaitUnlessStopped(std::chrono::milliseconds duration);

  const Catalogue _catalogue;
  Tokens _tokens;
  SignedUrls _urls;
  const std::uint64_t _fileRate;
  Faults _faults;
  Received _received;
  Downloads _downloads;
  Control _control{_catalogue, _faults, _received, _downloads};
  std::mutex _mutex;
  std::condition_variable _stopping;
  bool _stopped = false;
};

}  // namespace cloudsim
