#pragma once

#include <string>

#include "host/Export.h"

namespace refhost {

/// Reads the suite's configuration (the machine's policy above the JSON file that the environment
/// variable TOLMAR_HOST_CONFIG names, or the machine's registry: see docs/operations.md). A host
/// program calls it before anything else of the suite; what is called without it reads the
/// configuration at first use.
/// @param error out, on failure one line that names the file and the key; untouched on success.
/// @return false when there is no usable configuration; the suite's operations then fail one by
/// one, none throws.
ZLT_API bool Start(std::wstring& error);

/// The same with a file that the host program names, a service too. It is judged as any other.
/// @param file in, its path. @param error out, as above.
/// @return as above; it may be tried again.
ZLT_API bool StartFromFile(const std::wstring& file, std::wstring& error);

/// The same with the JSON text itself, whose origin the host program answers for.
/// @param json in, UTF-8. @param error out, as above. @return as above.
ZLT_API bool StartFromText(const std::string& json, std::wstring& error);

}  // namespace refhost
