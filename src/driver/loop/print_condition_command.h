#pragma once

#include "job/command_record.h"
#include "job/print_conditions.h"
#include "job/status.h"
#include "support/messages.h"

namespace rlx {

/// Fills `conditions` from a print-condition command (command 482), a sequence with counted data in
/// fixed columns (support/condition_columns.h).
///
/// Texts keep only the letters and digits of their columns. Numbers are decimal, blanks in front of
/// them and junk behind them allowed; no digits are 0. An overlay count of 0 becomes the copies
/// when there is an overlay.
///
/// All fields are cleared first. A command of the long kind whose layout is none of the three
/// leaves them so, which is no error.
///
/// @return ST_OK; ST_FAILED after "FCB data error" on standard error when byte 4 is a blank.
Status parse_print_condition_command(const Messages& messages, const CommandRecord& record,
                                     PrintConditions& conditions);

}  // namespace rlx
