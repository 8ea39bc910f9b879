#include "console/cli.h"

#include <cstdio>

namespace tv::console {

int RunCli(int, char**) {
  std::fputs("tvplot\n", stdout);
  return 0;
}

}  // namespace tv::console
