// The document that a host passes to GetEntitledSoftwareStatus.

#include "tests/fuzz/FreshAgent.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Json::Value document;
  if (!ReadDocument(Input{data, size}.Text(), document)) return 0;
  const std::string before = Bare(document);
  AgentFixture fresh;
  const unsigned long code =
      fresh.Agent().GetEntitledSoftwareStatus(document, fresh.Cancel(), size % 2 != 0);
  Require(code == 0 || code == ResultCode::BadDocument, "0 or 39");
  Require(Bare(document) == before, "only status and progress are written");
  return 0;
}
