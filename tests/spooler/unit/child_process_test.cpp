#include "running/child_process.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <system_error>

#include "spooler/unit/spooler_rig.h"
#include "support/descriptors.h"

namespace rlx::spooler {
namespace {

using namespace rlx::testing;

std::string read_descriptor(const Descriptor& descriptor) {
  const Cancellation never;
  DescriptorSource source(descriptor.number(), never);
  return read_all(source);
}

TEST(ChildProcess, HasThreePipes) {
  ChildProcess child("/bin/sh", {"-c", "cat; echo words >&2; exit 7"});
  put_bytes(child.input().number(), "job");
  child.input().reset();
  EXPECT_EQ(read_descriptor(child.output()), "job");
  EXPECT_EQ(read_descriptor(child.messages()), "words\n");
  const ProcessEnd end = child.wait();
  EXPECT_EQ(end.status, 7);
  EXPECT_EQ(end.signal, 0);
}

TEST(ChildProcess, GetsItsArgumentsAsTheyAre) {
  const ScratchDirectory scratch;
  const std::string script = write_script("show me", "printf '<%s>' \"$0\" \"$@\"\n");
  ChildProcess child(script, {"", "a b", "'", "$HOME", "-n"});
  EXPECT_EQ(read_descriptor(child.output()), '<' + script + "><><a b><'><$HOME><-n>");
}

TEST(ChildProcess, IsCalledAsItsFile) {
  ChildProcess child("/bin/cat", {"/proc/self/cmdline"});
  EXPECT_EQ(read_descriptor(child.output()), bytes("cat\0/proc/self/cmdline\0"));
}

TEST(ChildProcess, TellsTheSignalThatEndedIt) {
  ChildProcess child("/bin/sh", {"-c", "kill -9 $$"});
  const ProcessEnd end = child.wait();
  EXPECT_EQ(end.signal, SIGKILL);
}

TEST(ChildProcess, ThatCannotBeStartedSaysWhy) {
  const ScratchDirectory scratch;
  write_file("no-program", "x");
  const std::size_t before = open_descriptors();
  const auto error_of = [](const std::string& program) {
    try {
      const ChildProcess child(program, {});
    } catch (const std::system_error& error) {
      return std::string(error.what());
    }
    return std::string("started");
  };
  EXPECT_EQ(error_of("/nowhere/filter"),
            "/nowhere/filter cannot be started: No such file or directory");
  EXPECT_EQ(error_of("./no-program"), "./no-program cannot be started: Permission denied");
  EXPECT_EQ(error_of("/tmp"), "/tmp cannot be started: Permission denied");
  EXPECT_EQ(open_descriptors(), before);
  // Nobody is left to be waited for.
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

TEST(ChildProcess, LeavesNoDescriptorBehind) {
  const std::size_t before = open_descriptors();
  {
    ChildProcess child("/bin/true", {});
    child.wait();
  }
  { const ChildProcess not_waited_for("/bin/cat", {}); }
  EXPECT_EQ(open_descriptors(), before);
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
}

TEST(ChildProcess, InheritsThreeDescriptors) {
  const Pipe other = make_pipe();
  ChildProcess child("/bin/sh", {"-c", "ls /proc/$$/fd"});
  const std::string listed = read_descriptor(child.output());
  // Those of the test's own parent may be inherited; of this process' pipes none is.
  for (const int number : {other.read_end.number(), other.write_end.number(),
                           child.output().number(), child.messages().number()}) {
    EXPECT_EQ(('\n' + listed).find('\n' + std::to_string(number) + '\n'), std::string::npos)
        << listed;
  }
}

TEST(ChildProcess, StandsInAProcessGroupOfItsOwn) {
  // Field 5 of its status is the group, field 1 the process.
  ChildProcess child("/bin/sh", {"-c",
                                 "read pid name state parent group rest </proc/$$/stat; "
                                 "echo $((pid == group)) $((parent))"});
  EXPECT_EQ(read_descriptor(child.output()), "1 " + std::to_string(getpid()) + '\n');
}

TEST(ChildProcess, TakesSignalsAsUsual) {
  const IgnoredBrokenPipe ignored;
  // A shell cannot take back what was ignored when it began.
  for (const char* signal : {"TERM", "INT", "HUP", "PIPE"}) {
    ChildProcess child("/bin/sh", {"-c", std::string("kill -") + signal + " $$; echo ignored"});
    EXPECT_EQ(read_descriptor(child.output()), "") << signal;
    EXPECT_NE(child.wait().signal, 0) << signal;
  }
}

TEST(ChildProcess, IsKilledWhenItsParentDies) {
  const Pipe told = make_pipe();
  const pid_t parent = fork();
  if (parent == 0) {
    ChildProcess child("/bin/sh", {"-c", "echo $$; exec sleep 100"});
    std::array<std::uint8_t, 32> room{};
    const std::size_t count = read_some(child.output().number(), room, "");
    write_all(told.write_end.number(), std::span(room).first(count));
    raise(SIGKILL);
  }
  std::array<char, 32> text{};
  ASSERT_GT(read(told.read_end.number(), text.data(), text.size() - 1), 0);
  const int child = std::stoi(text.data());
  ASSERT_EQ(waitpid(parent, nullptr, 0), parent);
  EXPECT_TRUE(comes_true([child] { return !is_running(child); }));
}

TEST(ChildProcess, WhoseEndNobodyCouldWaitForHasNotEndedWell) {
  const auto before = std::signal(SIGCHLD, SIG_IGN);
  ChildProcess child("/bin/true", {});
  const ProcessEnd end = child.wait();
  std::signal(SIGCHLD, before);
  EXPECT_EQ(end.status, ProcessEnd::kUnknownStatus);
}

TEST(FindProgram, LooksBesideThisProgramAndInTheInstallation) {
  namespace fs = std::filesystem;
  const fs::path here = fs::read_symlink("/proc/self/exe");
  EXPECT_EQ(find_program(here.filename(), "nowhere"), here.string());
  EXPECT_EQ(find_program("zqeuctorlx_sandboxed", "../.."),
            fs::path(RLX_SANDBOXED_PROGRAM).lexically_normal().string());
  EXPECT_EQ(find_program("zqeuctorlx_sandboxed", "."), "");
  EXPECT_EQ(find_program("no-such-program", "../.."), "");
}

}  // namespace
}  // namespace rlx::spooler
