#include "support/process_end.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "job/exit_status.h"

namespace rlx {

void end_process(Status status) {
  std::exit(exit_status_of(status));
}

void end_with_write_error() {
  std::fputs("write error", stderr);
  end_process(ST_FAILED);
}

void close_standard_output() {
  // A close that a signal interrupts has closed.
  if (close(STDOUT_FILENO) != 0 && errno != EINTR) {
    end_with_write_error();
  }
}

}  // namespace rlx
