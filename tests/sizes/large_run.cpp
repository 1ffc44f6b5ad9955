#include "sizes/large_run.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <thread>

namespace rlx::testing {

namespace {

constexpr int kKilledBySignal = 1000;
constexpr std::size_t kPortionBytes = std::size_t{1} << 20U;
constexpr std::chrono::milliseconds kPause{1};

/// A descriptor that is closed in time.
class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  ~Descriptor() { reset(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int number() const { return number_; }
  void reset(int number = -1) {
    if (number_ >= 0) {
      close(number_);
    }
    number_ = number;
  }

 private:
  int number_;
};

struct Pipe {
  Descriptor from;
  Descriptor to;

  Pipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
      std::perror("pipe");
      std::abort();
    }
    from.reset(ends[0]);
    to.reset(ends[1]);
    fcntl(ends[0], F_SETPIPE_SZ,
          static_cast<int>(kPortionBytes));  // as large as the system lets it
  }
};

[[noreturn]] void become_filter(const std::vector<std::string>& options, int input, int output,
                                int messages) {
  std::vector<std::string> words{"filter"};
  words.insert(words.end(), options.begin(), options.end());
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) {
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);
  dup2(input, STDIN_FILENO);
  dup2(output, STDOUT_FILENO);
  dup2(messages, STDERR_FILENO);
  std::signal(SIGPIPE, SIG_DFL);
  execv(RLX_SANDBOXED_PROGRAM, arguments.data());
  std::abort();
}

/// @return false when nobody reads any more.
bool write_all(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) {
      return false;
    }
    bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
  }
  return true;
}

/// Reads up to `room` bytes, until the end. @return how many came.
std::size_t read_all(int descriptor, char* bytes, std::size_t room) {
  std::size_t done = 0;
  while (done < room) {
    const ssize_t count = read(descriptor, bytes + done, room - done);
    if (count == 0 || (count < 0 && errno != EINTR)) {
      break;
    }
    done += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
  }
  return done;
}

/// A value of /proc/PID/status in KiB; 0 when there is none.
std::uint64_t status_value(pid_t process, const std::string& key) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  for (std::string word; status >> word;) {
    if (word == key) {
      std::uint64_t value = 0;
      status >> value;
      return value;
    }
  }
  return 0;
}

/// Waits until the process has read all that is in the pipe and waits for more.
void wait_until_read(int reading_end, pid_t process) {
  for (;;) {
    int left = 0;
    ioctl(reading_end, FIONREAD, &left);
    std::ifstream stat("/proc/" + std::to_string(process) + "/stat");
    std::string number;
    std::string name;
    std::string state;
    stat >> number >> name >> state;
    if (left == 0 && state != "R") {
      return;
    }
    std::this_thread::sleep_for(kPause);
  }
}

/// The host's side, in a thread of its own.
struct Feeder {
  LargeJob& job;
  std::uint64_t least;
  int to;
  int reading_end;
  pid_t process;
  LargeRun& run;
  std::uint64_t units = 0;
  bool refused = false;

  void feed() {
    std::string portion;
    std::uint64_t fed = 0;
    while (fed < least && !refused) {
      portion.clear();
      while (portion.size() < kPortionBytes && fed + portion.size() < least) {
        job.make(portion);
        ++units;
      }
      fed += portion.size();
      refused = !write_all(to, portion);
    }
    if (!refused) {
      wait_until_read(reading_end, process);
      run.address_space = status_value(process, "VmPeak:");
      run.memory = status_value(process, "VmHWM:");
      refused = !write_all(to, job.tail());
    }
  }
};

/// The printer's side.
class Comparison {
 public:
  Comparison(int from, LargeRun& run) : from_(from), run_(run) {}

  /// Takes what is expected next, once it is much or the last of it. @return false after a
  /// difference.
  bool take(std::string& expected, bool last) {
    if (expected.size() < kPortionBytes && !last) {
      return true;
    }
    room_.resize(std::max(room_.size(), expected.size()));
    const std::size_t count = read_all(from_, room_.data(), expected.size());
    if (std::memcmp(room_.data(), expected.data(), count) != 0) {
      const auto differing = std::mismatch(
          room_.begin(), room_.begin() + static_cast<std::ptrdiff_t>(count), expected.begin());
      run_.bytes_printed += static_cast<std::uint64_t>(differing.first - room_.begin());
      run_.fault = "wrong byte at offset " + std::to_string(run_.bytes_printed);
      return false;
    }
    run_.bytes_printed += count;
    if (count != expected.size()) {
      run_.fault = "the output ends at offset " + std::to_string(run_.bytes_printed);
      return false;
    }
    expected.clear();
    return true;
  }

  void expect_end() {
    char byte = 0;
    if (read_all(from_, &byte, 1) != 0) {
      run_.fault = "more than is expected behind offset " + std::to_string(run_.bytes_printed);
    }
  }

 private:
  int from_;
  LargeRun& run_;
  std::string room_;
};

/// Makes the job again and compares what must come of it with what comes.
void compare(LargeJob& job, std::uint64_t least, Comparison& comparison) {
  PrintedJob printed;
  std::string made;
  for (std::uint64_t done = 0; done < least; done += made.size()) {
    made.clear();
    job.make(made);
    job.print(printed);
    if (!comparison.take(printed.bytes, false)) {
      return;
    }
  }
  job.finish(printed);
  if (comparison.take(printed.bytes, true)) {
    comparison.expect_end();
  }
}

int wait_for(pid_t process) {
  int status = 0;
  waitpid(process, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : kKilledBySignal + WTERMSIG(status);
}

}  // namespace

LargeRun run_on_large_job(const std::vector<std::string>& options, LargeJob& fed, LargeJob& told,
                          std::uint64_t bytes) {
  LargeRun run;
  std::signal(SIGPIPE, SIG_IGN);
  Pipe input;
  Pipe output;
  Pipe messages;
  const pid_t process = fork();
  if (process == 0) {
    become_filter(options, input.from.number(), output.to.number(), messages.to.number());
  }
  output.to.reset();
  messages.to.reset();
  Feeder feeder{fed, bytes, input.to.number(), input.from.number(), process, run};
  std::thread host([&] {
    feeder.feed();
    input.to.reset();
  });
  Comparison comparison(output.from.number(), run);
  compare(told, bytes, comparison);
  // After a difference the filter ends because nobody reads, and so does the feeder.
  output.from.reset();
  if (!run.fault.empty()) {
    kill(process, SIGKILL);
  }
  run.status = wait_for(process);
  input.from.reset();
  host.join();
  std::array<char, 4096> words{};
  run.messages.assign(words.data(), read_all(messages.from.number(), words.data(), words.size()));
  return run;
}

}  // namespace rlx::testing
