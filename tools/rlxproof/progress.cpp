#include "rlxproof/progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>

namespace rlx::proof {

namespace {

constexpr std::uint64_t kPagesBetween = 20;
constexpr std::uint64_t kBarWidth = 40;

std::string bar(std::uint64_t done, std::uint64_t total) {
  const std::uint64_t filled = std::min(kBarWidth, kBarWidth * done / total);
  return " [" + std::string(filled, '#') + std::string(kBarWidth - filled, '.') + "]";
}

}  // namespace

Progress::Progress(std::uint64_t total, std::function<std::uint64_t()> done)
    : total_(total), done_(std::move(done)), is_terminal_(isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
  if (is_shown_) {
    std::fputs("\r\033[K", stderr);
  }
}

void Progress::page(std::uint64_t number) {
  if (!is_terminal_ || number <= kFirstPage || number % kPagesBetween != 0) {
    return;
  }
  is_shown_ = true;
  const std::string text = total_ == 0 ? std::string() : bar(done_(), total_);
  std::fprintf(stderr, "\rrlxproof: page %llu%s ", static_cast<unsigned long long>(number),
               text.c_str());
}

}  // namespace rlx::proof
