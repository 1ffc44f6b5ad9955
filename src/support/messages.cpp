#include "support/messages.h"

#include <cstdio>

namespace rlx {

void report(const Messages& messages, const char* text) {
  std::fprintf(stderr, "%s: %s\n", messages.program_name, text);
}

void report_system_error(const Messages& messages) {
  std::perror(messages.program_name);
}

}  // namespace rlx
