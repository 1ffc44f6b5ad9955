#include "rlxdump/output.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

namespace rlx::dump {

namespace {

constexpr std::size_t kBufferBytes = 65536;

}  // namespace

void Output::put(std::string_view text) {
  waiting_ += text;
  if (waiting_.size() >= kBufferBytes) {
    flush();
  }
}

void Output::flush() {
  // What cannot be written does not wait any more. Both keep their room.
  std::swap(waiting_, written_);
  waiting_.clear();
  const std::string& text = written_;
  if (text_ != nullptr) {
    *text_ += text;
    return;
  }
  for (std::string_view rest = text; !rest.empty();) {
    const ssize_t written = write(descriptor_, rest.data(), rest.size());
    if (written < 0 && errno == EINTR) {
      continue;
    }
    if (written < 0) {
      throw std::system_error(errno, std::generic_category(), "cannot write");
    }
    rest.remove_prefix(static_cast<std::size_t>(written));
  }
}

std::string Painter::paint(Look look, std::string_view text) const {
  constexpr std::array<std::string_view, 6> kStarts{"",           "\x1b[2m",  "\x1b[1m",
                                                    "\x1b[1;36m", "\x1b[31m", "\x1b[32m"};
  if (!colored_ || look == Look::plain || text.empty()) {
    return std::string(text);
  }
  return std::string(kStarts[static_cast<std::size_t>(look)]) + std::string(text) + "\x1b[0m";
}

std::string left(std::string_view text, std::size_t width) {
  std::string padded(text);
  padded.resize(std::max(padded.size(), width), ' ');
  return padded;
}

std::string right(std::string_view text, std::size_t width) {
  std::string padded(text);
  padded.insert(0, width - std::min(width, padded.size()), ' ');
  return padded;
}

}  // namespace rlx::dump
