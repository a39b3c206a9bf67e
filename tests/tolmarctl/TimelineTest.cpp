#include "tools/common/Timeline.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "tools/tolmarctl/Report.h"

namespace {

using Runs = std::vector<timeline::Run>;
using timeline::Title;

/// @return one line of the events' file, of a time in the first minute of 2031. In `fields` single
/// quotes stand for double ones.
std::string Line(int ms, const std::string& title, std::string fields, const char* run = "1-1") {
  char head[128];
  std::snprintf(head, sizeof head, "{'run':'%s','time':'2031-01-01T00:00:%02d.%03dZ','event':", run,
                ms / 1000, ms % 1000);
  fields = head + fields + (title.empty() ? "" : ",'title':'" + title + "'") + "}\n";
  for (char& c : fields) c = c == '\'' ? '"' : c;
  return fields;
}

/// Two titles: the package of the first is refused, after a file that came at the second try; the
/// host dies in the middle of the other's installer.
std::string Story() {
  return Line(0, "", "'installation.began','titles':2") +
         Line(0, "T-1", "'title.began','name':'<One> & Only'") +
         Line(900, "T-1", "'lease.waited','ms':400,'reason':'process 5 has it'") +
         Line(900, "T-1", "'download.began','files':1") +
         Line(1000, "T-1",
              "'file.failed','file':'a.cab','attempt':1,'status':503,'reason':'busy',"
              "'cause':'download.refused','waitMs':1000") +
         Line(3000, "T-1",
              "'file.done','file':'a.cab','bytes':2000000,'ms':1000,'bytesPerSecond':2000000") +
         Line(3000, "T-1", "'download.ended','done':true,'ms':2100") +
         Line(3100, "T-1",
              "'package.judged','file':'a.cab','publisher':'Lab','ms':90,"
              "'reason':'\\u001b[31mnot trusted','cause':'package.publisher'") +
         Line(3200, "T-1", "'title.ended','status':'not installed','code':48") +
         Line(3200, "T-2", "'title.began','name':'Two'") +
         Line(4000, "T-2", "'script.began','kind':'installer'");
}

std::string CauseAfter(const std::string& lines) {
  const Runs runs = timeline::Read(Line(0, "T", "'title.began'") + lines);
  return timeline::CauseOf(runs.at(0).titles.at(0));
}

}  // namespace

TEST(Timeline, PutsATitlesStepsTogether) {
  const Runs runs = timeline::Read(Story());
  ASSERT_EQ(runs.size(), 1U);
  ASSERT_EQ(runs[0].titles.size(), 2U);
  const Title& title = runs[0].titles[0];
  const struct {
    const char* phase;
    std::int64_t begin, length;
    std::size_t notes;
  } steps[] = {{"asked", 0, 500, 0},
               {"waited", 500, 400, 1},
               {"downloaded", 900, 2100, 2},
               {"checked", 3010, 90, 1}};
  ASSERT_EQ(title.steps.size(), std::size(steps));
  for (std::size_t i = 0; i < std::size(steps); ++i) {
    EXPECT_EQ(title.steps[i].phase, steps[i].phase);
    EXPECT_EQ(title.steps[i].begin - title.begin, steps[i].begin) << steps[i].phase;
    EXPECT_EQ(title.steps[i].length, steps[i].length) << steps[i].phase;
    EXPECT_EQ(title.steps[i].notes.size(), steps[i].notes) << steps[i].phase;
  }
  EXPECT_EQ(timeline::SummaryOf(title), "not installed, code 48, after 3.2 s, 1 retry");
  EXPECT_EQ(timeline::CauseOf(title), "package.publisher");
  EXPECT_EQ(title.why, "a.cab: signed by \"Lab\", refused: \uFFFD[31mnot trusted");
  EXPECT_EQ(timeline::SummaryOf(runs[0].titles[1]), "not ended");
  EXPECT_FALSE(runs[0].titles[1].steps.back().length);
}

