#include "tools/common/Phrases.h"

#include <json/reader.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <sstream>

#include "reference_host/causes/Causes.h"
#include "tools/common/TerminalText.h"

namespace timeline {

namespace {

/// Lines of printable text.
std::string Plain(const std::string& text) {
  std::string plain;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    if (line.ends_with('\r')) line.pop_back();
    std::replace(line.begin(), line.end(), '\t', ' ');
    if (!plain.empty()) plain += '\n';
    plain += Printable(line);
  }
  return plain;
}

std::string Format(const char* format, double number) {
  char text[64];
  std::snprintf(text, sizeof text, format, number);
  return text;
}

/// @return "1.0 MB", in decimal units as networks have them.
std::string Bytes(std::int64_t bytes) {
  const auto number = static_cast<double>(bytes);
  if (bytes < 1000) return std::to_string(bytes) + " bytes";
  if (bytes < 1000000) return Format("%.1f kB", number / 1e3);
  return bytes < 1000000000 ? Format("%.1f MB", number / 1e6) : Format("%.2f GB", number / 1e9);
}

std::string FileDone(const Record& record) {
  return record.Text("file") + ": " + Bytes(record.Number("bytes")) + " in " +
         Duration(record.Number("ms")) + ", " + Bytes(record.Number("bytesPerSecond")) + "/s";
}

std::string FileFailed(const Record& record) {
  std::string phrase = record.Text("file") + ", attempt " +
                       std::to_string(record.Number("attempt")) + ": " + record.Text("reason");
  const std::string status = "HTTP status " + std::to_string(record.Number("status"));
  const bool isSaid = !record.Has("status") || phrase.find(status) != std::string::npos;
  if (!isSaid) phrase += ", " + status;
  if (record.Has("waitMs")) phrase += "; again after " + Duration(record.Number("waitMs"));
  return phrase;
}

std::string Verdict(const Record& record) {
  const std::string publisher = record.Text("publisher");
  std::string phrase = record.Text("file") + ": ";
  phrase += publisher.empty() ? "no signer to be told" : "signed by \"" + publisher + "\"";
  const std::string reason = record.Text("reason");
  return reason.empty() ? phrase : phrase + ", refused: " + reason;
}

std::string ScriptEnd(const Record& record) {
  const std::string ending = record.Has("exitCode")
                                 ? "exit code " + std::to_string(record.Number("exitCode"))
                                 : record.Text("reason");
  const std::string script = record.Text("script");
  const std::string phrase = (script.empty() ? record.Text("kind") : script) + ": " + ending;
  // The check's own words; an installer's are told apart.
  const std::string output = record.Is("kind", "check") ? record.Text("output") : "";
  return output.empty() ? phrase : phrase + ", " + output.substr(output.rfind('\n') + 1);
}

}  // namespace

std::optional<Record> Record::Parse(const std::string& line) try {
  const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
  Record record;
  const bool isRead =
      reader->parse(line.data(), line.data() + line.size(), &record._fields, nullptr);
  return isRead && record._fields.isObject() ? std::optional(record) : std::nullopt;
} catch (const Json::Exception&) {
  return std::nullopt;
}

std::string Record::Text(const char* key) const {
  return _fields[key].isString() ? Plain(_fields[key].asString()) : std::string();
}

std::int64_t Record::Number(const char* key) const {
  return _fields[key].isInt64() ? _fields[key].asInt64() : 0;
}

bool Record::IsTrue(const char* key) const {
  return _fields[key].isBool() && _fields[key].asBool();
}

std::string PhraseOf(const Record& record) {
  const std::string kind = record.Text("event");
  if (kind == "file.done") return FileDone(record);
  if (kind == "file.failed") return FileFailed(record);
  if (kind == "file.renewed") return record.Text("file") + ": the service gave a new address";
  if (kind == "package.judged") return Verdict(record);
  if (kind == "script.ended") return ScriptEnd(record);
  if (kind == "restart.wanted") return "restart: " + record.Text("restart");
  if (kind == "token.failed")
    return "no token, status or error " + std::to_string(record.Number("status"));
  return record.Text("reason");
}

std::string LinesOfCause(const std::string& id, const std::string& indentation) {
  const refhost::Cause* cause = refhost::FindCause(id);
  if (cause == nullptr) return {};
  return indentation + cause->id + ": " + cause->happened + "\n" + indentation +
         "do: " + cause->remedy + "\n";
}

std::string Duration(std::int64_t milliseconds) {
  if (milliseconds < 100) return std::to_string(milliseconds) + " ms";
  if (milliseconds < 60000) return Format("%.1f s", static_cast<double>(milliseconds) / 1e3);
  const std::int64_t seconds = milliseconds / 1000;
  return std::to_string(seconds / 60) + " min " + std::to_string(seconds % 60) + " s";
}

}  // namespace timeline
