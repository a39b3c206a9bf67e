#pragma once

#include <json/value.h>

#include <string>

namespace cloudsim {

struct Catalogue;
class SignedUrls;

/// One of the service's requests, checked: authorised, and its body is what its path says.
struct ServiceRequest {
  std::string type;
  std::string deviceId;
  Json::Value parameters;  ///< an object
};

/// Checks a body's shape. @param deviceId in, from the query.
/// @return an empty text, else what is wrong with it.
std::string FaultOfBody(const std::string& type, const std::string& deviceId,
                        const Json::Value& body);

/// What the service answers: {"result":{"code":0,...}}.
/// @param urls in, makes the addresses of files. @param expiredUrls in, true for addresses whose
/// time is over.
Json::Value AnswerTo(const ServiceRequest& request, const Catalogue& catalogue, SignedUrls& urls,
                     bool expiredUrls);

/// {"result":{"code":N}}
Json::Value BareAnswer(int code);

}  // namespace cloudsim
