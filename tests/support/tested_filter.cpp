#include "support/tested_filter.h"

#include <cstdlib>

#if !defined(RLX_SANDBOXED_PROGRAM) || !defined(RLX_STANDIN_LIBRARY)
#error "the build tells where the program with the sandboxed paths and the font library are"
#endif

namespace rlx::testing {

namespace {

std::string told_or(const char* variable, const char* built) {
  const char* const told = std::getenv(variable);
  return told == nullptr ? built : told;
}

}  // namespace

std::string tested_filter() {
  return told_or("RLX_TESTED_FILTER", RLX_SANDBOXED_PROGRAM);
}

std::string tested_font_library() {
  return told_or("RLX_TESTED_FONT_LIBRARY", RLX_STANDIN_LIBRARY);
}

}  // namespace rlx::testing
