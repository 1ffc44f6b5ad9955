// Writes a print job to standard output, for measurements: generate_job KIND BYTES
//
// The kinds are those of sample_jobs.h, and `parameter`: one sequence with so many digits. A few
// MiB are made and repeated, so that the job leaves as fast as a pipe takes it, whatever its size.

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "sample_jobs.h"

namespace {

constexpr std::size_t kPeriodBytes = std::size_t{4} << 20;
constexpr std::size_t kWriteBytes = 65536;

void put(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(STDOUT_FILENO, text.data(), std::min(text.size(), kWriteBytes));
    if (written <= 0) {
      std::exit(1);
    }
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

/// Repeats `text`; the last repetition ends at `bytes`, or at the next multiple of `unit` of it.
void repeat(std::string_view text, std::size_t bytes, std::size_t unit) {
  for (; bytes > text.size(); bytes -= text.size()) {
    put(text);
  }
  put(text.substr(0, (bytes + unit - 1) / unit * unit));
}

}  // namespace

int main(int argc, char** argv) {
  using namespace rlx::bench;
  const std::string_view kind = argc == 3 ? argv[1] : "";
  const bool parameter = kind == "parameter";
  const std::string period = sample_job(parameter ? "digits" : kind, kPeriodBytes);
  if (period.empty()) {
    std::fputs("usage: generate_job KIND BYTES; the kinds are listed in bench/sample_jobs.h\n",
               stderr);
    return 2;
  }
  const std::size_t bytes = std::strtoull(argv[2], nullptr, 10);
  if (kind.substr(0, 6) == "framed") {
    repeat(period, bytes, kFrameHeaderBytes + kFrameBytes);
    put({"0000END_PRN_DAT\0", 16});
  } else if (parameter) {
    put("\x1b[");
    repeat(period, bytes, 1);
    put("a");
  } else {
    repeat(period, bytes, 1);
  }
  return 0;
}
