#pragma once

#include <json/value.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "reference_host/configuration/Keys.h"

namespace refhost {

/// What is wrong with a value, in words for the person who wrote it.
struct ConfigurationFault : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Typed values of keys; a value of another type is never converted. Each throws
/// `ConfigurationFault`.
std::string TextOf(const Key& key, const Json::Value& value);
std::string UrlOf(const Key& key, const Json::Value& value);

/// WinHTTP and BITS have the plain form in common.
std::wstring ProxyOf(const Key& key, const Json::Value& value);

/// @return the folder without its trailing backslash.
std::wstring FolderOfKey(const Key& key, const Json::Value& value);
bool FlagOf(const Key& key, const Json::Value& value);
std::uint64_t NumberOf(const Key& key, const Json::Value& value);
double ShareOf(const Key& key, const Json::Value& value);

/// @return the position of the word among the key's.
int WordOf(const Key& key, const Json::Value& value);
std::vector<std::string> ThumbprintsOf(const Key& key, const Json::Value& value);
std::vector<std::string> ProgramsOf(const Key& key, const Json::Value& value);
std::vector<MaintenanceWindow> WindowsOf(const Key& key, const Json::Value& value);

/// @return the word at that position.
std::string WordAt(const char* words, int position);

}  // namespace refhost
