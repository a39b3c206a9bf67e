#pragma once

#include <json/forwards.h>
#include <windows.h>

#include <string>
#include <vector>

#include "service/RequestBody.h"

/// What an installation takes, done by calls of the host suite alone: the same exchanges,
/// downloads, extractions and script runs as the agent's, one behind the other, without its
/// records, locks, retries, status words and log. The floor that the agent is measured against.
namespace StraightLine {

struct File {
  std::wstring name;
  std::wstring url;
};

/// @return the header lines with a fresh token.
std::wstring Headers();

/// @return the address of a request. @param type in, as "hasEntitlement".
std::wstring UrlOf(const wchar_t* type);

/// @return the body of a request that names the device and nothing else.
std::string DeviceBody(const wchar_t* type);

/// One exchange with the service. @return the reply. @throws std::runtime_error when there is none.
std::string Post(const wchar_t* type, const std::string& body);

/// @return the files of a module. @throws std::runtime_error when the service names none.
std::vector<File> FilesOf(const std::string& title, const std::string& module);

/// Installs the titles of the document, the first file of each module being its package and the
/// last its check script; blocks.
/// @throws std::runtime_error when a step fails.
void Install(const Json::Value& document);

}  // namespace StraightLine
