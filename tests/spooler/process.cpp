#include "spooler/process.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <pwd.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

#include "support/descriptors.h"

namespace rlx::testing {

namespace {

namespace fs = std::filesystem;

constexpr Seconds kCommandPatience(60);
constexpr auto kPauseBetweenLooks = std::chrono::milliseconds(20);

void become_user(uid_t user) {
  const passwd* const entry = getpwuid(user);
  if (entry == nullptr || initgroups(entry->pw_name, entry->pw_gid) != 0 ||
      setgid(entry->pw_gid) != 0 || setuid(user) != 0) {
    _exit(126);
  }
}

/// Standard descriptors of a new process; -1 leaves the test's own.
struct Ends {
  int input = -1;
  int output = -1;
  int error = -1;
};

void take_ends(const Ends& ends) {
  const std::array<int, 3> from{ends.input, ends.output, ends.error};
  for (int to = 0; to < 3; ++to) {
    const int end = from.at(static_cast<std::size_t>(to));
    if (end >= 0) {
      dup2(end, to);
    }
  }
}

[[noreturn]] void become(const Command& command, const Ends& ends) {
  // A test that is killed takes its programs along.
  take_ends(ends);
  if (command.user) {
    become_user(*command.user);
  }
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  std::vector<std::string> words = command.words;
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) {
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);
  clearenv();
  setenv("PATH", "/usr/sbin:/usr/bin:/sbin:/bin", 1);
  setenv("LC_ALL", "C", 1);
  for (const auto& [variable, value] : command.environment) {
    setenv(variable.c_str(), value.c_str(), 1);
  }
  // Nobody else's descriptors: a pipe that a second program holds open never ends.
  for (int descriptor = 3; descriptor < 1024; ++descriptor) {
    close(descriptor);
  }
  execvp(arguments.front(), arguments.data());
  _exit(127);
}

int open_for_messages(const std::string& file) {
  return open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
}

int status_of(int status) {
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::string read_whole(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

Process::Process(const Command& command) {
  std::array<int, 2> to{-1, -1};
  std::array<int, 2> from{-1, -1};
  if (command.has_pipes) {
    EXPECT_EQ(pipe2(to.data(), O_CLOEXEC), 0);
    EXPECT_EQ(pipe2(from.data(), O_CLOEXEC), 0);
  }
  const int error = command.error_file.empty() ? -1 : open_for_messages(command.error_file);
  id_ = fork();
  if (id_ == 0) {
    become(command, {to[0], from[1], error});
  }
  input_ = to[1];
  output_ = from[0];
  for (const int end : {to[0], from[1], error}) {
    if (end >= 0) {
      close(end);
    }
  }
}

Process::~Process() {
  close_input();
  if (is_running()) {
    send_signal(SIGKILL);
    wait(Seconds(10));
  }
  if (output_ >= 0) {
    close(output_);
  }
}

void Process::close_input() {
  if (input_ >= 0) {
    close(input_);
    input_ = -1;
  }
}

void Process::send_signal(int signal) const {
  if (!end_) {
    kill(id_, signal);
  }
}

std::optional<int> Process::wait(Seconds patience) {
  comes_true(patience, [this] {
    int status = 0;
    if (!end_ && waitpid(id_, &status, WNOHANG) == id_) {
      end_ = status_of(status);
    }
    return end_.has_value();
  });
  return end_;
}

Outcome run_command(Command command, std::string_view input) {
  const StandardInput standard_input(input);
  const CaptureDescriptor output(STDOUT_FILENO);
  const CaptureDescriptor messages(STDERR_FILENO);
  command.has_pipes = false;
  Process process(command);
  const std::optional<int> status = process.wait(kCommandPatience);
  EXPECT_TRUE(status.has_value()) << command.words.front() << " does not end";
  return {status.value_or(-1), output.text(), messages.text()};
}

void pause_between_looks() {
  std::this_thread::sleep_for(kPauseBetweenLooks);
}

std::vector<pid_t> processes_with(const std::string& variable, const std::string& value) {
  const std::string wanted = '\0' + variable + '=' + value + '\0';
  std::vector<pid_t> found;
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    if (name.find_first_not_of("0123456789") == std::string::npos &&
        ('\0' + read_whole(entry.path() / "environ")).find(wanted) != std::string::npos) {
      found.push_back(std::stoi(name));
    }
  }
  return found;
}

int free_loopback_port() {
  const int number = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof(address);
  EXPECT_EQ(bind(number, reinterpret_cast<sockaddr*>(&address), length), 0);
  EXPECT_EQ(getsockname(number, reinterpret_cast<sockaddr*>(&address), &length), 0);
  close(number);
  return ntohs(address.sin_port);
}

}  // namespace rlx::testing
