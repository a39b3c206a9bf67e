#include "tools/cloudsim/drive/Figures.h"

#include <algorithm>
#include <cmath>

namespace cloudsim {
namespace {

float Milliseconds(Figures::Clock::duration duration) {
  return std::chrono::duration<float, std::milli>(duration).count();
}

/// The value below which a share of all lies.
double Quantile(const std::vector<float>& sorted, double share) {
  const auto rank = static_cast<std::size_t>(std::ceil(share * static_cast<double>(sorted.size())));
  return sorted.empty() ? 0 : sorted[std::max<std::size_t>(rank, 1) - 1];
}

Json::Value Quantiles(std::vector<float> values) {
  std::sort(values.begin(), values.end());
  Json::Value entry;
  entry["p50"] = Quantile(values, 0.5);
  entry["p90"] = Quantile(values, 0.9);
  entry["p99"] = Quantile(values, 0.99);
  entry["max"] = Quantile(values, 1);
  return entry;
}

}  // namespace

void Figures::Add(const Sample& sample) {
  const std::scoped_lock lock(_mutex);
  Row& row = _rows[static_cast<std::size_t>(sample.kind)];
  row.milliseconds.push_back(Milliseconds(sample.end - sample.begin));
  _bytes += sample.bytes;
  const auto second = static_cast<std::size_t>(
      std::chrono::duration_cast<std::chrono::seconds>(sample.begin - _start).count());
  _perSecond.resize(std::max(_perSecond.size(), second + 1));
  ++_perSecond[second];
  if (sample.error.empty()) return;
  ++row.errors;
  ++_errors[KindNames[static_cast<std::size_t>(sample.kind)] + (": " + sample.error)];
}

void Figures::AddDelay(Clock::duration delay) {
  const std::scoped_lock lock(_mutex);
  _delays.push_back(Milliseconds(delay));
}

Json::Value Figures::ToJson(double seconds) const {
  const std::scoped_lock lock(_mutex);
  Json::Value document;
  std::uint64_t requests = 0;
  document["kinds"] = Json::arrayValue;
  for (std::size_t i = 0; i < _rows.size(); ++i) {
    if (_rows[i].milliseconds.empty()) continue;
    Json::Value entry = Quantiles(_rows[i].milliseconds);
    entry["kind"] = KindNames[i];
    entry["requests"] = static_cast<Json::UInt64>(_rows[i].milliseconds.size());
    entry["errors"] = static_cast<Json::UInt64>(_rows[i].errors);
    requests += _rows[i].milliseconds.size();
    document["kinds"].append(entry);
  }
  document["errors"] = Json::objectValue;
  for (const auto& [error, count] : _errors) {
    document["errors"][error] = static_cast<Json::UInt64>(count);
  }
  document["perSecond"] = Json::arrayValue;
  for (const std::uint64_t count : _perSecond) {
    document["perSecond"].append(static_cast<Json::UInt64>(count));
  }
  document["delay"] = Quantiles(_delays);
  document["seconds"] = seconds;
  document["requests"] = static_cast<Json::UInt64>(requests);
  document["requestsPerSecond"] = static_cast<double>(requests) / seconds;
  document["bytes"] = static_cast<Json::UInt64>(_bytes);
  return document;
}

}  // namespace cloudsim
