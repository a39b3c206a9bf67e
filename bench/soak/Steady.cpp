#include "bench/soak/Steady.h"

#include <cmath>
#include <cstdio>
#include <vector>

#include "bench/soak/Device.h"
#include "bench/soak/Host.h"
#include "bench/soak/Usage.h"

namespace {

/// What leaks shows in the heaps. The system's own figure goes up and down by a megabyte.
constexpr double MostHeapBytesPerInstallation = 1024;
constexpr double MostBytesPerInstallation = 8192;
constexpr unsigned int RowEvery = 50;

/// The agent keeps the process handle of each installer, as is meant, and nothing else.
bool IsOne(double handles) { return std::abs(handles - 1) < 0.02; }

/// Slope of a line through the values, by least squares.
double SlopeOf(const std::vector<double>& values) {
  const auto count = static_cast<double>(values.size());
  double mean = 0;
  for (const double value : values) mean += value / count;
  double product = 0, square = 0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const double x = static_cast<double>(i) - (count - 1) / 2;
    product += x * (values[i] - mean);
    square += x * x;
  }
  return product / square;
}

void PrintRow(unsigned int installations, const Usage& now, const Usage& before,
              unsigned int since) {
  const double more = static_cast<double>(now.handles) - static_cast<double>(before.handles);
  std::printf("| %u | %zu | %.2f | %zu | %zu | %zu | %d |\n", installations, now.handles,
              more / since, now.processHandles, now.bytes / 1024, now.heapBytes / 1024,
              now.threads);
  std::fflush(stdout);
}

std::vector<Usage> Measure(const Device& device, unsigned int installations) {
  std::vector<Usage> usages;
  usages.reserve(installations + 1);  // It is not to be measured.
  usages.push_back(MeasureUsage());
  for (unsigned int i = 1; i <= installations; ++i) {
    device.Uninstall();
    const Visit visit = VisitService(false);
    if (!visit.done || visit.asked == 0) {
      std::printf("installation %u failed\n", i);
      break;
    }
    usages.push_back(MeasureUsage());
    if (i % RowEvery == 0) PrintRow(i, usages[i], usages[i - RowEvery], RowEvery);
  }
  return usages;
}

/// What each installation adds, by the samples behind the first fifth: services start and caches
/// fill until then.
template <typename Figure>
double GrowthOf(const std::vector<Usage>& usages, Figure figure) {
  std::vector<double> values;
  for (std::size_t i = usages.size() / 5; i < usages.size(); ++i) {
    values.push_back(static_cast<double>(usages[i].*figure));
  }
  return SlopeOf(values);
}

bool Judge(const std::vector<Usage>& usages) {
  const double handles = GrowthOf(usages, &Usage::handles);
  const double processes = GrowthOf(usages, &Usage::processHandles);
  const double bytes = GrowthOf(usages, &Usage::bytes);
  const double heap = GrowthOf(usages, &Usage::heapBytes);
  std::printf("\nan installation adds: handles %.3f, of them for processes %.3f (1 must be all)\n",
              handles, processes);
  std::printf("bytes of memory %.0f (at most %.0f), of heaps %.0f (at most %.0f)\n", bytes,
              MostBytesPerInstallation, heap, MostHeapBytesPerInstallation);
  return IsOne(handles) && IsOne(processes) && bytes <= MostBytesPerInstallation &&
         heap <= MostHeapBytesPerInstallation;
}

}  // namespace

bool RunSteadily(const std::wstring& folder, unsigned int installations) {
  const Device device(folder);
  std::printf(
      "| installations | handles | handles per installation | process handles | memory, KiB "
      "| heaps, KiB | threads |\n|--:|--:|--:|--:|--:|--:|--:|\n");
  const std::vector<Usage> usages = Measure(device, installations);
  return usages.size() == installations + 1 && Judge(usages);
}
