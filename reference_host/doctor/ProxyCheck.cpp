#include "reference_host/doctor/ProxyCheck.h"

#include <windows.h>
// Behind windows.h, whose types it needs.
#include <winhttp.h>

#include "host/common/Text.h"
#include "reference_host/base/Url.h"
#include "reference_host/configuration/ConfigurationFile.h"

namespace refhost {

namespace {

/// @return a text that WinHTTP has allocated, which is freed.
std::wstring Taken(wchar_t* text) {
  std::wstring taken = text == nullptr ? L"" : text;
  GlobalFree(text);
  return taken;
}

std::wstring ProxyOfUser() {
  WINHTTP_CURRENT_USER_IE_PROXY_CONFIG user{};
  if (!WinHttpGetIEProxyConfigForCurrentUser(&user)) return {};
  const std::wstring script = WithoutQuery(Taken(user.lpszAutoConfigUrl));
  const std::wstring proxy = Taken(user.lpszProxy);
  Taken(user.lpszProxyBypass);
  std::wstring all = user.fAutoDetect ? L"found automatically" : L"";
  if (!script.empty()) all += (all.empty() ? L"" : L", else ") + (L"by the script " + script);
  if (!proxy.empty()) all += (all.empty() ? L"" : L", else ") + proxy;
  return all;
}

std::wstring ProxyOfMachine() {
  WINHTTP_PROXY_INFO machine{};
  if (!WinHttpGetDefaultProxyConfiguration(&machine)) return {};
  std::wstring proxy = Taken(machine.lpszProxy);
  Taken(machine.lpszProxyBypass);
  return proxy;
}

bool IsServiceOnThisMachine() {
  Url url;
  return ParseUrl(ZLT::String::UTF8ToUTF16(Settings().baseUrl), url) && IsLoopbackHost(url.host);
}

}  // namespace

Finding ExamineProxy(const Questions&) {
  if (IsServiceOnThisMachine()) return {"", Health::Ok, "none: the service is this machine's", ""};
  if (!Settings().proxy.empty()) {
    return {"", Health::Ok,
            ZLT::String::UTF16ToUTF8(Settings().proxy) + ", as configured, for downloads too", ""};
  }
  const std::wstring user = ProxyOfUser(), machine = ProxyOfMachine();
  if (user.empty() && machine.empty()) return {"", Health::Ok, "none", ""};
  const std::wstring found = L"this user's: " + (user.empty() ? L"none" : user) +
                             L"; the machine's (netsh winhttp): " +
                             (machine.empty() ? L"none" : machine);
  return {
      "", Health::Ok, ZLT::String::UTF16ToUTF8(found),
      "BITS as LocalSystem takes its own (bitsadmin /util /getieproxy localsystem), unless the key "
      "proxy names one for both."};
}

}  // namespace refhost
