#include "tools/tolmarhost/Passing.h"

#include <json/writer.h>

#include <algorithm>
#include <cstdio>

namespace service {

bool IsPassing(const std::string& cause) {
  constexpr const char* Passing[] = {"token.none",       "reply.http-busy",  "reply.http-401",
                                     "device.disk-full", "device.lease",     "download.network",
                                     "download.stalled", "download.stopped", "download.service",
                                     "package.stopped",  "check.cancelled",  "device.file-in-use"};
  return cause.starts_with("network") ||
         std::find(std::begin(Passing), std::end(Passing), cause) != std::end(Passing);
}

std::string VersionOfLists(const std::vector<Json::Value>& lists) {
  Json::Value kept(Json::arrayValue);
  for (const Json::Value& list : lists) {
    if (!list.isObject() || !list["fileList"].isArray()) continue;
    for (Json::Value file : list["fileList"]) {
      if (file.isObject()) file.removeMember("downloadUrl");
      kept.append(file);
    }
  }
  // FNV-1a: nobody gains by two lists that look the same here.
  std::uint64_t hash = 0xCBF29CE484222325;
  for (const char c : Json::writeString(Json::StreamWriterBuilder(), kept)) {
    hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
  }
  char text[32];
  std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(hash));
  return text;
}

}  // namespace service
