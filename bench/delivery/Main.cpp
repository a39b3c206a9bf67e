#include <CLI/CLI.hpp>

#include "bench/common/HostProgram.h"
#include "bench/delivery/Parts.h"

namespace {

using Part = void (*)(const Order&);

void Describe(CLI::App& app, Part& chosen, Order& order) {
  const auto add = [&](const char* name, Part part, const char* text) {
    CLI::App* command = app.add_subcommand(name, text);
    command->callback([&chosen, part] { chosen = part; });
    command->add_option("--rounds", order.rounds.count)->capture_default_str();
    command->add_option("--from", order.rounds.first, "number of the first round");
    return command;
  };
  CLI::App* install =
      add("install", MeasureInstallation, "titles: the agent against the straight line");
  install->add_option("--titles", order.titles);
  install->add_option("--modules", order.modules, "of each title");
  install->add_option("--files", order.files, "one title with one module of so many files instead");
  install->add_flag("--agent-only", order.agentOnly);
  add("first-exchange", MeasureFirstExchange, "what a start-up asks of the service");
  add("reading", MeasureReading, "what a command that only reads has the agent do");
  add("exchange", MeasureExchange, "a query: the agent against WinHTTP")
      ->add_option("--calls", order.calls, "for one sample");
  CLI::App* status = add("status", MeasureInstalledState,
                         "what is installed: the agent against the check processes");
  status->add_option("--titles", order.titles);
  status->add_flag("--fresh", order.fresh, "the check scripts have to be fetched");
  add("download", MeasureLargeFile, "a large file: the suite against the engine");
  add("extract", MeasureExtraction, "check and unpack a package")
      ->add_option("PACKAGE", order.package)
      ->required();
  app.require_subcommand(1);
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Times the agent against the parts under it.", "delivery_bench");
  Part part = nullptr;
  Order order;
  Describe(app, part, order);
  CLI11_PARSE(app, argc, argv);
  HostProgram::End(HostProgram::Run("delivery_bench", [&] {
    HostProgram::Start();
    part(order);
    return 0;
  }));
}
