#include "host/common/EpUrlProvider.h"

#include "host/common/Text.h"
#include "reference_host/configuration/ConfigurationFile.h"

namespace {

bool Give(std::string refhost::Configuration::*text, std::wstring& out) {
  const refhost::Configuration* configuration = refhost::GetConfiguration();
  if (configuration == nullptr) return false;
  out = ZLT::String::UTF8ToUTF16(configuration->*text);
  return true;
}

}  // namespace

EpUrlProvider* EpUrlProvider::GetInstance() {
  static EpUrlProvider provider;
  return &provider;
}

bool EpUrlProvider::GetBaseUrl(std::wstring& url) {
  return Give(&refhost::Configuration::baseUrl, url);
}

bool EpUrlProvider::GetRealm(std::wstring& realm) {
  return Give(&refhost::Configuration::realm, realm);
}
