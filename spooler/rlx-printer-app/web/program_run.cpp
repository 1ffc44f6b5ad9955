#include "rlx-printer-app/web/program_run.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <semaphore>

namespace rlx::printer_app {

namespace {

using Clock = std::chrono::steady_clock;

std::counting_semaphore<RunPlace::kPlaces>& places() {
  static std::counting_semaphore<RunPlace::kPlaces> all(RunPlace::kPlaces);
  return all;
}

/// A program's three pipes until it ends.
class Conversation {
 public:
  Conversation(spooler::ChildProcess& child, std::string_view input, const ProgramLimits& limits)
      : child_(child), input_(input), limits_(limits), end_(Clock::now() + limits.time) {}

  ProgramResult run() {
    if (input_.empty()) {
      child_.input().reset();
    }
    while (child_.output().is_open() || child_.messages().is_open()) {
      wait();
    }
    child_.input().reset();
    result_.end = child_.wait();
    return std::move(result_);
  }

 private:
  void wait() {
    std::array<pollfd, 3> all{{{child_.input().number(), POLLOUT, 0},
                               {child_.output().number(), POLLIN, 0},
                               {child_.messages().number(), POLLIN, 0}}};
    const int count = poll(all.data(), all.size(), is_killed_ ? -1 : milliseconds_left());
    if (count == 0) {
      result_.timed_out = true;
      kill();
    }
    if (count <= 0) {
      return;
    }
    if (all[0].revents != 0) {
      put();
    }
    if (all[1].revents != 0) {
      get(child_.output(), result_.output, limits_.output_bytes, result_.cut);
    }
    if (all[2].revents != 0) {
      bool too_many = false;
      get(child_.messages(), result_.messages, ProgramResult::kMostMessageBytes, too_many);
    }
    if (result_.cut && !is_killed_) {
      kill();
    }
  }

  int milliseconds_left() const {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end_ - Clock::now());
    return static_cast<int>(std::max<std::chrono::milliseconds::rep>(left.count(), 0));
  }

  void kill() {
    is_killed_ = true;
    child_.kill();
  }

  void put() {
    const ssize_t count = write(child_.input().number(), input_.data(), input_.size());
    if (count > 0) {
      input_.remove_prefix(static_cast<std::size_t>(count));
    }
    // A program that reads no more is none that failed.
    if (input_.empty() || (count < 0 && errno != EAGAIN && errno != EINTR)) {
      child_.input().reset();
    }
  }

  static void get(spooler::Descriptor& from, std::string& text, std::size_t most, bool& too_many) {
    std::array<char, 65536> portion{};
    const ssize_t count = read(from.number(), portion.data(), portion.size());
    if (count > 0) {
      const std::size_t taken = std::min(static_cast<std::size_t>(count), most - text.size());
      text.append(portion.data(), taken);
      too_many = too_many || taken < static_cast<std::size_t>(count);
    } else if (count == 0 || errno != EINTR) {
      from.reset();
    }
  }

  spooler::ChildProcess& child_;
  std::string_view input_;
  const ProgramLimits& limits_;
  Clock::time_point end_;
  ProgramResult result_;
  bool is_killed_ = false;
};

}  // namespace

ProgramResult run_program(const std::string& program, const std::vector<std::string>& arguments,
                          std::string_view input, const ProgramLimits& limits) {
  spooler::ChildProcess child(program, arguments);
  return Conversation(child, input, limits).run();
}

RunPlace::RunPlace() : is_there_(places().try_acquire_for(kMostWait)) {}

RunPlace::~RunPlace() {
  if (is_there_) {
    places().release();
  }
}

}  // namespace rlx::printer_app
