#include "support/messages.h"

#include <cstdio>

#include "job/settings.h"

namespace rlx {

void report(const char* text) {
  std::fprintf(stderr, "%s: %s\n", job_settings.program_name, text);
}

void report_system_error() {
  std::perror(job_settings.program_name);
}

}  // namespace rlx
