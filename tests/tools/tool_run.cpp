#include "tools/tool_run.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

#include "support/descriptors.h"

namespace rlx::testing {

namespace {

constexpr unsigned kToolSeconds = 60;

[[noreturn]] void become_tool(const char* program, const ToolRun& run) {
  std::string name = "tool";
  std::vector<std::string> copies = run.arguments;
  std::vector<char*> arguments{name.data()};
  for (std::string& copy : copies) {
    arguments.push_back(copy.data());
  }
  arguments.push_back(nullptr);
  for (const auto& [variable, value] : run.environment) {
    setenv(variable.c_str(), value.c_str(), 1);
  }
  alarm(kToolSeconds);
  run.prepare();
  execv(program, arguments.data());
  _exit(127);
}

int exit_status_of(pid_t child) {
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// All that comes from a terminal's other side, until nobody has the terminal any more.
std::string read_terminal(int master) {
  std::string text;
  std::array<char, 4096> buffer{};
  for (ssize_t count = 0; (count = read(master, buffer.data(), buffer.size())) > 0;) {
    text.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return text;
}

}  // namespace

ToolOutcome run_tool(const char* program, const ToolRun& run) {
  const StandardInput input(run.input);
  const CaptureDescriptor output(STDOUT_FILENO);
  const CaptureDescriptor messages(STDERR_FILENO);
  const pid_t child = fork();
  if (child == 0) {
    become_tool(program, run);
  }
  const int status = exit_status_of(child);
  return {status, output.text(), messages.text()};
}

bool has_terminals() {
  const int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  const bool usable = master >= 0 && grantpt(master) == 0;
  if (master >= 0) {
    close(master);
  }
  return usable;
}

ToolOutcome run_tool_on_terminal(const char* program, const ToolRun& run) {
  const int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  EXPECT_EQ(grantpt(master), 0);
  EXPECT_EQ(unlockpt(master), 0);
  const int terminal = open(ptsname(master), O_RDWR | O_NOCTTY | O_CLOEXEC);
  EXPECT_GE(terminal, 0);
  const StandardInput input(run.input);
  const CaptureDescriptor messages(STDERR_FILENO);
  const pid_t child = fork();
  if (child == 0) {
    dup2(terminal, STDOUT_FILENO);
    become_tool(program, run);
  }
  close(terminal);
  ToolOutcome outcome;
  outcome.output = read_terminal(master);
  close(master);
  outcome.status = exit_status_of(child);
  outcome.messages = messages.text();
  return outcome;
}

void obey_file_permissions() {
  prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE, 0, 0, 0);
  prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH, 0, 0, 0);
}

}  // namespace rlx::testing
