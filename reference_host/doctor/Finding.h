#pragma once

#include <string>

namespace refhost {

enum class Health { Ok, Warn, Fail, Skipped };

/// What one check of the device came to. Texts are UTF-8, one line each, without secrets.
struct Finding {
  std::string id;  ///< of the check; left empty by the check itself
  Health health = Health::Ok;
  std::string found;
  std::string remedy;  ///< what to do, or to know; empty: nothing
};

}  // namespace refhost
