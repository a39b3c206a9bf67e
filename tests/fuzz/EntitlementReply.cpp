// The service's reply to the entitlement request.

#include "host/common/Text.h"
#include "tests/fuzz/FreshAgent.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string body = Input{data, size}.Text();
  AgentFixture fresh;
  fresh.AnswerAlways("entitlement", body);
  Json::Value reply, whole;
  const unsigned long code = fresh.Agent().GetEntitledSoftware(reply);
  fresh.RequireQueryCode(code, ResultCode::EntitlementRefused);
  if (code != 0) return 0;
  Require(ReadJson(ZLT::String::UTF16ToUTF8(ZLT::String::UTF8ToUTF16(body)), whole), "it is JSON");
  Require(whole.isNull() ? reply.isNull() : reply == whole["result"], "the caller has the result");
  return 0;
}
