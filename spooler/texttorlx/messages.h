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

/// Waits, for seconds at most, until all lines so far have been read. cupsd may notice first that a
/// filter has ended, and then what it said last is in the log only and no longer the job's reason
/// ("Filter failed" is). Lines that do not go to a pipe are not waited for.
void wait_until_read();

}  // namespace rlx::texttorlx
