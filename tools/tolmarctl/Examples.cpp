#include "tools/tolmarctl/Examples.h"

const std::vector<Example>& AllExamples() {
  static const std::vector<Example> examples{
      {"", R"(tolmarctl --config C:\Tolmar\host.json status)", "what is installed?"},
      {"", "tolmarctl doctor", "what does this device lack?"},
      {"", "tolmarctl explain 30", "what does \"code 30\" mean?"},
      {"list", "tolmarctl list", "as a table"},
      {"list", "tolmarctl list --json", "as one JSON object, for a script"},
      {"status", "tolmarctl status", "asks every title's check scripts"},
      {"status", "tolmarctl status --preinstall-only --json", "those for device set-up"},
      {"plan", "tolmarctl plan", "sizes, room, and what is installed already"},
      {"plan", "tolmarctl plan --no-checks --json", "without running anything, for a script"},
      {"doctor", "tolmarctl doctor", "a line for each check"},
      {"doctor", "tolmarctl doctor --quiet", "the exit status alone: 1 when a check fails"},
      {"install", "tolmarctl install --verbose", "with the logs on standard error"},
      {"install", "tolmarctl install --timeout 3600 --progress=jsonl",
       "an hour at most, progress for a program"},
      {"configure", "tolmarctl configure", "ten minutes at most"},
      {"configure", "tolmarctl configure --timeout 3600 --quiet", "nothing but errors"},
      {"config show", "tolmarctl config show", "each value and where it comes from"},
      {"config show", "tolmarctl config show --json", "for a script"},
      {"config validate", R"(tolmarctl --config C:\Tolmar\host.json config validate)",
       "before it is handed out"},
      {"config set-token", "tolmarctl config set-token", "asks for it, and shows nothing of it"},
      {"config set-token", "tolmarctl config set-token --remove", "the way back"},
      {"service status", "tolmarctl service status", "when does it run next, and what failed?"},
      {"service status", "tolmarctl service status --json", "for a script"},
      {"service run", "tolmarctl service run",
       "a title was released, and this device is to have it"},
      {"report", "tolmarctl report", "the newest last"},
      {"report", "tolmarctl report --html report.html", "as a page, the newest first"},
      {"bundle", "tolmarctl bundle ticket.cab", "nothing secret is in it"},
      {"explain", "tolmarctl explain 0x1E", "a result code"},
      {"explain", "tolmarctl explain package.publisher", "a cause"},
  };
  return examples;
}

std::string ExamplesOf(const std::string& command) {
  std::string text;
  for (const Example& example : AllExamples()) {
    if (example.command != command) continue;
    text += (text.empty() ? "Examples:\n  " : "\n  ") + std::string(example.line) + "\n      " +
            example.purpose;
  }
  if (!command.empty()) text += "\n\nGeneral options: tolmarctl --help";
  return text;
}
