// The document that a host passes to InstallEntitledSoftware.

#include "tests/fuzz/FreshAgent.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Json::Value document;
  if (!ReadDocument(Input{data, size}.Text(), document)) return 0;
  const std::string before = Bare(document);
  AgentFixture fresh;
  fresh.BeginInstallation();
  const unsigned long code =
      fresh.Agent().InstallEntitledSoftware(document, fresh.Cancel(), size % 2 != 0);
  Require(code == 0 || code == ResultCode::RequestException || code == ResultCode::BadDocument ||
              code == ResultCode::Nothing,
          "a code of the installation's");
  Require(fresh.HoldsInstallLock() == (code == ResultCode::BadDocument), "the lock is given back");
  Require(Bare(document) == before, "only status and progress are written");
  return 0;
}
