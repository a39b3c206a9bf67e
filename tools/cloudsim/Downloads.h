#pragma once

#include <json/value.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "tools/cloudsim/Contents.h"

namespace cloudsim {

/// A file, or a part of one, on its way to a device.
struct Download {
  std::string device;
  std::string path;
  std::uint64_t from = 0;  ///< the first byte's place in the file
  std::uint64_t size = 0;  ///< of the file
  std::atomic<std::uint64_t> sent{0};
};

/// Which files are leaving just now, and how far they are. Any thread.
class Downloads {
 public:
  /// @return `contents`, whose bytes count for `download` for as long as they are kept.
  Contents Follow(Contents contents, std::shared_ptr<Download> download);

  /// @return an array of those under way, in the order in which they began.
  Json::Value ToJson() const;

 private:
  mutable std::mutex _mutex;
  std::vector<std::weak_ptr<const Download>> _all;
};

}  // namespace cloudsim
