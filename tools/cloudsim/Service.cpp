#include "tools/cloudsim/Service.h"

#include <json/value.h>

#include <utility>

#include "tools/cloudsim/Answers.h"
#include "tools/cloudsim/JsonNode.h"
#include "tools/cloudsim/RequestTypes.h"

namespace cloudsim {
namespace {

constexpr std::size_t MaxRawBody = 4096;  ///< bytes on record of a body that is not JSON

}  // namespace

/// What goes back, before a fault touches its delivery.
struct Service::Answer {
  int status;
  Contents contents;
  httplib::Headers headers{};
  Json::Value reply{};  ///< `contents`, when they are JSON and the service's own

  Answer(int code, Contents bytes) : status(code), contents(std::move(bytes)) {}
  Answer(int code, Json::Value value)
      : Answer(code, TextContents(CompactText(value), JsonMediaType)) {
    reply = std::move(value);
  }
};

namespace {

Contents GarbageContents() { return TextContents("<garbage {\"result\": [", JsonMediaType); }

Exchange ExchangeOf(const httplib::Request& request, std::string_view type) {
  Exchange exchange;
  exchange.method = request.method;
  exchange.path = request.path;
  const std::size_t mark = request.target.find('?');
  if (mark != std::string::npos) exchange.query = WithoutSignature(request.target.substr(mark + 1));
  exchange.type = type;
  for (const char* name : {"Content-Type", "Range", "If-Range"}) {
    if (request.has_header(name)) exchange.headers[name] = request.get_header_value(name);
  }
  return exchange;
}

void KeepBody(const std::string& text, Exchange& exchange) {
  if (!ParseStrict(text, exchange.body).empty()) exchange.rawBody = text.substr(0, MaxRawBody);
}

bool Has(const std::optional<Fault>& fault, FaultKind kind) { return fault && fault->Is(kind); }

void Send(const httplib::Request& request, httplib::Response& response, int status,
          const Contents& contents) {
  // Parts of files are cut here (see RequestedSlice). The server would cut every body anew, and
  // past its end; it offers no other way to keep it from that. The object itself is not constant.
  const_cast<httplib::Request&>(request).ranges.clear();
  Fill(response, status, contents);
}

}  // namespace

Service::Service(Catalogue catalogue, FaultList faults, const std::string& realm,
                 const std::string& base, Lifetimes lifetimes, std::uint64_t fileRate)
    : _catalogue(std::move(catalogue)),
      _tokens(_catalogue.sessionToken, realm, lifetimes.jwt),
      _urls(base, lifetimes.url),
      _fileRate(fileRate),
      _faults(std::move(faults)) {}

void Service::Register(httplib::Server& server) {
  using Handler = void (Service::*)(const httplib::Request&, httplib::Response&);
  const auto to = [this](Handler handler) {
    return [this, handler](const auto& request, auto& response) {
      (this->*handler)(request, response);
    };
  };
  RegisterControl(server);
  server.Post("/token", to(&Service::OnToken));
  server.Post("/mp/zlt/v2/([A-Za-z]+)", to(&Service::OnServiceRequest));
  server.Get("/files/.*", to(&Service::OnFile));
  server.Get(".*", to(&Service::OnUnknown));
  server.Post(".*", to(&Service::OnUnknown));
  server.Put(".*", to(&Service::OnUnknown));
  server.Patch(".*", to(&Service::OnUnknown));
  server.Delete(".*", to(&Service::OnUnknown));
}

void Service::RegisterControl(httplib::Server& server) {
  _control.Register(server,
                    [this](const auto& request, auto& response) { OnUnknown(request, response); });
}

void Service::Stop() {
  {
    const std::scoped_lock lock(_mutex);
    _stopped = true;
  }
  _stopping.notify_all();
}

void Service::OnToken(const httplib::Request& request, httplib::Response& response) {
  const std::optional<Fault> fault = _faults.Next(std::string(TokenType));
  Exchange exchange = ExchangeOf(request, TokenType);
  exchange.body = Json::objectValue;  // The body holds the token and nothing else.
  Json::Value body;
  const bool readable =
      ParseStrict(request.body, body).empty() && body.isObject() && body["sessionToken"].isString();
  exchange.authorised = readable && _tokens.IsSessionToken(body["sessionToken"].asString());
  Answer answer(400, ErrorDocument("the body must be {\"sessionToken\":\"...\"}"));
  if (exchange.authorised) {
    Json::Value grant;
    grant["jwt"] = _tokens.Issue();
    answer = Answer(200, std::move(grant));
  } else if (readable) {
    answer = Answer(401, ErrorDocument("no such session token"));
  }
  Deliver(request, response, std::move(exchange), std::move(answer), fault);
}

void Service::OnServiceRequest(const httplib::Request& request, httplib::Response& response) {
  const std::string type = request.matches[1];
  if (!IsServiceRequest(type)) return OnUnknown(request, response);
  const std::optional<Fault> fault = _faults.Next(type);
  Exchange exchange = ExchangeOf(request, type);
  KeepBody(request.body, exchange);
  exchange.authorised = _tokens.IsValid(request.get_header_value("token"));
  Answer answer = AnswerToService(exchange, request.get_param_value("deviceId"), fault);
  Deliver(request, response, std::move(exchange), std::move(answer), fault);
}

Service::Answer Service::AnswerToService(const Exchange& exchange, const std::string& deviceId,
                                         const std::optional<Fault>& fault) {
  if (!exchange.authorised) return {401, ErrorDocument("no valid token")};
  if (exchange.rawBody) return {400, ErrorDocument("the body is not JSON")};
  const std::string flaw = FaultOfBody(exchange.type, deviceId, exchange.body);
  if (!flaw.empty()) return {400, ErrorDocument(flaw)};
  if (Has(fault, FaultKind::ResultCode)) {
    return {200, BareAnswer(static_cast<int>(fault->value))};
  }
  const ServiceRequest request{exchange.type, deviceId, exchange.body["parameters"]};
  const bool expired = Has(fault, FaultKind::Expired);
  return {200, AnswerTo(request, _catalogue, _urls, expired)};
}

void Service::OnFile(const httplib::Request& request, httplib::Response& response) {
  const CatalogueFile* file = _catalogue.FindFile(request.path);
  std::optional<Fault> fault;
  if (file != nullptr && request.method == "GET") {
    fault = _faults.Next(std::string(FilePrefix) + file->name);
  }
  Exchange exchange = ExchangeOf(request, FileType);
  exchange.authorised =
      !Has(fault, FaultKind::Expired) &&
      _urls.IsValid(request.path, request.get_param_value("device"),
                    request.get_param_value("expires"), request.get_param_value("signature"));
  Answer answer =
      AnswerWithFile(request, file, exchange.authorised, Has(fault, FaultKind::Garbage));
  Deliver(request, response, std::move(exchange), std::move(answer), fault);
}

Contents Service::Sent(const httplib::Request& request, const CatalogueFile& file,
                       const Slice& slice, bool garbage) {
  Contents contents = FileContents(file, slice.offset, slice.length, garbage);
  if (request.method != "GET" || slice.length == 0) return contents;
  const auto download = std::make_shared<Download>();
  download->device = request.get_param_value("device");
  download->path = file.urlPath;
  download->from = slice.offset;
  download->size = file.size;
  contents = _downloads.Follow(std::move(contents), download);
  if (_fileRate == 0) return contents;
  return PacedAt(std::move(contents), _fileRate, [this](auto time) { WaitUnlessStopped(time); });
}

Service::Answer Service::AnswerWithFile(const httplib::Request& request, const CatalogueFile* file,
                                        bool authorised, bool garbage) {
  if (!authorised || file == nullptr) {
    return {403, ErrorDocument("the address has expired or is not of this service")};
  }
  const std::string tag = "\"" + file->crc + "\"";
  const Slice slice = RequestedSlice(request, file->size, tag);
  Answer answer(slice.status, Sent(request, *file, slice, garbage));
  answer.headers = {{"Accept-Ranges", "bytes"}, {"ETag", tag}};
  const std::string size = std::to_string(file->size);
  if (slice.status == 416) answer.headers.emplace("Content-Range", "bytes */" + size);
  if (slice.status == 206) {
    answer.headers.emplace("Content-Range", "bytes " + std::to_string(slice.offset) + "-" +
                                                std::to_string(slice.offset + slice.length - 1) +
                                                "/" + size);
  }
  return answer;
}

void Service::OnUnknown(const httplib::Request& request, httplib::Response& response) {
  Exchange exchange = ExchangeOf(request, UnknownType);
  Deliver(request, response, std::move(exchange), Answer(404, ErrorDocument("no such path")),
          std::nullopt);
}

void Service::Play(const Fault& fault, bool isFile, Answer& answer) {
  if (fault.Is(FaultKind::Status)) {
    answer = Answer(static_cast<int>(fault.value), TextContents("", JsonMediaType));
  } else if (fault.Is(FaultKind::Garbage) && !isFile) {  // A file's garbage comes from the file.
    answer.contents = GarbageContents();
    answer.reply = Json::nullValue;
  } else if (fault.Is(FaultKind::Reply)) {
    answer.contents = TextContents(fault.reply, JsonMediaType);
    answer.reply = Json::nullValue;
  } else if (fault.Is(FaultKind::DropAfter)) {
    answer.contents =
        BrokenAfter(std::move(answer.contents), static_cast<std::uint64_t>(fault.value));
  }
}

void Service::KeepReply(Answer& answer, Exchange& exchange) {
  exchange.status = answer.status;
  exchange.reply = WithoutSecrets(std::move(answer.reply));
  exchange.replyHeaders["Content-Type"] = answer.contents.mediaType;
  exchange.replyHeaders["Content-Length"] = std::to_string(answer.contents.length);
  for (const auto& [name, value] : answer.headers) exchange.replyHeaders[name] = value;
}

void Service::Deliver(const httplib::Request& request, httplib::Response& response,
                      Exchange exchange, Answer answer, const std::optional<Fault>& fault) {
  if (fault) {
    exchange.fault = NameOf(fault->kind);
    Play(*fault, exchange.type == FileType, answer);
  }
  KeepReply(answer, exchange);
  _received.Add(std::move(exchange));
  if (Has(fault, FaultKind::DelayMs)) {
    WaitUnlessStopped(std::chrono::milliseconds(fault->value));
  }
  for (const auto& [name, value] : answer.headers) response.set_header(name, value);
  Send(request, response, answer.status, answer.contents);
}

void Service::WaitUnlessStopped(std::chrono::milliseconds duration) {
  std::unique_lock lock(_mutex);
  _stopping.wait_for(lock, duration, [this] { return _stopped; });
}

}  // namespace cloudsim
