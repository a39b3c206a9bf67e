// The document that a host passes to GetInstallEntitledSoftwareStatus.

#include "tests/fuzz/FreshAgent.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Json::Value document;
  if (!ReadJson(Input{data, size}.Text(), document)) return 0;
  const std::string before = document.toStyledString(), bare = Bare(document);
  AgentFixture fresh;
  fresh.BeginInstallation();
  const unsigned long code = fresh.Agent().GetInstallEntitledSoftwareStatus(document);
  Require(code == 0 || code == ResultCode::Nothing || code == ResultCode::BadDocument, "a code");
  Require(code == 0 || document.toStyledString() == before,
          "without a match the document stays as it was");
  Require(Bare(document) == bare, "only status and progress are written");
  return 0;
}
