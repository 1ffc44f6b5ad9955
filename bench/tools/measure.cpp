// Runs programs on the same input, side by side, and says what they took:
//
//   measure RUNS STARTS -- [FEEDER [ARGUMENTS...]] -- NAME PROGRAM [ARGUMENTS...] [-- NAME ...]
//
// A run starts every program once, one after the other: standard input is a pipe that FEEDER fills,
// standard output a pipe that is drained. The clock starts when the first input stands ready, just
// before the program is started, and stops at its end. Without FEEDER each program is started
// STARTS times a run, with nothing to read and nowhere to write. A line of tab-separated values
// comes out for each program: NAME, the median of its wall-clock seconds, the median of its
// processor seconds, its largest resident set in KiB.
//
// It stays small itself, because a program's resident set counts from before its start.

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

extern char** environ;

namespace {

constexpr std::size_t kMostPrograms = 16;
constexpr std::size_t kMostRuns = 101;
constexpr std::size_t kDrainedBytes = 1048576;

struct Program {
  const char* name = nullptr;
  char** command = nullptr;
  std::array<double, kMostRuns> wall{};
  std::array<double, kMostRuns> processor{};
  long resident = 0;
};

struct Plan {
  std::size_t runs = 0;
  int starts = 0;
  char** feeder = nullptr;
  std::size_t programs = 0;
};

Plan plan;
std::array<Program, kMostPrograms> programs;

[[noreturn]] void fail(const char* what) {
  std::perror(what);
  std::exit(1);
}

struct Pipe {
  int from = -1;
  int to = -1;
};

Pipe open_pipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    fail("pipe");
  }
  return {ends[0], ends[1]};
}

pid_t start(char** command, int input, int output) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  pid_t process = 0;
  if (posix_spawnp(&process, command[0], &actions, nullptr, command, environ) != 0) {
    fail(command[0]);
  }
  posix_spawn_file_actions_destroy(&actions);
  return process;
}

double seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

/// Waits for the end of a program and adds up what it took.
void finish(pid_t process, Program& program, std::size_t run) {
  int status = 0;
  rusage usage{};
  if (wait4(process, &status, 0, &usage) != process || status != 0) {
    std::fprintf(stderr, "measure: %s failed\n", program.name);
    std::exit(1);
  }
  program.processor[run] += seconds(usage.ru_utime) + seconds(usage.ru_stime);
  program.resident = std::max(program.resident, usage.ru_maxrss);
}

/// Throws away what comes, without copying it.
void drain(int from, int null_device) {
  while (splice(from, nullptr, null_device, nullptr, kDrainedBytes, 0) > 0) {
  }
}

void wait_for_input(int from) {
  pollfd descriptor{from, POLLIN, 0};
  poll(&descriptor, 1, -1);
}

using Clock = std::chrono::steady_clock;

double since(Clock::time_point start_time) {
  return std::chrono::duration<double>(Clock::now() - start_time).count();
}

void run_fed(Program& program, std::size_t run, int null_device) {
  const Pipe input = open_pipe();
  const Pipe output = open_pipe();
  const pid_t feeder = start(plan.feeder, null_device, input.to);
  close(input.to);
  wait_for_input(input.from);
  const Clock::time_point start_time = Clock::now();
  const pid_t process = start(program.command, input.from, output.to);
  close(input.from);
  close(output.to);
  drain(output.from, null_device);
  finish(process, program, run);
  program.wall[run] = since(start_time);
  close(output.from);
  waitpid(feeder, nullptr, 0);
}

void run_unfed(Program& program, std::size_t run, int null_device) {
  const Clock::time_point start_time = Clock::now();
  for (int i = 0; i < plan.starts; ++i) {
    finish(start(program.command, null_device, null_device), program, run);
  }
  program.wall[run] = since(start_time) / plan.starts;
  program.processor[run] /= plan.starts;
}

double median(std::array<double, kMostRuns>& values) {
  std::sort(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(plan.runs));
  return values[plan.runs / 2];
}

/// Cuts the arguments at each "--"; the groups end in a null pointer then. @return the next group,
/// null behind the last one.
char** next_group(char** group) {
  for (; *group != nullptr; ++group) {
    if (std::strcmp(*group, "--") == 0) {
      *group = nullptr;
      return group + 1;
    }
  }
  return nullptr;
}

bool read_plan(char** arguments) {
  char** const feeder = next_group(arguments);
  if (feeder == nullptr || arguments[0] == nullptr || arguments[1] == nullptr) {
    return false;
  }
  plan.runs = std::strtoul(arguments[0], nullptr, 10);
  plan.starts = std::atoi(arguments[1]);
  char** group = next_group(feeder);
  plan.feeder = *feeder == nullptr ? nullptr : feeder;
  while (group != nullptr && plan.programs < kMostPrograms) {
    char** const following = next_group(group);
    if (group[0] == nullptr || group[1] == nullptr) {
      return false;
    }
    programs[plan.programs].name = group[0];
    programs[plan.programs++].command = group + 1;
    group = following;
  }
  return plan.runs >= 1 && plan.runs <= kMostRuns && plan.starts >= 1 && plan.programs > 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || !read_plan(argv + 1)) {
    std::fputs("usage: measure RUNS STARTS -- [FEEDER...] -- NAME PROGRAM... [-- NAME ...]\n",
               stderr);
    return 2;
  }
  const int null_device = open("/dev/null", O_RDWR | O_CLOEXEC);
  for (std::size_t run = 0; run < plan.runs; ++run) {
    for (std::size_t i = 0; i < plan.programs; ++i) {
      (plan.feeder != nullptr ? run_fed : run_unfed)(programs[i], run, null_device);
    }
  }
  for (std::size_t i = 0; i < plan.programs; ++i) {
    Program& program = programs[i];
    std::printf("%s\t%.6f\t%.6f\t%ld\n", program.name, median(program.wall),
                median(program.processor), program.resident);
  }
  return 0;
}
