#include <stdexcept>

#include "bench/delivery/Parts.h"
#include "bench/delivery/Samples.h"
#include "host/common/FileSystem.h"
#include "host/common/PackageExtractor.h"
#include "host/common/Text.h"

void MeasureExtraction(const Order& order) {
  const std::wstring package = ZLT::String::UTF8ToUTF16(order.package);
  const double before = MemoryNow().resident;
  const double cpu = CpuSeconds();
  std::wstring folder;
  const double time = MillisecondsOf([&] { folder = ZLT::PackageExtractor::ExtractCab(package); });
  if (folder.empty()) throw std::runtime_error("the package was refused: see ZLT.log");
  PrintSample("agent", time);
  PrintSample("cpu", CpuSeconds() - cpu);
  PrintSample("peak-rise", MemoryNow().peakResident - before);
  FileSystem::deleteDirectoryOrFile(folder, true);
}
