#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace rlx::testing {

// What a test and the preloaded shim tell each other: a file in the current directory that both
// have mapped. The test writes the plan before a run, the shim counts the calls during it. Only
// calls by the program itself are counted and failed, not those of the libraries it loads.

inline constexpr const char* kBoardFile = "fault-board";
/// Set (to anything) in the environment of a process that the shim is to disturb.
inline constexpr const char* kBoardVariable = "RLX_FAULT_BOARD";

/// The functions that can fail. Fortified and 64-bit names count as the plain ones.
enum class Call : std::uint8_t {
  read,
  pread,
  write,
  open,
  close,
  stat,
  fstat,
  lseek,
  ftruncate,
  lockf,
  poll_now,   ///< poll that does not wait: asks whether input is ready
  poll_wait,  ///< poll that waits for a transfer
  fcntl,
  malloc,
  dlopen,
  dlsym,
  dlclose,
  putenv,
  time,
  ctime,
  message,  ///< fprintf, fputs, fwrite, perror
};
inline constexpr std::array kCallNames{"read",  "pread",  "write",     "open",  "close",   "stat",
                                       "fstat", "lseek",  "ftruncate", "lockf", "poll",    "poll",
                                       "fcntl", "malloc", "dlopen",    "dlsym", "dlclose", "putenv",
                                       "time",  "ctime",  "message"};
inline constexpr std::size_t kCalls = kCallNames.size();
static_assert(kCalls == static_cast<std::size_t>(Call::message) + 1);

/// What a call is about: the file behind its descriptor or path.
enum class Role : std::uint8_t {
  none,  ///< no file
  input,
  output,
  messages,
  form,
  environment,
  g1_range,
  font_library,
  log,
  other,
};
inline constexpr std::array kRoleNames{"",     "input",       "output",   "messages",
                                       "form", "environment", "g1 range", "font library",
                                       "log",  "another file"};
inline constexpr std::size_t kRoles = kRoleNames.size();
static_assert(kRoles == static_cast<std::size_t>(Role::other) + 1);

/// What becomes of a call that a fault meets.
enum class Effect : std::uint8_t {
  fail,     ///< nothing is done; the function's failure value, and errno
  zero,     ///< nothing is done; 0 is returned
  shorten,  ///< a transfer of `bytes` bytes at most
};

/// Calls `first` to `first + times - 1` of a function on a role do not work.
struct Fault {
  Call call = Call::read;
  Role role = Role::none;
  Effect effect = Effect::fail;
  std::int32_t error = 0;
  std::uint32_t first = 0;  ///< from 1; 0 is no fault
  std::uint32_t times = 1;
  std::uint32_t bytes = 0;
};

/// How a run is disturbed.
struct Plan {
  std::array<Fault, 2> faults{};
  std::uint32_t read_limit = 0;    ///< most bytes that any read delivers; 0 is no limit
  std::uint32_t write_limit = 0;   ///< most bytes that any write takes
  bool input_never_ready = false;  ///< what a poll that does not wait finds
  bool interruptible = false;      ///< SIGUSR1 has a handler, and restarts nothing
  std::uint32_t descriptors = 0;   ///< limit on open descriptors; 0 leaves it
};

/// What a run did.
struct Tally {
  std::array<std::array<std::uint32_t, kRoles>, kCalls> calls{};
  bool shim_stands = false;  ///< the program is about to begin
  std::uint32_t faults_met = 0;
  std::uint64_t written_before_fault = 0;  ///< to standard output, before the first fault
  std::uint64_t written = 0;               ///< to standard output
};

struct FaultBoard {
  Plan plan;
  Tally tally;
  std::uint32_t time_limit_seconds = 0;  ///< then SIGALRM ends the process
};

}  // namespace rlx::testing
