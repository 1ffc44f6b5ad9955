#pragma once

namespace rlx {

/// The messages of the filter. They go to standard error.
struct Messages {
  /// argv[0]; the prefix of every message.
  const char* program_name = "";
};

/// Writes one line: the program name, ": ", the text, LF.
void report(const Messages& messages, const char* text);

/// Writes the program name, ": ", the text of the current errno and LF.
void report_system_error(const Messages& messages);

}  // namespace rlx