TEST(Timeline, TheNewestFailureThatWasNotMendedIsTheCause) {
  const std::string lost = Line(1, "T", "'file.failed','cause':'download.network'");
  const std::string got = Line(2, "T", "'download.ended','done':true");
  const std::string installer =
      Line(3, "T", "'script.ended','kind':'installer','exitCode':5,'cause':'installer.exit-code'");
  const std::string missing =
      Line(4, "T", "'script.ended','kind':'check','exitCode':1,'cause':'check.exit-code'");
  const std::string there = Line(4, "T", "'script.ended','kind':'check','exitCode':0");
  const std::string stopped = Line(2, "T", "'download.ended','done':false");
  const std::string ended = Line(5, "T", "'title.ended','code':404");
  EXPECT_EQ(CauseAfter(lost), "download.network");
  EXPECT_EQ(CauseAfter(lost + stopped), "download.network");
  EXPECT_EQ(CauseAfter(lost + got), "");
  EXPECT_EQ(CauseAfter(lost + got + installer), "installer.exit-code");
  EXPECT_EQ(CauseAfter(installer + missing), "check.exit-code");
  EXPECT_EQ(CauseAfter(installer + there), "");
  EXPECT_EQ(CauseAfter(ended), "reply.http-404");
  const Runs query = timeline::Read(
      Line(1, "", "'script.ended','kind':'check','exitCode':1,'cause':'check.exit-code'"));
  EXPECT_EQ(timeline::CauseOf(query[0].titles[0]), "");
}

TEST(Timeline, KeepsRunsApartAndStandsWhateverTheFileHolds) {
  const std::string odd = "\n5\n[]\n{\"run\":\"1-1\",\"ti\n" + std::string(2000, '[') + "\n" +
                          Line(1, "T-1", "7") + Line(1, "T-1", "'file.done','file':{},'ms':'x'") +
                          "{\"time\":\"2031-99-01T00:00:00.000Z\",\"event\":\"title.began\"}\n";
  const std::string lines = Story() + odd + Line(9, "T-1", "'title.began'", "2-2");
  const Runs runs = timeline::Read(lines);
  ASSERT_EQ(runs.size(), 2U);
  EXPECT_EQ(runs[1].id, "2-2");
  EXPECT_EQ(runs[1].titles.size(), 1U);
  EXPECT_EQ(timeline::AsJson(runs)[0]["titles"][0]["steps"].size(), 4U);
  EXPECT_EQ(timeline::AsText({}), "nothing has happened yet\n");
}

TEST(Report, ThePageEscapesWhatItShowsAndAsksForNothing) {
  const std::string page = timeline::AsPage(timeline::Read(Story()));
  EXPECT_NE(page.find("&lt;One&gt; &amp; Only"), std::string::npos);
  EXPECT_NE(page.find("signed by &quot;Lab&quot;"), std::string::npos);
  EXPECT_EQ(page.find("<One>"), std::string::npos);
  for (const char* loud : {"http:", "https:", "<script", "src=", "href=", "url(", "style=\""}) {
    EXPECT_EQ(page.find(loud), std::string::npos) << loud;
  }
}

TEST(Report, TheTextNamesCauseAndRemedy) {
  const std::string text = timeline::AsText(timeline::Read(Story()));
  EXPECT_NE(text.find("run 1-1 of 2031-01-01 00:00:00 UTC\n"
                      "  T-1  <One> & Only: not installed, code 48, after 3.2 s, 1 retry\n"
                      "    asked        0.5 s\n"
                      "    waited       0.4 s\n"
                      "      process 5 has it\n"
                      "    downloaded   2.1 s\n"
                      "      a.cab, attempt 1: busy, HTTP status 503; again after 1.0 s\n"
                      "      a.cab: 2.0 MB in 1.0 s, 2.0 MB/s\n"
                      "    checked      90 ms  failed\n"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("    package.publisher: The package is signed"), std::string::npos);
  EXPECT_NE(text.find("    installed    not ended\n"), std::string::npos);
}
