#include <algorithm>
#include <cstdio>
#include <exception>
#include <stdexcept>

#include "reference_host/configuration/Layers.h"
#include "tools/tolmarpack/Files.h"
#include "tools/tolmarpack/Lint.h"
#include "tools/tolmarpack/Options.h"
#include "tools/tolmarpack/Package.h"
#include "tools/tolmarpack/Print.h"
#include "tools/tolmarpack/Program.h"
#include "tools/tolmarpack/Publish.h"
#include "tools/tolmarpack/Trial.h"
#include "tools/tolmarpack/Verdict.h"

namespace {

using namespace tolmarpack;

constexpr int Good = 0, NotGood = 1, Usage = 2;

std::vector<std::filesystem::path> PathsOf(const Options& options) {
  std::vector<std::filesystem::path> paths;
  for (const std::string& path : options.paths) paths.push_back(PathOf(path));
  return paths;
}

Yardstick YardstickOf(const Options& options) {
  Yardstick yardstick;
  yardstick.trust.roots = PathOf(options.roots);
  if (options.configuration.empty()) return yardstick;
  refhost::Configuration configuration;
  const std::string fault = refhost::ParseConfiguration(
      options.configuration, ReadFile(PathOf(options.configuration)), configuration);
  if (!fault.empty()) throw std::runtime_error(fault);
  yardstick.configuration = configuration;
  return yardstick;
}

LintReport LintAsAsked(const Options& options) {
  Yardstick yardstick = YardstickOf(options);
  yardstick.trust.isAsked = !options.roots.empty();
  LintReport report = Lint(PathsOf(options), yardstick);
  std::erase_if(report.findings, [&](const Finding& finding) {
    return std::count(options.allowed.begin(), options.allowed.end(), finding.rule) != 0;
  });
  return report;
}

int RunCommand(const Options& options) {
  const std::filesystem::path path = PathOf(options.paths.front());
  const std::filesystem::path output = PathOf(options.output);
  if (options.command == "new") {
    MakeFolder(path);
    std::printf("%s is there: put files into payload, then tolmarpack lint, build, test\n",
                TextOf(path).c_str());
  } else if (options.command == "lint") {
    return Print(LintAsAsked(options), options.json) ? Good : NotGood;
  } else if (options.command == "build") {
    const PackageFolder folder = ReadFolder(path);
    BuildPackage(folder, output);
    Print(folder, output);
  } else if (options.command == "sign") {
    const std::filesystem::path result = output.empty() ? path : output;
    SignCabinet(path, result, options.signer);
    std::printf("%s is signed\n", TextOf(result).c_str());
  } else if (options.command == "verify") {
    const Verdict verdict = Judge(path, YardstickOf(options));
    return Print(options.paths.front(), verdict, options.json) ? Good : NotGood;
  } else if (options.command == "test") {
    const Trial trial = Try(path, FindLab(options.simulator), options.timeoutSeconds);
    return Print(trial, options.json) ? Good : NotGood;
  } else if (options.command == "publish") {
    const std::filesystem::path catalogue = PathOf(options.catalogue);
    Print(Publish(PathsOf(options), catalogue, options.signer), options.catalogue);
  }
  return Good;
}

}  // namespace

int main(int count, char** words) try {
  Options options;
  int exitStatus = Usage;
  if (!ReadOptions(OwnArguments(count, words), options, exitStatus)) return exitStatus;
  if (options.command == "test") {
    if (const auto status = RunInLab(count, words)) return *status;
  }
  return RunCommand(options);
} catch (const std::exception& error) {
  std::fprintf(stderr, "tolmarpack: %s\n", error.what());
  return Usage;
}
