#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace rlx::testing {

/// What a program did.
struct ToolOutcome {
  int status = 0;  ///< exit status; -1 when a signal ended it
  std::string output;
  std::string messages;
};

/// How a program is run.
struct ToolRun {
  std::vector<std::string> arguments{};
  std::string_view input{};
  std::map<std::string, std::string> environment{};  ///< besides the test's own
  std::function<void()> prepare = [] {};             ///< done in the new process, before it starts
};

/// Runs a program in the current directory to its end. It is called "tool".
ToolOutcome run_tool(const char* program, const ToolRun& run);

/// The same with a terminal as its standard output; the outcome's line ends are the terminal's.
/// Only where has_terminals().
ToolOutcome run_tool_on_terminal(const char* program, const ToolRun& run);

/// False where the system has no pseudo terminals, as in a bare chroot.
bool has_terminals();

/// For ToolRun::prepare: the file permissions hold, for root too.
void obey_file_permissions();

}  // namespace rlx::testing
