#include "faults/fault_rig.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <utility>

#if !defined(RLX_FAULT_SHIM) || !defined(RLX_SANDBOXED_PROGRAM)
#error "the build tells where the shim and the program with the sandboxed paths are"
#endif

namespace rlx::testing {

namespace {

/// Reached only by a program that hangs; it is ended by SIGALRM then.
constexpr std::uint32_t kTimeLimitSeconds = 10;

/// A link in the current directory: its name has no blank or colon, which would end it.
constexpr const char* kShimLink = "./shim.so";

FaultBoard* make_board() {
  const int file = open(kBoardFile, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  EXPECT_GE(file, 0);
  EXPECT_EQ(ftruncate(file, sizeof(FaultBoard)), 0);
  void* const place =
      mmap(nullptr, sizeof(FaultBoard), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  EXPECT_NE(place, MAP_FAILED);
  close(file);
  return static_cast<FaultBoard*>(place);
}

std::vector<char*> pointers_to(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

pid_t spawn_program(const std::string& program, const std::vector<std::string>& options,
                    const Streams& streams) {
  std::vector<std::string> arguments{"filter"};
  arguments.insert(arguments.end(), options.begin(), options.end());
  std::vector<std::string> environment{std::string("LD_PRELOAD=") + kShimLink,
                                       std::string(kBoardVariable) + "=1"};
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, streams.input, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, streams.output, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, streams.messages, STDERR_FILENO);
  pid_t process = -1;
  EXPECT_EQ(posix_spawn(&process, program.c_str(), &actions, nullptr, pointers_to(arguments).data(),
                        pointers_to(environment).data()),
            0);
  posix_spawn_file_actions_destroy(&actions);
  return process;
}

std::string program_under_test() {
  return is_other_program() ? std::getenv(kProgramVariable) : RLX_SANDBOXED_PROGRAM;
}

void empty_file(int descriptor) {
  EXPECT_EQ(ftruncate(descriptor, 0), 0);
  lseek(descriptor, 0, SEEK_SET);
}

}  // namespace

bool is_other_program() {
  return std::getenv(kProgramVariable) != nullptr;
}

FaultRig::FaultRig(std::string program, std::vector<std::string> options)
    : program_(std::move(program)),
      options_(std::move(options)),
      board_(make_board()),
      files_{open_memory_file(""), open_memory_file(""), open_memory_file("")} {
  std::filesystem::create_symlink(RLX_FAULT_SHIM, kShimLink);
}

FaultRig::FaultRig(const Job& job) : FaultRig(program_under_test(), job.options) {
  job.lay_files();
  set_input(job.input);
}

FaultRig::~FaultRig() {
  munmap(board_, sizeof(FaultBoard));
  for (const int file : {files_.input, files_.output, files_.messages}) {
    close(file);
  }
}

void FaultRig::set_input(std::string_view input) const {
  empty_file(files_.input);
  EXPECT_EQ(write(files_.input, input.data(), input.size()), static_cast<ssize_t>(input.size()));
}

pid_t FaultRig::spawn(const Plan& plan, const Streams& streams) {
  *board_ = FaultBoard{plan, {}, kTimeLimitSeconds};
  return spawn_program(program_, options_, streams);
}

Outcome FaultRig::run(const Plan& plan) {
  lseek(files_.input, 0, SEEK_SET);
  empty_file(files_.output);
  empty_file(files_.messages);
  const int status = wait_for(spawn(plan, files_));
  return {status, memory_file_bytes(files_.output), memory_file_bytes(files_.messages),
          board_->tally};
}

pid_t FaultRig::start(const Plan& plan, const Streams& streams) {
  const pid_t process = spawn(plan, streams);
  const volatile bool& stands = board_->tally.shim_stands;
  for (int patience = 0; !stands && patience < 100000; ++patience) {
    usleep(100);
  }
  EXPECT_TRUE(stands);
  return process;
}

int FaultRig::wait_for(pid_t process) {
  int status = 0;
  EXPECT_EQ(waitpid(process, &status, 0), process);
  return WIFEXITED(status) ? WEXITSTATUS(status) : kEndedBySignal + WTERMSIG(status);
}

std::uint32_t calls_of(const Tally& tally, Call call, Role role) {
  return tally.calls[static_cast<std::size_t>(call)][static_cast<std::size_t>(role)];
}

int open_memory_file(std::string_view bytes) {
  const int descriptor = memfd_create("test", MFD_CLOEXEC);
  EXPECT_GE(descriptor, 0);
  EXPECT_EQ(write(descriptor, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  lseek(descriptor, 0, SEEK_SET);
  return descriptor;
}

std::string memory_file_bytes(int descriptor) {
  std::string all(static_cast<std::size_t>(lseek(descriptor, 0, SEEK_END)), '\0');
  EXPECT_EQ(pread(descriptor, all.data(), all.size(), 0), static_cast<ssize_t>(all.size()));
  return all;
}

}  // namespace rlx::testing
