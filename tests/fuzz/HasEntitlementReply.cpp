// The service's reply to the has-entitlement request.

#include "tests/fuzz/FreshAgent.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  AgentFixture fresh;
  fresh.AnswerAlways("hasEntitlement", Input{data, size}.Text());
  unsigned char entitled = 2;
  const unsigned long code = fresh.Agent().HasEntitledSoftware(entitled);
  fresh.RequireQueryCode(code, ResultCode::HasEntitlementRefused);
  Require(entitled <= (code == 0 ? 1 : 2), "0, 1, or untouched when no reply could be read");
  const std::string published = fresh.Host().Transcript({"value "});
  const std::string last = " Entitled " + std::to_string(entitled) + "\n";
  Require(code == 0 ? published.ends_with(last) : code != 200 || published.empty(),
          "the registry tells what the caller was told");
  return 0;
}
