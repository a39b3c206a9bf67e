#include <algorithm>

#include "reference_host/causes/Causes.h"
#include "tools/common/Phrases.h"
#include "tools/tolmarctl/Report.h"

namespace timeline {

namespace {

constexpr const char* Style = R"css(
:root { color-scheme: light dark; --paper: #fff; --ink: #1b1f24; --soft: #57606a; --line: #d0d7de;
  --card: #f6f8fa; --bar: #0969da; --good: #116329; --bad: #b42318; }
@media (prefers-color-scheme: dark) { :root { --paper: #0d1117; --ink: #e6edf3; --soft: #9da7b3;
  --line: #30363d; --card: #161b22; --bar: #4493f8; --good: #56d364; --bad: #ff8f85; } }
body { margin: 2rem auto; max-width: 62rem; padding: 0 1rem; background: var(--paper);
  color: var(--ink); font: 15px/1.5 system-ui, sans-serif; }
h1 { font-size: 1.5rem; margin: 0; }
h2 { font-size: 1rem; margin: 2rem 0 .5rem; color: var(--soft); font-weight: 600; }
p { margin: 0 0 .25rem; overflow-wrap: anywhere; }
details { border: 1px solid var(--line); border-radius: 8px; margin: .5rem 0; }
summary { padding: .6rem .9rem; cursor: pointer; background: var(--card); border-radius: 8px; }
summary:focus-visible { outline: 3px solid var(--bar); }
summary b { margin-right: .6rem; }
.body { padding: .3rem .9rem .8rem; }
.good { color: var(--good); } .bad { color: var(--bad); } .soft { color: var(--soft); }
table { border-collapse: collapse; width: 100%; table-layout: fixed; }
th, td { text-align: left; vertical-align: top; padding: .3rem .8rem .3rem 0;
  border-bottom: 1px solid var(--line); font-weight: 400; }
th { width: 8.5rem; } td.time { width: 5.5rem; text-align: right; white-space: nowrap; font-variant-numeric: tabular-nums; }
td.when { width: 11rem; }
svg { width: 100%; height: .7rem; background: var(--card); border-radius: 3px; }
rect { fill: var(--bar); } rect.bad { fill: var(--bad); }
.cause { border-left: 4px solid var(--bad); padding-left: .7rem; margin: .7rem 0; }
pre { background: var(--card); border-radius: 6px; padding: .6rem .8rem; overflow-x: auto;
  white-space: pre-wrap; overflow-wrap: anywhere; }
)css";

/// SHA-256 of the style, which the policy lets in by it: a browser that finds another one says
/// which in its console.
constexpr const char* StyleHash = "sha256-ES4qFYCET5iLrd4PM32i/1sxnrclsLcEDZt8U3Nq964=";

std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '&')
      escaped += "&amp;";
    else if (c == '<')
      escaped += "&lt;";
    else if (c == '>')
      escaped += "&gt;";
    else if (c == '"')
      escaped += "&quot;";
    else
      escaped += c;
  }
  return escaped;
}

std::string Element(const std::string& tag, const std::string& text, const std::string& kind = "") {
  const std::string attribute = kind.empty() ? "" : " class=\"" + kind + "\"";
  return "<" + tag + attribute + ">" + Escaped(text) + "</" + tag + ">";
}

/// What nobody named a title for has no end either.
bool HasFailed(const Title& title) {
  return !CauseOf(title).empty() || (!title.end && !title.partNumber.empty());
}

/// Not by its colour alone.
std::string NameOf(const Step& step) {
  return step.phase + (step.cause.empty() ? "" : " (failed)");
}

std::int64_t EndOf(const Title& title) {
  std::int64_t end = title.end.value_or(title.begin);
  for (const Step& step : title.steps) end = std::max(end, step.begin + step.length.value_or(0));
  return end;
}

/// When a step was, within its title's time.
std::string Bar(const Title& title, const Step& step) {
  constexpr std::int64_t Width = 1000;
  constexpr std::int64_t Least = 4;  ///< what can be seen of the shortest
  const std::int64_t all = std::max<std::int64_t>(EndOf(title) - title.begin, 1);
  const auto place = [&](std::int64_t time) {
    return std::clamp<std::int64_t>((time - title.begin) * Width / all, 0, Width);
  };
  const std::int64_t left = std::min(place(step.begin), Width - Least);
  const std::int64_t right = step.length ? place(step.begin + *step.length) : Width;
  return "<svg viewBox=\"0 0 1000 10\" preserveAspectRatio=\"none\" aria-hidden=\"true\"><rect" +
         std::string(step.cause.empty() ? "" : " class=\"bad\"") + " x=\"" + std::to_string(left) +
         "\" width=\"" + std::to_string(std::max(right - left, Least)) + "\" height=\"10\"/></svg>";
}

std::string StepRow(const Title& title, const Step& step) {
  std::string row = "<tr>" + Element("th", NameOf(step), step.cause.empty() ? "" : "bad");
  row += Element("td", step.length ? Duration(*step.length) : "not ended", "time");
  row += "<td class=\"when\">" + Bar(title, step) + "</td><td>";
  for (const std::string& note : step.notes) row += Element("p", note);
  return row + "</td></tr>\n";
}

std::string CauseBox(const Title& title) {
  const std::string id = CauseOf(title);
  const refhost::Cause* cause = refhost::FindCause(id);
  if (cause == nullptr) return {};
  std::string box = "<div class=\"cause\">" + Element("p", cause->happened);
  if (!title.why.empty()) box += Element("p", title.why);
  return box + Element("p", cause->remedy) + Element("p", id, "soft") + "</div>\n";
}

std::string TitleDetails(const Title& title) {
  std::string html = HasFailed(title) ? "<details open><summary>" : "<details><summary>";
  html += Element("b", title.partNumber.empty() ? "(no title)" : title.partNumber);
  html += Escaped(title.name.empty() ? "" : title.name + ": ");
  html += Element("span", SummaryOf(title), HasFailed(title) ? "bad" : "good");
  html += "</summary><div class=\"body\">\n" + CauseBox(title) + "<table>\n";
  for (const Step& step : title.steps) html += StepRow(title, step);
  html += "</table>\n";
  if (!title.output.empty()) {
    html += Element("p", "The installer's output, its end:") + Element("pre", title.output);
  }
  return html + "</div></details>\n";
}

}  // namespace

std::string AsPage(const std::vector<Run>& runs) {
  std::string html =
      "<!doctype html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">\n"
      "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src '" +
      std::string(StyleHash) +
      "'; base-uri 'none'; form-action 'none'\">\n"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
      "<title>Software delivery on this device</title>\n<style>" +
      Style + "</style></head><body>\n<h1>Software delivery on this device</h1>\n";
  if (runs.empty()) html += Element("p", "Nothing has happened yet.", "soft");
  for (auto run = runs.rbegin(); run != runs.rend(); ++run) {
    html += Element("h2", DateOf(run->begin) + ", run " + run->id) + "\n";
    for (const Title& title : run->titles) html += TitleDetails(title);
  }
  return html + "</body></html>\n";
}

}  // namespace timeline
