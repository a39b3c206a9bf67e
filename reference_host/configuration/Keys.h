#pragma once

#include <json/value.h>

#include <cstdint>
#include <span>
#include <string>

#include "reference_host/configuration/Configuration.h"

namespace refhost {

/// What a key takes.
enum class KeyType { Text, Flag, Number, Share, Word, Texts };

/// One key of the configuration, with all that there is to know of it: reading, showing and
/// checking go by this, and so do the documents (tests/host/portable/KeysTest.cpp).
struct Key {
  const char* name;
  const char* meaning;  ///< a phrase for a person, as docs/schema/configuration.json has it
  void (*take)(const Key& key, const Json::Value& value, Configuration& into);
  Json::Value (*show)(const Configuration& of);
  KeyType type;
  bool isMandatory = false;
  bool isSecret = false;              ///< shown to nobody, and no value of a policy, which all read
  const char* otherwise = nullptr;    ///< its default, where that is no value to be written down
  std::uint64_t least = 0, most = 0;  ///< of a number
  const char* words = nullptr;        ///< with a bar between them, in the order of their numbers
};

/// @return every key, in the order of the documents. Any thread.
std::span<const Key> AllKeys();

/// @return null when there is no such key.
const Key* FindKey(const std::string& name);

}  // namespace refhost
