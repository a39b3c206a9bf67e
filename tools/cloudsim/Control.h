#pragma once

#include <httplib.h>

#include "tools/cloudsim/Catalogue.h"
#include "tools/cloudsim/Downloads.h"
#include "tools/cloudsim/Faults.h"
#include "tools/cloudsim/Received.h"

namespace cloudsim {

/// What tests and people ask the simulator itself: its record, its faults, and the console that
/// shows both. Answers this machine's own names alone, so that no page of another site that a
/// browser takes for this machine's can read or change anything. Any thread.
class Control {
 public:
  /// All of them must outlive the object.
  Control(const Catalogue& catalogue, Faults& faults, Received& received,
          const Downloads& downloads);

  /// Adds the routes to a server, which must end before this object does.
  /// @param onHead in, answers HEAD of "/", with which a device asks whether the service is there.
  void Register(httplib::Server& server, const httplib::Server::Handler& onHead);

 private:
  void OnPage(const httplib::Request& request, httplib::Response& response);
  void OnState(const httplib::Request& request, httplib::Response& response);
  void OnReceived(const httplib::Request& request, httplib::Response& response);
  void OnForget(const httplib::Request& request, httplib::Response& response);
  void OnFaults(const httplib::Request& request, httplib::Response& response);

  Json::Value Offer() const;
  void ChangeFaults(const httplib::Request& request);

  const Catalogue& _catalogue;
  Faults& _faults;
  Received& _received;
  const Downloads& _downloads;
};

}  // namespace cloudsim
