#pragma once

#include <array>

#include "job/command_record.h"
#include "job/status.h"
#include "support/messages.h"

namespace rlx {

/// The room of a form name that a print-condition command gives, with its NUL.
using FcbName = std::array<char, 5>;

/// The FCB name that a print-condition command gives, up to the first blank of its columns
/// (support/condition_columns.h). A command that ends before the name gives the empty name.
/// @param name  set on success, to 0 to 4 letters and digits, NUL-terminated.
/// @return ST_OK; ST_FAILED after "FCB data error" on standard error when the command has no data
/// length or is of the short kind, or after "FCB name error" when another character stands in the
/// name.
Status fcb_name_from_command(const Messages& messages, const CommandRecord& record, FcbName& name);

}  // namespace rlx
