#include "tools/cloudsim/Control.h"

#include <cstdlib>
#include <limits>
#include <string>

#include "tools/cloudsim/ConsolePage.h"
#include "tools/cloudsim/Crypto.h"
#include "tools/cloudsim/JsonNode.h"
#include "tools/cloudsim/UnixTime.h"

namespace cloudsim {
namespace {

constexpr std::size_t MaxExchanges = 2000;  ///< in one state; the console asks for the rest at once

/// Requests by another name may come from a page of that name, whose server has told the browser
/// that it is here.
bool IsForThisMachine(const httplib::Request& request) {
  const std::string host = request.get_header_value("Host");
  const std::string name = host.substr(0, host.find(':', host.find(']') + 1));
  return name == "localhost" || name == "127.0.0.1" || name == "[::1]";
}

std::string Replaced(std::string text, const std::string& what, const std::string& by) {
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size()) {
    text.replace(at, what.size(), by);
  }
  return text;
}

void Answer(httplib::Response& response, int status, const Json::Value& value) {
  response.status = status;
  response.set_header("Cache-Control", "no-store");
  response.set_content(CompactText(value), JsonMediaType);
}

}  // namespace

Control::Control(const Catalogue& catalogue, Faults& faults, Received& received,
                 const Downloads& downloads)
    : _catalogue(catalogue), _faults(faults), _received(received), _downloads(downloads) {}

void Control::Register(httplib::Server& server, const httplib::Server::Handler& onHead) {
  using Handler = void (Control::*)(const httplib::Request&, httplib::Response&);
  const auto to = [this](Handler handler) {
    return [this, handler](const auto& request, auto& response) {
      if (!IsForThisMachine(request))
        return Answer(response, 403, ErrorDocument("ask for localhost"));
      (this->*handler)(request, response);
    };
  };
  server.Get("/", [onHead, onPage = to(&Control::OnPage)](const auto& request, auto& response) {
    request.method == "HEAD" ? onHead(request, response) : onPage(request, response);
  });
  server.Get("/console/state", to(&Control::OnState));
  server.Get("/received", to(&Control::OnReceived));
  server.Delete("/received", to(&Control::OnForget));
  server.Put("/faults", to(&Control::OnFaults));
  server.Patch("/faults", to(&Control::OnFaults));
}

/// The page runs and looks like what came with it, and asks nobody but this server.
void Control::OnPage(const httplib::Request&, httplib::Response& response) {
  const std::string nonce = Base64UrlEncode(RandomKey());
  response.set_header("Content-Security-Policy",
                      "default-src 'none'; script-src 'nonce-" + nonce + "'; style-src 'nonce-" +
                          nonce +
                          "'; connect-src 'self'; img-src data:; base-uri 'none'; "
                          "form-action 'none'; frame-ancestors 'none'");
  response.set_header("X-Content-Type-Options", "nosniff");
  response.set_header("Referrer-Policy", "no-referrer");
  response.set_header("Cache-Control", "no-store");
  response.set_content(Replaced(ConsolePage, "@NONCE@", nonce), "text/html; charset=utf-8");
}

void Control::OnState(const httplib::Request& request, httplib::Response& response) {
  const std::uint64_t since = std::strtoull(request.get_param_value("since").c_str(), nullptr, 10);
  Json::Value state;
  state["now"] = Json::Int64{1000 * UnixNow()};
  state["last"] = static_cast<Json::UInt64>(_received.Last());
  state["downloads"] = _downloads.ToJson();
  state["faults"] = Json::arrayValue;
  for (const Fault& fault : _faults.List()) state["faults"].append(ToJson(fault));
  if (request.has_param("offer")) state["offer"] = Offer();
  std::string text = CompactText(state);
  text.back() = ',';  // The record is text already.
  text += "\"received\":" + _received.Text(since, MaxExchanges) + "}";
  response.set_header("Cache-Control", "no-store");
  response.set_content(text, JsonMediaType);
}

Json::Value Control::Offer() const {
  Json::Value offer = Json::arrayValue;
  for (const CatalogueTitle& title : _catalogue.titles) {
    Json::Value& entry = offer.append(Json::objectValue);
    entry["l1FruPn"] = title.l1FruPn;
    entry["modules"] = entry["files"] = Json::arrayValue;
    for (const CatalogueModule& module : title.modules) {
      entry["modules"].append(module.moduleFruPn);
      for (const CatalogueFile& file : module.files) entry["files"].append(file.name);
    }
  }
  return offer;
}

void Control::OnReceived(const httplib::Request&, httplib::Response& response) {
  response.set_content(_received.Text(0, std::numeric_limits<std::size_t>::max()), JsonMediaType);
}

void Control::OnForget(const httplib::Request&, httplib::Response& response) {
  _received.Clear();
  Answer(response, 200, Json::objectValue);
}

void Control::OnFaults(const httplib::Request& request, httplib::Response& response) {
  try {
    ChangeFaults(request);
    Answer(response, 200, Json::objectValue);
  } catch (const DocumentError& flaw) {
    Answer(response, 400, ErrorDocument(flaw.what()));
  }
}

/// @throws DocumentError naming the key at fault; then nothing has changed.
void Control::ChangeFaults(const httplib::Request& request) {
  Json::Value body;
  const std::string flaw = ParseStrict(request.body, body);
  if (!flaw.empty()) throw DocumentError(flaw);
  const auto isFile = [this](const std::string& name) { return _catalogue.HasFileNamed(name); };
  if (request.method == "PUT") return _faults.Replace(ReadFaults(JsonNode(body, "faults"), isFile));
  const JsonNode change(body);
  change.RequireOnly({"fault", "active"});
  const bool active = change.At("active").Flag();
  _faults.Switch(ReadFault(change.At("fault"), isFile), active);
}

}  // namespace cloudsim
