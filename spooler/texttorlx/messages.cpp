#include "texttorlx/messages.h"

#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "mapping/words.h"
#include "running/descriptor.h"

namespace rlx::texttorlx {

namespace {

/// One write a line: lines of two threads do not mix. Nothing can be said of a failure.
void write_line(const std::string& prefix, const std::string& text) {
  const std::string line = prefix + spooler::in_one_line(text) + '\n';
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(line.data());
  static_cast<void>(spooler::write_all(STDERR_FILENO, {bytes, line.size()}));
}

/// True when standard error is a pipe with something in it.
bool is_waiting_to_be_read() {
  struct stat state {};
  int bytes = 0;
  return fstat(STDERR_FILENO, &state) == 0 && S_ISFIFO(state.st_mode) &&
         ioctl(STDERR_FILENO, FIONREAD, &bytes) == 0 && bytes > 0;
}

}  // namespace

void error(const std::string& text) {
  write_line("ERROR: ", text);
}

void info(const std::string& text) {
  write_line("INFO: ", text);
}

void debug(const std::string& text) {
  write_line("DEBUG: ", text);
}

void page(std::uint64_t number, unsigned copies) {
  write_line("PAGE: ", std::to_string(number) + ' ' + std::to_string(copies));
}

void add_state(const std::string& reason) {
  write_line("STATE: +", reason);
}

void remove_state(const std::string& reason) {
  write_line("STATE: -", reason);
}

void wait_until_read() {
  constexpr auto kPatience = std::chrono::seconds(5);
  constexpr auto kBetweenLooks = std::chrono::milliseconds(5);
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (is_waiting_to_be_read() && std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(kBetweenLooks);
  }
}

}  // namespace rlx::texttorlx
