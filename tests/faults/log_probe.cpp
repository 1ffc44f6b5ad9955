// Calls the log's writer and a guard, of which no job is large enough, and tells what they return:
//
//   log_probe append LINE...   log_append of each line, its result on a line of standard output
//   log_probe guard            narrow_ulong_to_int of a value that does not fit; its result, and
//                              whether errno is as it was

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <string_view>

#include "support/error_log.h"
#include "support/narrowing.h"

namespace {

constexpr std::uint64_t kTooLarge = 0x123456789;
constexpr int kSomeError = EXDEV;

void append(const char* line) {
  std::printf("%d\n", static_cast<int>(rlx::log_append(line)));
}

void guard() {
  errno = kSomeError;
  const std::int32_t value = rlx::narrow_ulong_to_int(kTooLarge, "module", "function", 7);
  const bool kept = errno == kSomeError;
  std::printf("%d %s\n", value, kept ? "kept" : "changed");
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view task = argc > 1 ? argv[1] : "";
  if (task == "guard") {
    guard();
  }
  for (int i = 2; task == "append" && i < argc; ++i) {
    append(argv[i]);
  }
}
