#include "host/common/HttpRequest.h"

#include "host/common/Log.h"
#include "reference_host/base/Url.h"
#include "reference_host/http/HttpFile.h"
#include "reference_host/http/HttpPost.h"

namespace ZLT {

namespace {

std::wstring TextOf(const wchar_t* text) { return text != nullptr ? text : L""; }

}  // namespace

const HttpTimeouts HttpTimeouts::DEFAULT{15000, 15000, 30000, 30000};

struct HttpRequest::State {
  refhost::HttpCall call;
  unsigned long status = 0;
  std::string body;
  std::stringstream stream;
};

HttpRequest::HttpRequest(const wchar_t* url, const wchar_t* userAgent, const wchar_t* proxy,
                         HttpTimeouts timeouts)
    : m_pState(new State) {
  m_pState->call.url = TextOf(url);
  m_pState->call.userAgent = TextOf(userAgent);
  m_pState->call.proxy = TextOf(proxy);
  m_pState->call.timeouts = timeouts;
}

HttpRequest::~HttpRequest() { delete m_pState; }

bool HttpRequest::doPost(const char* body, unsigned long length, const wchar_t* headers) {
  State& state = *m_pState;
  state.call.body = {body, length};
  state.call.headers = TextOf(headers);
  refhost::HttpReply reply = refhost::Post(state.call);
  state.status = reply.error != 0 ? reply.error : reply.status;
  state.body = std::move(reply.body);
  state.stream.str(state.body);
  state.stream.clear();
  return reply.error == 0;
}

unsigned long HttpRequest::getStatusCode() const { return m_pState->status; }

unsigned long HttpRequest::getStreamLength() const {
  return static_cast<unsigned long>(m_pState->body.size());
}

std::stringstream& HttpRequest::getStream() { return m_pState->stream; }

bool HttpRequest::DownloadFile(const std::wstring& url, const std::wstring& localPath,
                               const std::wstring& headers) {
  const std::wstring cause = refhost::FetchFile(url, localPath, headers);
  if (!cause.empty()) {
    g_log.e(L"HttpRequest: %s from %s, attempt 1: %s", localPath.c_str(),
            refhost::WithoutQuery(url).c_str(), cause.c_str());
  }
  return cause.empty();
}

}  // namespace ZLT
