#include <chrono>
#include <cstdio>
#include <sstream>

#include "tools/common/Phrases.h"
#include "tools/tolmarctl/Report.h"

namespace timeline {

namespace {

std::string Indented(const std::string& text, const std::string& indentation) {
  std::string lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines += indentation + line + "\n";
  return lines;
}

std::string StepLines(const Step& step) {
  std::string line = "    " + step.phase;
  line.resize(std::max<std::size_t>(line.size() + 1, 17), ' ');
  line += step.length ? Duration(*step.length) : "not ended";
  if (!step.cause.empty()) line += "  failed";
  line += "\n";
  for (const std::string& note : step.notes) line += Indented(note, "      ");
  return line;
}

std::string TitleLines(const Title& title) {
  std::string lines = "  " + (title.partNumber.empty() ? "(no title)" : title.partNumber);
  lines += title.name.empty() ? "" : "  " + title.name;
  lines += ": " + SummaryOf(title) + "\n";
  for (const Step& step : title.steps) lines += StepLines(step);
  lines += LinesOfCause(CauseOf(title), "    ");
  if (title.output.empty()) return lines;
  return lines + "    the installer's output, its end:\n" + Indented(title.output, "      ");
}

Json::Value StepAsJson(const Step& step) {
  Json::Value object;
  object["phase"] = step.phase;
  object["begin"] = Json::Int64{step.begin};
  if (step.length) object["ms"] = Json::Int64{*step.length};
  if (!step.cause.empty()) object["cause"] = step.cause;
  object["notes"] = Json::arrayValue;
  for (const std::string& note : step.notes) object["notes"].append(note);
  return object;
}

Json::Value TitleAsJson(const Title& title) {
  Json::Value object;
  object["l1FruPn"] = title.partNumber;
  object["name"] = title.name;
  object["begin"] = Json::Int64{title.begin};
  if (title.end) object["ms"] = Json::Int64{*title.end - title.begin};
  object["status"] = title.status;
  if (title.code) object["code"] = *title.code;
  if (const std::string cause = CauseOf(title); !cause.empty()) object["cause"] = cause;
  if (!title.restart.empty()) object["restart"] = title.restart;
  object["retries"] = title.retries;
  object["steps"] = Json::arrayValue;
  for (const Step& step : title.steps) object["steps"].append(StepAsJson(step));
  return object;
}

}  // namespace

std::string SummaryOf(const Title& title) {
  if (title.partNumber.empty()) return std::to_string(title.steps.size()) + " steps";
  std::string summary =
      title.end ? (title.status.empty() ? "not begun" : title.status) : "not ended";
  if (title.code && *title.code != 0) summary += ", code " + std::to_string(*title.code);
  if (title.end) summary += ", after " + Duration(*title.end - title.begin);
  if (title.retries == 1) summary += ", 1 retry";
  if (title.retries > 1) summary += ", " + std::to_string(title.retries) + " retries";
  return title.restart.empty() ? summary : summary + ", restart: " + title.restart;
}

std::string DateOf(std::int64_t time) {
  using namespace std::chrono;
  const sys_time<milliseconds> moment{milliseconds(time)};
  const year_month_day date(floor<days>(moment));
  const hh_mm_ss clock(floor<seconds>(moment - floor<days>(moment)));
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02u-%02u %02d:%02d:%02d UTC",
                static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
                static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()));
  return text;
}

std::string AsText(const std::vector<Run>& runs) {
  std::string text;
  for (const Run& run : runs) {
    text += "run " + run.id + " of " + DateOf(run.begin) + "\n";
    for (const Title& title : run.titles) text += TitleLines(title);
  }
  return text.empty() ? "nothing has happened yet\n" : text;
}

Json::Value AsJson(const std::vector<Run>& runs) {
  Json::Value list(Json::arrayValue);
  for (const Run& run : runs) {
    Json::Value object;
    object["run"] = run.id;
    object["process"] = Json::Int64{run.process};
    object["begin"] = Json::Int64{run.begin};
    object["titles"] = Json::arrayValue;
    for (const Title& title : run.titles) object["titles"].append(TitleAsJson(title));
    list.append(object);
  }
  return list;
}

}  // namespace timeline
