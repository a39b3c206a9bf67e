#include "reference_host/configuration/Configuration.h"

#include <json/reader.h>
#include <json/value.h>
#include <json/writer.h>

#include <algorithm>
#include <memory>
#include <stdexcept>

#include "host/common/Text.h"
#include "reference_host/base/Url.h"
#include "reference_host/files/MemberName.h"

namespace refhost {

namespace {

/// Below the one no package is delivered; up to the other every JSON writer is exact.
constexpr std::uint64_t MinSizeLimit = 1024;
constexpr std::uint64_t MaxSizeLimit = (1ull << 53) - 1;

/// What is wrong with the file, in words for the person who wrote it.
struct ConfigurationError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

[[noreturn]] void Refuse(const char* key, const std::string& reason) {
  throw ConfigurationError("key \"" + std::string(key) + "\" " + reason);
}

/// Reads typed values out of the file's object; a value of another type is never converted.
class Reader {
 public:
  explicit Reader(const Json::Value& root) : _root(root) {}

  /// @return what was read of the file, as it stands there.
  const Json::Value& Known() const { return _known; }

  std::string RequiredText(const char* key) const {
    if (!Has(key)) Refuse(key, "is missing");
    return Text(key);
  }

  std::string OptionalText(const char* key) const { return Has(key) ? Text(key) : std::string(); }

  bool Flag(const char* key, bool otherwise) const {
    if (!Has(key)) return otherwise;
    if (!_root[key].isBool()) Refuse(key, "must be true or false");
    return _root[key].asBool();
  }

  /// @return true for the one word, false for the other.
  bool IsFirst(const char* key, const std::string& first, const std::string& second,
               bool otherwise) const {
    if (!Has(key)) return otherwise;
    const std::string word = Text(key);
    if (word != first && word != second) {
      Refuse(key, "must be \"" + first + "\" or \"" + second + "\"");
    }
    return word == first;
  }

  /// Reads a whole number; `number` keeps its value when the key is absent.
  template <typename Whole>
  void Number(const char* key, Whole least, Whole most, Whole& number) const {
    if (!Has(key)) return;
    const Json::Value& value = _root[key];
    if (!value.isUInt64() || value.asUInt64() < least || value.asUInt64() > most) {
      Refuse(key, "must be a whole number from " + std::to_string(least) + " to " +
                      std::to_string(most));
    }
    number = static_cast<Whole>(value.asUInt64());
  }

  double Share(const char* key, double otherwise) const {
    if (!Has(key)) return otherwise;
    const Json::Value& value = _root[key];
    if (!value.isNumeric() || value.asDouble() < 0 || value.asDouble() > 1) {
      Refuse(key, "must be a number from 0 to 1");
    }
    return value.asDouble();
  }

  std::vector<std::string> Texts(const char* key) const {
    std::vector<std::string> texts;
    if (!Has(key)) return texts;
    if (!_root[key].isArray()) Refuse(key, "must be a list of texts");
    for (const Json::Value& element : _root[key]) {
      if (!element.isString()) Refuse(key, "must be a list of texts");
      texts.push_back(element.asString());
    }
    return texts;
  }

 private:
  std::string Text(const char* key) const {
    if (!_root[key].isString()) Refuse(key, "must be a text");
    std::string text = _root[key].asString();
    if (text.empty()) Refuse(key, "must not be empty");
    return text;
  }

  bool Has(const char* key) const {
    if (!_root.isMember(key)) return false;
    _known[key] = _root[key];
    return true;
  }

