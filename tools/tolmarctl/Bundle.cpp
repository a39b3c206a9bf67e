#include "tools/tolmarctl/Bundle.h"

#include <json/writer.h>

#include <cstdio>
#include <exception>

#include "host/common/Text.h"
#include "reference_host/configuration/ConfigurationFile.h"
#include "reference_host/configuration/Folders.h"
#include "reference_host/log/Event.h"
#include "reference_host/package/CabinetWriter.h"
#include "tools/tolmarctl/Doctor.h"
#include "tools/tolmarctl/ExitStatus.h"
#include "tools/tolmarctl/Output.h"
#include "tools/tolmarctl/Report.h"
#include "tools/tolmarctl/ReportCommand.h"
#include "tools/tolmarctl/Table.h"

namespace {

using Sources = std::vector<refhost::CabinetSource>;

/// The older half first, as it happened.
void AddLog(Sources& sources, const std::string& name) {
  for (const std::string& half : {name + ".1", name}) {
    std::string text = ReadWholeFile(refhost::LogFolder() + L"\\" + ZLT::String::UTF8ToUTF16(half));
    if (!text.empty()) sources.push_back({half, std::move(text)});
  }
}

Sources Collect() {
  const std::vector<timeline::Run> runs = ReadRuns();
  Sources sources{{"report.html", timeline::AsPage(runs)}, {"report.txt", timeline::AsText(runs)}};
  sources.push_back({"doctor.txt", DoctorsLines()});
  sources.push_back({"configuration.json",
                     Json::writeString(Json::StreamWriterBuilder(), refhost::ShareableSettings())});
  for (const char* name : {"TolmarAgent.log", "ZLT.log", refhost::EventFileName}) {
    AddLog(sources, name);
  }
  return sources;
}

void Print(const Options& options, const Sources& sources) {
  Table table({"FILE", "BYTES"});
  Json::Value root;
  root["command"] = options.command;
  for (const refhost::CabinetSource& source : sources) {
    Json::Value& file = root["files"].append(Json::objectValue);
    file["name"] = source.name;
    file["size"] = Json::UInt64{source.bytes.size()};
    table.Add({{source.name}, {file["size"].asString(), Cell::Look::Plain, true}});
  }
  options.json ? PrintJsonLine(root) : PrintLines(table.Text(false));
}

}  // namespace

int Bundle(const Options& options) try {
  const Sources sources = Collect();
  if (!WriteNewFile(options.file, refhost::MakeCabinet(sources))) return ExitStatus::Usage;
  Print(options, sources);
  return ExitStatus::Success;
} catch (const std::exception& error) {
  std::fprintf(stderr, "tolmarctl: bundle: %s\n", error.what());
  return ExitStatus::Failure;
}
