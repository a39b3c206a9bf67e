#include "tools/cloudsim/drive/Drive.h"

#include <cstdio>

namespace cloudsim {

int Drive(int, char**) {
  std::fputs("cloudsim: drive is not offered on Windows\n", stderr);
  return 2;
}

}  // namespace cloudsim