  const Json::Value& _root;
  mutable Json::Value _known{Json::objectValue};
};

std::string ReadUrl(const Reader& reader, const char* key) {
  std::string url = reader.RequiredText(key);
  if (!IsAllowedUrl(ZLT::String::UTF8ToUTF16(url))) {
    Refuse(key, "must be an https URL (http for this machine only)");
  }
  return url;
}

/// WinHTTP and BITS have the plain form in common. @return empty when the key is absent.
std::wstring ReadProxy(const Reader& reader, const char* key) {
  std::wstring proxy = ZLT::String::UTF8ToUTF16(reader.OptionalText(key));
  Url url;
  if (!proxy.empty() &&
      (!ParseUrl(L"http://" + proxy, url) || proxy.find_first_of(L"/?#") != std::wstring::npos)) {
    Refuse(key, "must be a host and a port, as \"proxy.example:8080\"");
  }
  return proxy;
}

/// @return the folder without its trailing backslash; empty when the key is absent.
std::wstring ReadFolder(const Reader& reader, const char* key) {
  std::wstring folder = ZLT::String::UTF8ToUTF16(reader.OptionalText(key));
  if (folder.empty()) return folder;
  std::replace(folder.begin(), folder.end(), L'/', L'\\');
  while (folder.ends_with(L'\\')) folder.pop_back();
  const bool letter =
      (folder[0] >= L'A' && folder[0] <= L'Z') || (folder[0] >= L'a' && folder[0] <= L'z');
  const bool fullPath = folder.size() > 3 && letter && folder[1] == L':' && folder[2] == L'\\';
  // The folder is deleted as a whole after each title, so it must be one that was clearly meant:
  // Windows takes "C:\\. " for the drive's root, for example.
  if (!fullPath || !RefusalOfMemberName(std::wstring_view(folder).substr(3)).empty()) {
    Refuse(key, "must be the full path of a folder below a drive's root");
  }
  return folder;
}

std::vector<std::string> ReadThumbprints(const Reader& reader, const char* key) {
  std::vector<std::string> thumbprints = reader.Texts(key);
  for (std::string& thumbprint : thumbprints) {
    for (char& c : thumbprint) c = c >= 'A' && c <= 'F' ? static_cast<char>(c + 32) : c;
    const bool digits = thumbprint.find_first_not_of("0123456789abcdef") == std::string::npos;
    if (!digits || thumbprint.size() != 64) {
      Refuse(key, "must list SHA-256 thumbprints of 64 hexadecimal digits each");
    }
  }
  return thumbprints;
}

Configuration Read(const Reader& reader) {
  Configuration read;
  read.baseUrl = ReadUrl(reader, "baseUrl");
  read.realm = reader.RequiredText("realm");
  read.deviceId = reader.RequiredText("deviceId");
  read.sessionToken = reader.RequiredText("sessionToken");
  read.tokenUrl = ReadUrl(reader, "tokenUrl");
  read.registered = reader.Flag("registered", read.registered);
  read.proxy = ReadProxy(reader, "proxy");
  read.downloadFolder = ReadFolder(reader, "downloadFolder");
  read.logFolder = ReadFolder(reader, "logFolder");
  read.requireSignedPackages = reader.Flag("requireSignedPackages", read.requireSignedPackages);
  read.trustedPublishers = ReadThumbprints(reader, "trustedPublishers");
  constexpr unsigned int Hour = 60 * 60;
  constexpr unsigned int Day = 24 * Hour;
  reader.Number("processTimeoutSeconds", 1u, Day, read.processTimeoutSeconds);
  reader.Number("maxCheckScripts", 1u, 1000u, read.maxCheckScripts);
  reader.Number("cancelledCheckGraceSeconds", 0u, Hour, read.cancelledCheckGraceSeconds);
  reader.Number("installerTimeoutSeconds", 1u, Day, read.installerTimeoutSeconds);
  read.installersMeetUser =
      reader.IsFirst("installerSession", "user", "service", read.installersMeetUser);
  reader.Number("leaseWaitSeconds", 0u, Day, read.leaseWaitSeconds);
  reader.Number("requestTimeoutSeconds", 1u, Hour, read.requestTimeoutSeconds);
  reader.Number("downloadStallSeconds", 1u, Day, read.downloadStallSeconds);
  reader.Number("downloadPatienceSeconds", 0u, Day, read.downloadPatienceSeconds);
  reader.Number("fileInUseSeconds", 0u, Hour, read.fileInUseSeconds);
  reader.Number("maxFileBytes", MinSizeLimit, MaxSizeLimit, read.maxFileBytes);
  reader.Number("maxUnpackedBytes", MinSizeLimit, MaxSizeLimit, read.maxUnpackedBytes);
  reader.Number("logMaxBytes", 1024u, 1u << 30, read.logMaxBytes);
  read.retryWaitScale = reader.Share("retryWaitScale", read.retryWaitScale);
  return read;
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

Json::Value ParseObject(const std::string& json) {
  Json::CharReaderBuilder builder;
  Json::CharReaderBuilder::strictMode(&builder.settings_);
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value root;
  std::string complaint;
  if (!reader->parse(json.data(), json.data() + json.size(), &root, &complaint)) {
    throw ConfigurationError("not well-formed JSON: " + OnOneLine(complaint));
  }
  if (!root.isObject()) throw ConfigurationError("must hold one JSON object");
  return root;
}

}  // namespace

std::string ParseConfiguration(const std::string& fileName, const std::string& json,
                               Configuration& configuration) {
  try {
    const Json::Value root = ParseObject(json);
    configuration = Read(Reader(root));
    return {};
  } catch (const ConfigurationError& error) {
    return fileName + ": " + error.what();
  } catch (const Json::Exception& error) {
    return fileName + ": not well-formed JSON: " + OnOneLine(error.what());
  }
}

std::string ShareableConfiguration(const std::string& json) try {
  const Json::Value root = ParseObject(json);
  const Reader reader(root);
  Read(reader);
  Json::Value known = reader.Known();
  known["sessionToken"] = "[left out]";
  for (const char* key : {"baseUrl", "tokenUrl"}) {
    const std::wstring url = ZLT::String::UTF8ToUTF16(known[key].asString());
    known[key] = ZLT::String::UTF16ToUTF8(WithoutQuery(url));
  }
  return Json::writeString(Json::StreamWriterBuilder(), known) + "\n";
} catch (const std::exception&) {
  return "no usable configuration\n";  // a complaint might quote it
}

std::wstring FileToRead(bool isService, const std::wstring& variable, const std::wstring& machine) {
  return isService || variable.empty() ? machine : variable;
}

}  // namespace refhost
