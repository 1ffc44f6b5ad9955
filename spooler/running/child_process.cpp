#include "running/child_process.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <system_error>

namespace rlx::spooler {

namespace {

namespace fs = std::filesystem;

/// Signals that this process catches or ignores, and the child is to take as usual.
constexpr std::array<int, 5> kUsualSignals{SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGPIPE};

struct ChildPipes {
  int input;
  int output;
  int messages;
  int start_error;
};

/// What the child does: nothing here may allocate, for other threads' locks stay locked in it.
[[noreturn]] void become(const char* program, char* const* arguments, const ChildPipes& pipes,
                         pid_t parent) {
  setpgid(0, 0);
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) {
    _exit(1);
  }
  for (const int signal : kUsualSignals) {
    std::signal(signal, SIG_DFL);
  }
  if (dup2(pipes.input, STDIN_FILENO) >= 0 && dup2(pipes.output, STDOUT_FILENO) >= 0 &&
      dup2(pipes.messages, STDERR_FILENO) >= 0) {
    execv(program, arguments);
  }
  const int error = errno;
  [[maybe_unused]] const ssize_t told = write(pipes.start_error, &error, sizeof(error));
  _exit(1);
}

std::vector<char*> pointers(std::vector<std::string>& words) {
  std::vector<char*> all;
  all.reserve(words.size() + 1);
  for (std::string& word : words) {
    all.push_back(word.data());
  }
  all.push_back(nullptr);
  return all;
}

ProcessEnd wait_for(pid_t child) {
  int status = 0;
  pid_t ended = 0;
  do {
    ended = waitpid(child, &status, 0);
  } while (ended < 0 && errno == EINTR);
  if (ended < 0) {
    return {ProcessEnd::kUnknownStatus, 0};
  }
  return WIFSIGNALED(status) ? ProcessEnd{0, WTERMSIG(status)} : ProcessEnd{WEXITSTATUS(status), 0};
}

/// What kept a program from being started; 0 when it was: it inherits no end of this pipe.
int start_error_of(int pipe) {
  int error = 0;
  ssize_t got = 0;
  do {
    got = read(pipe, &error, sizeof(error));
  } while (got < 0 && errno == EINTR);
  return got == sizeof(error) ? error : 0;
}

[[noreturn]] void fail(int error, const std::string& program) {
  throw std::system_error(error, std::generic_category(), program + " cannot be started");
}

}  // namespace

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments) {
  Pipe in = make_pipe();
  Pipe out = make_pipe();
  Pipe messages = make_pipe();
  Pipe start_error = make_pipe();
  std::vector<std::string> words{fs::path(program).filename()};
  words.insert(words.end(), arguments.begin(), arguments.end());
  const std::vector<char*> argument_pointers = pointers(words);
  const pid_t parent = getpid();
  child_ = fork();
  if (child_ < 0) {
    fail(errno, program);
  }
  if (child_ == 0) {
    become(program.c_str(), argument_pointers.data(),
           {in.read_end.number(), out.write_end.number(), messages.write_end.number(),
            start_error.write_end.number()},
           parent);
  }
  start_error.write_end.reset();
  if (const int error = start_error_of(start_error.read_end.number()); error != 0) {
    wait_for(child_);
    fail(error, program);
  }
  input_ = std::move(in.write_end);
  output_ = std::move(out.read_end);
  messages_ = std::move(messages.read_end);
  fcntl(input_.number(), F_SETFL, O_NONBLOCK);
}

ChildProcess::~ChildProcess() {
  input_.reset();
  output_.reset();
  messages_.reset();
  if (child_ >= 0) {
    wait_for(child_);
  }
}

void ChildProcess::kill() const {
  if (child_ > 0) {
    ::kill(-child_, SIGKILL);
  }
}

ProcessEnd ChildProcess::wait() {
  return wait_for(std::exchange(child_, -1));
}

std::string find_program(const std::string& name, const std::string& from_here) {
  std::error_code error;
  const fs::path here = fs::read_symlink("/proc/self/exe", error).parent_path();
  for (const fs::path& place : {here / name, here / from_here / name}) {
    if (!error && access(place.c_str(), X_OK) == 0) {
      return place.lexically_normal();
    }
  }
  return {};
}

}  // namespace rlx::spooler
