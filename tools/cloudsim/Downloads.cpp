#include "tools/cloudsim/Downloads.h"

#include <utility>

namespace cloudsim {

Contents Downloads::Follow(Contents contents, std::shared_ptr<Download> download) {
  {
    const std::scoped_lock lock(_mutex);
    std::erase_if(_all, [](const auto& one) { return one.expired(); });
    _all.push_back(download);
  }
  contents.provider = [whole = std::move(contents.provider), download = std::move(download)](
                          std::size_t at, std::size_t count, httplib::DataSink& sink) {
    download->sent = at;
    return whole(at, count, sink);
  };
  return contents;
}

Json::Value Downloads::ToJson() const {
  Json::Value list = Json::arrayValue;
  const std::scoped_lock lock(_mutex);
  for (const auto& one : _all) {
    const std::shared_ptr<const Download> download = one.lock();
    if (!download) continue;
    Json::Value& entry = list.append(Json::objectValue);
    entry["device"] = download->device;
    entry["path"] = download->path;
    entry["from"] = static_cast<Json::UInt64>(download->from);
    entry["size"] = static_cast<Json::UInt64>(download->size);
    entry["sent"] = static_cast<Json::UInt64>(download->sent.load());
  }
  return list;
}

}  // namespace cloudsim
