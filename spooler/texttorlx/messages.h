#pragma once

#include <cstdint>
#include <string>

namespace rlx::texttorlx {

/// Lines on standard error, as CUPS reads them (filter(7)). A line has no line feed of its own:
/// what would begin a further line is put into the same one.

/// For the log, and for the users: CUPS shows the first one as the job's reason
/// (job-printer-state-message).
void error(const std::string& text);
void info(const std::string& text);
void debug(const std::string& text);

/// A page was handed on. @param number  from 1. @param copies  that the printer makes of it.
void page(std::uint64_t number, unsigned copies);

/// Adds a reason to the state of the printer, or takes it away, such as "rlx-form-missing-warning".
void add_state(const std::string& reason);
void remove_state(const std::string& reason);

}  // namespace rlx::texttorlx
