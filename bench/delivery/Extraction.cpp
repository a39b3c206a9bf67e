#include <stdexcept>

#include "bench/common/OwnProcess.h"
#include "bench/common/Time.h"
#include "bench/delivery/Parts.h"
#include "host/common/FileSystem.h"
#include "host/common/PackageExtractor.h"
#include "host/common/Text.h"

namespace {

/// @return the milliseconds.
double Extract(const std::wstring& package) {
  std::wstring folder;
  const double time = MillisecondsOf([&] { folder = ZLT::PackageExtractor::ExtractCab(package); });
  if (folder.empty()) throw std::runtime_error("the package was refused: see ZLT.log");
  FileSystem::deleteDirectoryOrFile(folder, true);
  return time;
}

}  // namespace

void MeasureExtraction(const Order& order) {
  const std::wstring package = ZLT::String::UTF8ToUTF16(order.package);
  const double before = OwnProcess::MemoryNow().resident;
  // The first check of a process makes the system's certificate stores ready.
  PrintSample("first", Extract(package));
  PrintSample("peak-rise", OwnProcess::MemoryNow().peakResident - before);
  const double cpu = OwnProcess::CpuSeconds();
  PrintSample("agent", Extract(package));
  PrintSample("cpu", OwnProcess::CpuSeconds() - cpu);
}
