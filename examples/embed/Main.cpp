#include <json/value.h>
#include <windows.h>

#include <cstdio>
#include <thread>

#include "agent/TolmarAgent.h"

int main() {
  // The first call starts the agent up, which asks the service on a registered device.
  TolmarAgent& agent = *TolmarAgent::GetInstance();
  HANDLE cancel = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  Json::Value titles;
  unsigned long code = agent.GetEntitledSoftware(titles);
  if (code == 0) code = agent.GetEntitledSoftwareStatus(titles, cancel, false);
  if (code == 0) {
    HANDLE done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::thread follower([&agent, done, copy = titles]() mutable {  // How is it getting on?
      while (WaitForSingleObject(done, 500) == WAIT_TIMEOUT) {
        if (agent.GetInstallEntitledSoftwareStatus(copy) != 0) continue;
        std::printf("%s\n", copy.toStyledString().c_str());
      }
    });
    code = agent.InstallEntitledSoftware(titles, cancel, false);  // SetEvent(cancel) stops it.
    SetEvent(done);
    follower.join();
    CloseHandle(done);
  }
  for (const Json::Value& title : titles["swList"]) {
    std::printf("%s: %s\n", title["l1FruPn"].asCString(), title["status"].asCString());
  }
  agent.CleanUp();      // Always, before the library is unloaded.
  CloseHandle(cancel);  // Only now: the agent keeps the newest handle that it was given.
  return code == 0 ? 0 : 1;
}
