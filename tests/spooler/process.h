#pragma once

#include <sys/types.h>

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace rlx::testing {

using Seconds = std::chrono::duration<double>;

/// How a program is started. It gets no environment but `environment`.
struct Command {
  std::vector<std::string> words;  ///< the program, looked up in PATH, and its arguments
  std::map<std::string, std::string> environment{};
  std::optional<uid_t> user{};  ///< changes to a user, and to its own groups only
  bool has_pipes = false;       ///< standard input and output are the test's
  std::string error_file{};     ///< standard error; the test's own without it
};

/// A program that runs beside the test. It is ended with the object, if it still runs.
class Process {
 public:
  explicit Process(const Command& command);
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  pid_t id() const { return id_; }
  /// Its standard input and output, with Command::has_pipes.
  int input() const { return input_; }
  int output() const { return output_; }
  void close_input();

  void send_signal(int signal) const;
  /// Waits for its end. @return its exit status, or 128 and the signal; nothing when time is up.
  std::optional<int> wait(Seconds patience);
  bool is_running() { return !wait(Seconds(0)).has_value(); }

 private:
  pid_t id_ = -1;
  int input_ = -1;
  int output_ = -1;
  std::optional<int> end_;
};

/// What a program did.
struct Outcome {
  int status = 0;  ///< exit status, or 128 and the signal
  std::string output;
  std::string messages;
};

/// Runs a program to its end, at most a minute.
Outcome run_command(Command command, std::string_view input = {});

/// Calls `holds` again and again. @return false when it does not come true in time.
template <typename Condition>
bool comes_true(Seconds patience, Condition holds);

/// A little while between two looks.
void pause_between_looks();

template <typename Condition>
bool comes_true(Seconds patience, Condition holds) {
  const auto begin = std::chrono::steady_clock::now();
  while (!holds()) {
    if (std::chrono::steady_clock::now() - begin > patience) {
      return false;
    }
    pause_between_looks();
  }
  return true;
}

/// Processes that have a variable with this value in their environment.
std::vector<pid_t> processes_with(const std::string& variable, const std::string& value);

/// A port of 127.0.0.1 that nobody uses now.
int free_loopback_port();

}  // namespace rlx::testing
