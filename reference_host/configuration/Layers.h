#pragma once

#include <json/value.h>

#include <cstdint>
#include <map>
#include <string>
#include <variant>
#include <vector>

#include "reference_host/configuration/Keys.h"

namespace refhost {

/// Where a value of the configuration comes from, the weakest first.
enum class Source { Default, Setup, File, Store, Policy };

/// @return "default", "setup", "file", "store", "policy".
const char* NameOf(Source source);

/// What one source says.
struct Layer {
  Source source = Source::File;
  std::string name;                       ///< for complaints: the file's path, the registry's key
  Json::Value values{Json::objectValue};  ///< by the keys' names
};

/// What they come to, put together.
struct Effective {
  Configuration configuration;
  std::map<std::string, Source> sources;  ///< by key; one that is not there: the default
};

/// Puts a configuration together; portable, no file or registry is touched.
/// @param layers in, the strongest first; the last one is told to be what lacks a key.
/// @param effective out, complete on success only.
/// @return an empty text on success, else one line naming layer and key. What a stronger layer says
/// is not looked for in a weaker one, so its mistakes there do no harm.
std::string Combine(const std::vector<Layer>& layers, Effective& effective);

/// @return every mistake in them, a line each: those that `Combine` would tell of, those that a
/// stronger layer covers, and keys that nobody knows.
std::vector<std::string> ComplaintsOver(const std::vector<Layer>& layers);

/// Reads a layer's values from JSON text.
/// @return an empty text on success, else one line that begins with the layer's name.
std::string ReadValues(const std::string& json, Layer& layer);

/// Both for a file alone. @param fileName in, for the error text.
std::string ParseConfiguration(const std::string& fileName, const std::string& json,
                               Configuration& configuration);

/// @return the settings as they may be shown to others, a list of objects with "key", "value"
/// (null: the default is none to be written down), "source" and "meaning": without the session
/// token and the queries of addresses.
Json::Value Shareable(const Effective& effective);

/// A value as the registry has it: a text, a number or a list of texts; nothing: of another kind.
using PolicyValue =
    std::variant<std::monostate, std::string, std::uint64_t, std::vector<std::string>>;

/// @return the value as the key wants it: flags are 0 or 1, what a text tells of a number or a flag
/// is taken for that, and a single text for a list of one. What does not suit is left as it is, for
/// `Combine` to refuse.
Json::Value FromPolicy(const Key& key, const PolicyValue& value);

/// Which file a host reads. Pure.
/// @param isService in, true: the variable is not followed, since what starts a service may pass on
/// what somebody else has set. @param variable in, what the environment names, may be empty.
/// @param machine in, what the machine's administrators have set, may be empty.
std::wstring FileToRead(bool isService, const std::wstring& variable, const std::wstring& machine);

}  // namespace refhost
