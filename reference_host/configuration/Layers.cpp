#include "reference_host/configuration/Layers.h"

#include <json/reader.h>

#include <algorithm>
#include <memory>

#include "host/common/Text.h"
#include "reference_host/base/Url.h"
#include "reference_host/configuration/Values.h"

namespace refhost {

namespace {

/// For editors; the host takes no notice of it.
constexpr const char* SchemaKey = "$schema";

std::string Complaint(const Layer& layer, const std::string& what) {
  return layer.name + ": " + what;
}

/// @return what is wrong with the value, empty when nothing is.
std::string Take(const Layer& layer, const Key& key, Configuration& into) try {
  if (key.isSecret && (layer.source == Source::Policy || layer.source == Source::Setup)) {
    return Complaint(layer, "key \"" + std::string(key.name) +
                                "\" is a secret, and everybody may read this: use tolmarctl config "
                                "set-token");
  }
  key.take(key, layer.values[key.name], into);
  return {};
} catch (const ConfigurationFault& fault) {
  return Complaint(layer, fault.what());
}

/// @return the reader's complaint ("* Line 2, Column 5\n  Missing ...") on one line. It may quote
/// the file, and with it any control character.
std::string OnOneLine(const std::string& complaint) {
  std::string line;
  for (const char c : complaint) {
    const bool control = static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
    const bool blank = control || c == ' ' || c == '*';
    if (!blank) line += c;
    if (blank && !line.empty() && line.back() != ' ') line += ' ';
  }
  return line.substr(0, line.find_last_not_of(' ') + 1);
}

/// @return the value that the text is of JSON's, the text itself when it is none.
Json::Value Meant(const std::string& text) {
  Json::Value value;
  Json::CharReaderBuilder builder;
  builder["failIfExtra"] = true;
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  const bool isRead = reader->parse(text.data(), text.data() + text.size(), &value, nullptr);
  return isRead && (value.isNumeric() || value.isBool()) ? value : Json::Value(text);
}

Json::Value Shared(const Key& key, const Effective& effective) {
  if (key.isSecret) return "[left out]";
  Json::Value value = key.show(effective.configuration);
  const bool isUnset = effective.sources.count(key.name) == 0 && key.otherwise != nullptr;
  if (isUnset && (value.empty() || value == Json::Value("") || value == Json::Value(0u))) {
    return Json::Value::nullSingleton();
  }
  if (key.name == std::string("baseUrl") || key.name == std::string("tokenUrl")) {
    return ZLT::String::UTF16ToUTF8(WithoutQuery(ZLT::String::UTF8ToUTF16(value.asString())));
  }
  return value;
}

}  // namespace

const char* NameOf(Source source) {
  constexpr const char* Names[] = {"default", "setup", "file", "store", "policy"};
  return Names[static_cast<int>(source)];
}

std::string Combine(const std::vector<Layer>& layers, Effective& effective) {
  Effective read;
  for (const Key& key : AllKeys()) {
    const auto layer = std::find_if(layers.begin(), layers.end(), [&key](const Layer& each) {
      return each.values.isMember(key.name);
    });
    if (layer != layers.end()) {
      if (std::string wrong = Take(*layer, key, read.configuration); !wrong.empty()) return wrong;
      read.sources[key.name] = layer->source;
    } else if (key.isMandatory) {
      return Complaint(layers.back(), "key \"" + std::string(key.name) + "\" is missing");
    }
  }
  effective = std::move(read);
  return {};
}

std::vector<std::string> ComplaintsOver(const std::vector<Layer>& layers) {
  std::vector<std::string> complaints;
  for (const Layer& layer : layers) {
    for (const std::string& name : layer.values.getMemberNames()) {
      const Key* key = FindKey(name);
      Configuration unused;
      std::string wrong = key != nullptr ? Take(layer, *key, unused) : "";
      if (key == nullptr && name != SchemaKey) {
        wrong = Complaint(layer, "key \"" + OnOneLine(name) + "\" is not known");
      }
      if (!wrong.empty()) complaints.push_back(std::move(wrong));
    }
  }
  Effective unused;
  const std::string first = Combine(layers, unused);
  const bool isTold =
      first.empty() || std::find(complaints.begin(), complaints.end(), first) != complaints.end();
  if (!isTold) complaints.push_back(first);
  return complaints;
}

std::string ReadValues(const std::string& json, Layer& layer) try {
  Json::CharReaderBuilder builder;
  Json::CharReaderBuilder::strictMode(&builder.settings_);
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value root;
  std::string complaint;
  if (!reader->parse(json.data(), json.data() + json.size(), &root, &complaint)) {
    return Complaint(layer, "not well-formed JSON: " + OnOneLine(complaint));
  }
  if (!root.isObject()) return Complaint(layer, "must hold one JSON object");
  layer.values = std::move(root);
  return {};
} catch (const Json::Exception& error) {
  return Complaint(layer, "not well-formed JSON: " + OnOneLine(error.what()));
}

std::string ParseConfiguration(const std::string& fileName, const std::string& json,
                               Configuration& configuration) {
  Layer file{Source::File, fileName};
  std::string error = ReadValues(json, file);
  Effective effective;
  if (error.empty()) error = Combine({file}, effective);
  if (error.empty()) configuration = std::move(effective.configuration);
  return error;
}

Json::Value Shareable(const Effective& effective) {
  Json::Value settings(Json::arrayValue);
  for (const Key& key : AllKeys()) {
    const auto source = effective.sources.find(key.name);
    Json::Value& setting = settings.append(Json::objectValue);
    setting["key"] = key.name;
    setting["value"] = Shared(key, effective);
    setting["source"] =
        NameOf(source == effective.sources.end() ? Source::Default : source->second);
    setting["meaning"] = key.meaning;
  }
  return settings;
}

Json::Value FromPolicy(const Key& key, const PolicyValue& value) {
  if (const auto* number = std::get_if<std::uint64_t>(&value)) {
    if (key.type == KeyType::Flag && *number <= 1) return *number == 1;
    return Json::UInt64{*number};
  }
  Json::Value list(Json::arrayValue);
  if (const auto* texts = std::get_if<std::vector<std::string>>(&value)) {
    for (const std::string& text : *texts) list.append(text);
    return list;
  }
  const auto* text = std::get_if<std::string>(&value);
  if (text == nullptr) return Json::Value::nullSingleton();
  if (key.type == KeyType::Texts) {
    if (!text->empty()) list.append(*text);
    return list;
  }
  const bool isText = key.type == KeyType::Text || key.type == KeyType::Word;
  return isText ? Json::Value(*text) : Meant(*text);
}

std::wstring FileToRead(bool isService, const std::wstring& variable, const std::wstring& machine) {
  return isService || variable.empty() ? machine : variable;
}

}  // namespace refhost
