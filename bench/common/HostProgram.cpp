#include "bench/common/HostProgram.h"

#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "host/common/Text.h"
#include "reference_host/Startup.h"

namespace HostProgram {

void Start() {
  std::wstring error;
  if (!refhost::Start(error)) throw std::runtime_error(ZLT::String::UTF16ToUTF8(error));
}

int Run(const char* name, const std::function<int()>& work) {
  try {
    return work();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", name, error.what());
    return 1;
  }
}

void End(int status) {
  std::fflush(stdout);
  TerminateProcess(GetCurrentProcess(), static_cast<UINT>(status));
  std::abort();  // not reached
}

}  // namespace HostProgram
