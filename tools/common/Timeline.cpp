#include "tools/common/Timeline.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <iomanip>
#include <map>
#include <optional>
#include <sstream>

#include "reference_host/causes/Causes.h"
#include "tools/common/Phrases.h"

namespace timeline {

namespace {

/// @return the time of "2031-02-03T04:05:06.789Z", 0 when it is none.
std::int64_t TimeIn(const std::string& text) {
  using namespace std::chrono;
  std::istringstream stream(text);
  std::tm tm{};
  char point = 0;
  int fraction = 0;
  stream >> std::get_time(&tm, "%Y-%m-%dT%H:%M:%S") >> point >> fraction;
  const year_month_day date{year(tm.tm_year + 1900), month(static_cast<unsigned>(tm.tm_mon + 1)),
                            day(static_cast<unsigned>(tm.tm_mday))};
  if (!stream || point != '.' || !date.ok()) return 0;
  const auto time = sys_days(date) + hours(tm.tm_hour) + minutes(tm.tm_min) + seconds(tm.tm_sec);
  return duration_cast<milliseconds>(time.time_since_epoch()).count() + fraction;
}

/// What an event is to its title's steps.
struct Kind {
  const char* name;
  const char* phase;
  enum { Begins, Ends, During } what;
};

constexpr Kind Kinds[] = {{"lease.waited", "waited", Kind::Ends},
                          {"download.began", "downloaded", Kind::Begins},
                          {"download.ended", "downloaded", Kind::Ends},
                          {"package.judged", "checked", Kind::Ends},
                          {"package.unpacked", "unpacked", Kind::Ends},
                          {"script.began", "", Kind::Begins},
                          {"script.ended", "", Kind::Ends}};

Kind KindOf(const Record& event) {
  const auto* found = std::find_if(std::begin(Kinds), std::end(Kinds), [&](const Kind& kind) {
    return kind.name == event.Text("event");
  });
  if (found == std::end(Kinds)) return {"", "", Kind::During};
  Kind kind = *found;
  if (*kind.phase == '\0') {
    kind.phase = event.Text("kind") == "installer" ? "installed" : "verified";
  }
  return kind;
}

bool IsOpen(const Title& title, const std::string& phase) {
  return !title.steps.empty() && title.steps.back().phase == phase && !title.steps.back().length;
}

/// The question for the title's files ends where anything else begins.
void EndQuestion(Title& title, std::int64_t time) {
  if (IsOpen(title, "asked")) title.steps.back().length = time - title.steps.back().begin;
}

Step& StepFor(Title& title, const Record& event, std::int64_t time) {
  const Kind kind = KindOf(event);
  if (kind.what == Kind::During) {
    if (title.steps.empty()) title.steps.push_back({"told", time, 0, {}, {}});
    return title.steps.back();
  }
  const std::int64_t length = event.Number("ms");
  const std::int64_t begin = time - (kind.what == Kind::Ends ? length : 0);
  EndQuestion(title, begin);
  if (!IsOpen(title, kind.phase)) title.steps.push_back({kind.phase, begin, std::nullopt, {}, {}});
  if (kind.what == Kind::Ends) title.steps.back().length = length;
  return title.steps.back();
}

/// The newest failure counts, unless what has failed came about after all.
void LearnCause(Title& title, Step& step, const Record& event) {
  const std::string cause = event.Text("cause");
  const bool isFound = event.Is("event", "script.ended") && event.Is("kind", "check");
  const bool isMended = cause.empty() && (isFound || event.IsTrue("done"));
  if (!isMended && cause.empty()) return;
  // Who asks whether titles are installed gets an answer, not a failure.
  if (title.partNumber.empty() && cause == "check.exit-code") return;
  title.cause = step.cause = cause;
  title.why = isMended ? "" : PhraseOf(event);
}

void EndTitle(Title& title, const Record& event, std::int64_t time) {
  EndQuestion(title, time);
  title.end = time;
  title.status = event.Text("status");
  title.code = static_cast<std::uint32_t>(event.Number("code"));
}

void Add(Title& title, const Record& event, std::int64_t time) {
  if (event.Is("event", "title.ended")) return EndTitle(title, event, time);
  if (event.Is("event", "file.failed") && event.Has("waitMs")) ++title.retries;
  if (event.Is("kind", "installer") && event.Has("exitCode")) title.output = event.Text("output");
  if (event.Is("event", "restart.wanted")) title.restart = event.Text("restart");
  Step& step = StepFor(title, event, time);
  if (const std::string phrase = PhraseOf(event); !phrase.empty()) step.notes.push_back(phrase);
  LearnCause(title, step, event);
}

Title& TitleFor(Run& run, const Record& event, std::int64_t time) {
  const std::string partNumber = event.Text("title");
  const bool begins = event.Is("event", "title.began");
  const auto newest = std::find_if(run.titles.rbegin(), run.titles.rend(), [&](const Title& title) {
    return title.partNumber == partNumber;
  });
  if (newest != run.titles.rend() && !begins) return *newest;
  Title& title = run.titles.emplace_back();
  title.partNumber = partNumber;
  title.begin = time;
  if (begins) {
    title.name = event.Text("name");
    title.steps.push_back({"asked", time, std::nullopt, {}, {}});
  }
  return title;
}

}  // namespace

std::vector<Run> Read(const std::string& lines) {
  std::vector<Run> runs;
  std::map<std::string, std::size_t> places;
  std::istringstream stream(lines);
  for (std::string line; std::getline(stream, line);) {
    const std::optional<Record> event = Record::Parse(line);
    const std::int64_t time = event ? TimeIn(event->Text("time")) : 0;
    if (time == 0 || event->Text("event").starts_with("installation.")) continue;
    const auto [place, isNew] = places.try_emplace(event->Text("run"), runs.size());
    if (isNew) runs.push_back({event->Text("run"), time, event->Number("process"), {}});
    Title& title = TitleFor(runs[place->second], *event, time);
    if (!event->Is("event", "title.began")) Add(title, *event, time);
  }
  return runs;
}

std::string CauseOf(const Title& title) {
  if (!title.cause.empty() || !title.code || *title.code == 0) return title.cause;
  const refhost::Cause* cause = refhost::CauseOfCode(*title.code);
  return cause == nullptr ? "" : cause->id;
}

}  // namespace timeline
