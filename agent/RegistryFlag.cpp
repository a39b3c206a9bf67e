#include "agent/AgentLog.h"
#include "agent/TolmarAgent.h"
#include "host/common/RegUtil.h"

void TolmarAgent::SetRegistryEntitlementFlag(unsigned char entitled) {
  const std::wstring subKey = L"Software\\Corvan\\ZLT\\Entitlement";
  CRegUtil registry;
  if (registry.CreateKey(HKEY_LOCAL_MACHINE, subKey) == 0) {
    logger.e(L"TolmarAgent: Failed to create registry path for entitled flag");
    return;
  }
  registry.SetKeyValueInt(HKEY_LOCAL_MACHINE, subKey, L"Entitled", entitled != 0 ? 1 : 0);
}
