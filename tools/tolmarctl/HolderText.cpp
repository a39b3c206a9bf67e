#include "tools/tolmarctl/HolderText.h"

#include "host/common/Text.h"
#include "reference_host/files/InstallationLease.h"

std::string HolderText(unsigned long otherThan) {
  const auto holder = refhost::InstallationLease::Holder();
  if (!holder || (otherThan != 0 && holder->processId == otherThan)) return {};
  return ZLT::String::UTF16ToUTF8(refhost::InstallationLease::Description(*holder));
}
