#include "tools/tolmarctl/Explain.h"

#include <json/value.h>

#include <cstdio>
#include <optional>
#include <sstream>

#include "reference_host/causes/Causes.h"
#include "tools/common/Titles.h"
#include "tools/tolmarctl/ExitStatus.h"
#include "tools/tolmarctl/Output.h"

namespace {

using refhost::Cause;

/// @return the number that the whole text is, decimal or hexadecimal; nothing when it is none.
std::optional<std::uint32_t> NumberIn(const std::string& text) try {
  std::size_t end = 0;
  const unsigned long long number = std::stoull(text, &end, 0);
  const bool fits = end == text.size() && text[0] != '-' && number <= 0xFFFFFFFF;
  return fits ? std::optional(static_cast<std::uint32_t>(number)) : std::nullopt;
} catch (const std::exception&) {
  return std::nullopt;
}

std::string Lines(const Cause& cause, const std::string& indentation) {
  std::string lines = indentation + cause.happened + "\n";
  if (*cause.seen != '\0') lines += indentation + "see: " + cause.seen + "\n";
  return lines + indentation + "do:  " + cause.remedy + "\n";
}

Json::Value AsJson(const Cause& cause) {
  Json::Value object;
  object["id"] = cause.id;
  object["happened"] = cause.happened;
  object["seen"] = cause.seen;
  object["remedy"] = cause.remedy;
  if (cause.last == 0) return object;
  object["firstCode"] = cause.first;
  object["lastCode"] = cause.last;
  return object;
}

void Print(const std::vector<Cause>& causes, bool asJson) {
  Json::Value list(Json::arrayValue);
  for (const Cause& cause : causes) {
    list.append(AsJson(cause));
    if (!asJson) std::printf("%s\n%s", cause.id, Lines(cause, "  ").c_str());
  }
  if (!asJson) return;
  Json::Value root;
  root["command"] = "explain";
  root["causes"] = list;
  PrintJsonLine(root);
}

}  // namespace

int Explain(const Options& options) {
  const std::string& subject = options.subject;
  if (subject.empty()) {
    Print(refhost::AllCauses(), options.json);
    return ExitStatus::Success;
  }
  const std::optional<std::uint32_t> code = NumberIn(subject);
  const Cause* cause = code ? refhost::CauseOfCode(*code) : refhost::FindCause(subject);
  if (cause == nullptr) {
    std::fprintf(stderr, "tolmarctl: explain: neither a result code nor a cause: %s\n",
                 subject.c_str());
    return ExitStatus::Usage;
  }
  Print({*cause}, options.json);
  return ExitStatus::Success;
}

std::string ExplanationOf(unsigned long code) {
  const Cause* cause = refhost::CauseOfCode(static_cast<std::uint32_t>(code));
  return cause == nullptr ? "" : Lines(*cause, "  ");
}

std::string ExplanationOf(const Json::Value& title) {
  const Cause* cause = refhost::FindCause(TextIn(title, "cause"));
  if (cause == nullptr) return {};
  constexpr const char* Indentation = "  ";
  std::string lines =
      TextIn(title, "l1FruPn") + ": " + std::string(cause->id) + ": " + cause->happened + "\n";
  const std::string why = TextIn(title, "why");
  if (!why.empty()) lines += Indentation + why + "\n";
  lines += Indentation + std::string("do: ") + cause->remedy + "\n";
  std::istringstream output(TextIn(title, "installerOutput"));
  for (std::string line; std::getline(output, line);) lines += "  | " + line + "\n";
  return lines;
}

std::string CauseIdOf(unsigned long code) {
  const Cause* cause = refhost::CauseOfCode(static_cast<std::uint32_t>(code));
  return cause == nullptr ? "" : cause->id;
}
