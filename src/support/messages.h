#pragma once

namespace rlx {

/// Writes one line to standard error: the program name, ": ", the text, LF.
void report(const char* text);

/// Writes the program name, ": ", the text of the current errno and LF to standard error.
void report_system_error();

}  // namespace rlx
