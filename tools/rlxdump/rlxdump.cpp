#include <csignal>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "rlxdump/run.h"

int main(int argc, char** argv) {
  // A reader of the output that goes away is told like any other failure to write.
  std::signal(SIGPIPE, SIG_IGN);
  try {
    return rlx::dump::run({argv + 1, argv + argc});
  } catch (const std::exception& error) {
    std::fprintf(stderr, "rlxdump: %s\n", error.what());
    return rlx::dump::kWrongInput;
  }
}
