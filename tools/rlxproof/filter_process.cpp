#include "rlxproof/filter_process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <system_error>
#include <utility>

namespace rlx::proof {

namespace {

constexpr const char* kFilter = "zqeuctorlx";

[[noreturn]] void fail(int error, const std::string& what) {
  throw std::system_error(error, std::generic_category(), what);
}

/// A path, or the bare name, which is then looked for in $PATH.
std::string find_filter() {
  std::error_code error;
  const std::filesystem::path here =
      std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
  // A folder of filters that is not relative to the prefix stands for itself.
  const std::array<std::filesystem::path, 2> places{
      here / kFilter, here.parent_path() / RLX_FILTER_DIRECTORY / kFilter};
  for (const auto& place : places) {
    if (!error && access(place.c_str(), X_OK) == 0) {
      return place;
    }
  }
  return kFilter;
}

struct Pipe {
  std::array<int, 2> ends{-1, -1};

  Pipe() {
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
      fail(errno, "pipe");
    }
  }
  ~Pipe() {
    close_end(0);
    close_end(1);
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  void close_end(std::size_t end) {
    if (ends[end] >= 0) {
      close(ends[end]);
      ends[end] = -1;
    }
  }
  int give(std::size_t end) { return std::exchange(ends[end], -1); }
};

/// What a child gets: its standard input and output, and the usual way to die of a broken pipe.
class SpawnSettings {
 public:
  SpawnSettings(int input, int output) {
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_adddup2(&files, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&files, output, STDOUT_FILENO);
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigdefault(&attributes, &signals);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
  }
  ~SpawnSettings() {
    posix_spawn_file_actions_destroy(&files);
    posix_spawnattr_destroy(&attributes);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;

  posix_spawn_file_actions_t files{};
  posix_spawnattr_t attributes{};
};

pid_t start(const std::vector<std::string>& options, int input, int output) {
  const std::string program = find_filter();
  std::vector<std::string> words{kFilter};
  words.insert(words.end(), options.begin(), options.end());
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) {
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);
  const SpawnSettings settings(input, output);
  pid_t child = -1;
  const int error = posix_spawnp(&child, program.c_str(), &settings.files, &settings.attributes,
                                 arguments.data(), environ);
  if (error != 0) {
    fail(error, "the filter (" + program + ") cannot be started");
  }
  return child;
}

/// @return false when nobody reads any more.
bool write_all(int pipe, reader::Bytes bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(pipe, bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) {
      return false;
    }
    bytes = bytes.subspan(written < 0 ? 0 : static_cast<std::size_t>(written));
  }
  return true;
}

std::string ending_of(int status) {
  if (WIFSIGNALED(status)) {
    return "the filter was ended by signal " + std::to_string(WTERMSIG(status));
  }
  return WEXITSTATUS(status) == 0
             ? std::string()
             : "the filter ended with status " + std::to_string(WEXITSTATUS(status));
}

}  // namespace

FilterProcess::FilterProcess(const std::vector<std::string>& options, reader::ByteInput& job) {
  Pipe in;
  Pipe out;
  child_ = start(options, in.ends[0], out.ends[1]);
  output_ = out.give(0);
  feeder_ = std::thread(&FilterProcess::feed, this, std::ref(job), in.give(1));
}

FilterProcess::~FilterProcess() {
  join();
}

std::string FilterProcess::output_path() const {
  return "/dev/fd/" + std::to_string(output_);
}

void FilterProcess::feed(reader::ByteInput& job, int pipe) {
  try {
    for (reader::Bytes part = job.look(reader::ByteInput::kMostLookAhead); !part.empty();
         part = job.look(reader::ByteInput::kMostLookAhead)) {
      if (!write_all(pipe, part)) {
        break;
      }
      job.take(part.size());
      fed_ += part.size();
    }
  } catch (...) {
    failure_ = std::current_exception();
  }
  close(pipe);
}

/// @return the child's status, as wait() gives it; 0 when it was waited for before.
int FilterProcess::join() {
  if (child_ < 0) {
    return 0;
  }
  close(output_);
  feeder_.join();
  int status = 0;
  while (waitpid(child_, &status, 0) < 0 && errno == EINTR) {
  }
  child_ = -1;
  return status;
}

std::string FilterProcess::wait() {
  const int status = join();
  if (failure_ != nullptr) {
    std::rethrow_exception(failure_);
  }
  return ending_of(status);
}

}  // namespace rlx::proof
